// What the tables show to a library that serves one line.
//
// A process that serves a line sets its view before it loads the library. From then on the
// functions of the table access show
//   ports     the line's own row alone, whatever its name, as "COM 1"
//   pagers    bound to "COM 1" where they are bound to the line, else to no port
//   events    the line's own. What goes by the alarm alone sees those of all lines: the fold of an
//             alarm's pages, and the end of an acknowledged alarm's
// An event that is inserted belongs to the line; one that another line is owed is not taken over.
// Statements of the host itself see everything.
//
// Threads    Set while one thread runs; read by any.
#ifndef PAGERFWD_HOST_STORE_LINE_VIEW_H
#define PAGERFWD_HOST_STORE_LINE_VIEW_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/conditions.h"
#include "host/store/connection.h"
#include "host/store/schema.h"
#include "host/store/writes.h"

namespace host {

// How the library calls the one port that it sees.
inline constexpr const char* kOnlyPort = "COM 1";

struct LineView {
    std::string line;         // the port's name, as the tables have it
    bool shows_pages = true;  // false: no pages, for a process that sends a test page and no other
};

// None: everything is shown, as it is.
void SetLineView(std::optional<LineView> view);

// Whether any pages are shown.
bool ShowsPages();

// The port of a pager as the library sees it, for a call that names one.
std::string PortInView(std::string_view port);

// --- For the table access.

// The terms by which the view finds what these select. The result refers to the same texts.
std::vector<Term> InView(const Table& table, std::vector<Term> terms);

// A cell as the view shows it.
std::string_view InView(const Table& table, std::string_view column, std::string_view cell);

// Makes a row that is about to be inserted the line's. Throws StoreError where it is an event that
// another line is owed.
void MakeOwn(Connection& connection, const Table& table, ElementList& row);

}  // namespace host

#endif
