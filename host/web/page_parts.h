// What the pages have in common: their frame, forms, tables that several of them show, and what is
// looked for.
//
// Errors     As page_views.h.
#ifndef PAGERFWD_HOST_WEB_PAGE_PARTS_H
#define PAGERFWD_HOST_WEB_PAGE_PARTS_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/pages/history.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/sends.h"
#include "host/web/html.h"
#include "host/web/page_views.h"

namespace host {

// The whole page, with the ways to the others above it.
std::string Framed(const PageAsked& asked, const std::string& title, const std::string& content);

// A text of the tables.
std::string Shown(const PageAsked& asked, const std::string& text);

// "<form ...><input type=hidden ...>": what it takes is the same for all that change anything.
std::string FormBegin(const PageAsked& asked, const std::string& action,
                      const UrlQuery& hidden = {});
std::string Option(const std::string& value, const std::string& chosen, const std::string& text);

// What stands in the address; empty: it says nothing of it.
std::string InAddress(const WebTarget& target, const char* name);
// Digits alone; otherwise, where it says none, or none that is a number.
int64_t NumberInAddress(const WebTarget& target, const char* name, int64_t otherwise);

// --- Tables.

std::string LinkToAlarm(const PageAsked& asked, const std::string& number);
std::string SeverityOf(const Alarm& alarm);
// What stands above a table, and the sentence in its place where it would be empty.
struct TableWords {
    std::string caption;
    std::string none;
};
inline constexpr const char* kNoAlarms = "There are no alarms.";
inline constexpr const char* kNonePending = "No page is pending.";
inline constexpr const char* kNoneFailed = "No sending has failed.";
std::string AlarmsTable(const PageAsked& asked, const TableWords& words,
                        const std::vector<Alarm>& alarms);
std::string PendingTable(const PageAsked& asked, const TableWords& words,
                         const std::vector<PageStory>& pages);
std::string FailedTable(const PageAsked& asked, const TableWords& words,
                        const std::vector<RecordedSend>& sends);

// --- What is looked for: by group, pager, state and time.

struct Search {
    explicit Search(const PageAsked& asked);

    bool FitsGroup(const std::string& cell) const;
    // Whether anything is looked for.
    bool Any() const;
    // Said where nothing is found: that there is none would be a lie where more was not looked at.
    std::string None(const char* without_search) const;
    // The address of the same, from there on.
    std::string Url(const char* cursor, const std::string& from) const;

    const PageAsked& asked;
    const std::string group;  // UTF-8: a part of it, or a pattern as of routes
    const std::string pager;  // UTF-8
    const std::string pager_cell;
    const std::string state;
    const std::time_t since;
    const std::time_t until;
};
// states: to choose from; none: that isn't asked.
std::string SearchForm(const Search& search, const std::vector<std::string>& states);
// "Further ones", where there are any; `from` is empty where not.
std::string MoreOf(const Search& search, const char* cursor, const std::string& from);

// How many rows a page shows.
inline constexpr size_t kRowsAPage = 50;

template <typename Row>
struct Gathered {
    std::vector<Row> rows;
    std::string next;  // where to go on; empty: there are no more
};
// A page of those that are wanted, read piece by piece: where few are wanted, a page may have few
// rows, or none, and there are more all the same.
//   read(before, count)   the rows before this one, the last first
//   wants(row)            whether it is looked for
template <typename Row, typename Read, typename Wants>
Gathered<Row> Gather(int64_t before, const Read& read, const Wants& wants) {
    constexpr int64_t kPiece = 200;
    constexpr int kMostPieces = 20;
    Gathered<Row> found;
    for (int piece = 0; piece < kMostPieces; ++piece) {
        const std::vector<Row> rows = read(before, kPiece);
        for (const Row& row : rows) {
            before = row.row;
            if (wants(row)) {
                found.rows.push_back(row);
            }
            if (found.rows.size() == kRowsAPage) {
                found.next = std::to_string(before);
                return found;
            }
        }
        found.next = static_cast<int64_t>(rows.size()) < kPiece ? "" : std::to_string(before);
        if (found.next.empty()) {
            break;
        }
    }
    return found;
}

}  // namespace host

#endif
