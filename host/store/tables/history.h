// Host_History: every change of a page, one row for each, in the transaction of the change, by
// whoever makes it; and each start of an engine. What they come to: host/pages/history.h.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_HISTORY_H
#define PAGERFWD_HOST_STORE_TABLES_HISTORY_H

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/conditions.h"
#include "host/store/connection.h"
#include "host/store/tables/page_key.h"

namespace host {

// --- Writing. Each requires a write transaction on the connection.

// A row of the history, its texts as the tables have them. Its time is now.
struct HistoryRow {
    const char* change;  // as in schema.h
    std::string_view alarm = {};
    std::string_view group = {};
    std::string_view pager = {};
    std::string_view state = {};
    std::string_view tries = {};
    std::string_view line = {};
    std::string_view note = {};  // why, and who
};
void WriteHistory(Connection& connection, const HistoryRow& row);

// A change of events; what is null stays as it is.
struct EventChange {
    const char* change;  // as in schema.h
    const std::string* state = nullptr;
    const std::string* tries = nullptr;
    std::string_view note = {};
};

// Writes it of all events that the condition selects, " WHERE ...", whose parameters are those of
// the terms. To be called before the change: behind it, the condition may select others.
void WriteHistory(Connection& connection, const EventChange& change, const std::string& condition,
                  const std::vector<Term>& terms);

// The history of a page whose group and pager are written otherwise from now on.
void RenamePage(Connection& connection, const PageKey& page, const std::string& group,
                const std::string& pager);

// --- Reading.

struct PageChange {
    std::time_t at = 0;
    std::string change;  // as in host/store/schema.h
    std::string state;
    int64_t tries = 0;
    int64_t row = 0;  // of the history
    std::string line = {};
    std::string note = {};
};
// Changes of the page, and the engine's starts since the first of them.
std::vector<PageChange> ChangesOf(Connection& connection, const PageKey& page);

struct PageChangeOf {
    PageKey page;
    PageChange change;
};
// At most so many of the rows behind this one, of whichever pages, in order.
std::vector<PageChangeOf> ChangesBehind(Connection& connection, int64_t row, int64_t count);

// Its last row; 0 where there is none.
int64_t LastChange(Connection& connection);

// Pages of an alarm, in the order of their first changes.
std::vector<PageKey> PagesInHistory(Connection& connection, const std::string& alarm);
// Pages that may have ended with one of the rows behind the first, up to the last of these, in the
// order of the changes: those that were only moved, or written anew, are not among them.
std::vector<PageKey> PagesThatMayHaveEnded(Connection& connection, int64_t first, int64_t last);
// Of these rows, the one up to which there are so many by which a page may have ended; the last,
// where there are fewer.
int64_t BehindEnds(Connection& connection, int64_t first, int64_t last, int64_t count);
// The last so many of those that are neither pending nor owed any more, the oldest first.
std::vector<PageKey> PagesNotOwed(Connection& connection, int64_t count);

// A column as the trace has its text, which cuts long ones off: for conditions.
std::string Traced(const std::string& column);
// Whether the alarm had a page of this group to this pager. As the library's trace has them, which
// cuts long texts off.
bool HadPage(Connection& connection, const PageKey& traced);

// --- In transactions of their own.

// Notes that an engine starts: what it writes then makes its pages due. line: whose it is; empty:
// of all pages.
void NoteEngineStart(Connection& connection, const std::string& line = {});

// Forgets pages that have ended and have not changed since then, and the answers for older alarms
// that came to no page. Returns how many changes that were.
int32_t ForgetHistory(Connection& connection, std::time_t before);

}  // namespace host

#endif
