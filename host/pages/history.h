// What has become of every page.
//
// The library's tables tell only what is pending now. Each change of an event is written into
// Host_History (host/store/tables/history.h), and from these changes a page's story is put
// together: its due time and its end are computed, by the rules of the library's worker.
//
//   a page is due when it is queued, and again when an engine starts
//   rewritten with one try more     it was tried, and is due the pager's delay later
//   rewritten with as many tries    it failed for the first time, and is due five minutes later
//   moved                           it is due at once, by another line, and its tries begin anew
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_HISTORY_H
#define PAGERFWD_HOST_PAGES_HISTORY_H

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/events.h"
#include "host/store/tables/history.h"

namespace host {

enum class PageEnd { kPending, kDone, kOffLimit, kAcknowledged, kResolved, kDropped, kByHand };

// The most that a page's sendings have come to. Unknown: none was recorded.
enum class Reached { kUnknown, kNothing, kOutsideHours, kDialled, kSent };

// A page was taken from a line, to go by another.
struct PageMove {
    std::time_t at = 0;
    std::string from;
    std::string why;
};

// Texts as the tables have them.
struct PageStory {
    std::string alarm;
    std::string group;
    std::string pager;
    int64_t tries = 0;    // counted ones
    int64_t retries = 0;  // that the pager allows; 5 where it is unknown
    std::time_t queued = 0;
    std::time_t due = 0;    // computed; while it is pending
    std::time_t ended = 0;  // computed; 0 while it is pending
    int64_t ended_by = 0;   // the row of the history; 0 while it is pending
    PageEnd end = PageEnd::kPending;
    Reached reached = Reached::kUnknown;
    std::string line;      // the last that had it; empty: none, or the site has no lines
    bool waits = false;    // no library has it yet, or any more: it is to go to a line
    bool unknown = false;  // it may have left, and waits until an operator says what it came to
    std::string note;      // why it was given up, where somebody said so
    std::vector<PageMove> moves;
};

// Whether it was given up, and as far as is known nobody got it.
bool IsUndelivered(const PageStory& page);

// The story of one page. changes: of this page, and where engines started, in order. delay: the
// pager's, in minutes. removed: what it means that a page was removed that was owed: its alarm was
// acknowledged, was withdrawn, or isn't paged any more.
PageStory TellStory(const std::vector<PageChange>& changes, int64_t delay, PageEnd removed);

// The story of one that is owed.
PageStory PendingPage(Connection& connection, const OwedPage& owed);
// Every page of which an event is in state 2, in the order in which they were queued, and behind
// them, alarm by alarm, those that wait for a line.
std::vector<PageStory> PendingPages(Connection& connection);
// The last so many that have ended, the oldest first.
std::vector<PageStory> EndedPages(Connection& connection, int64_t count);
// Those that ended by a change behind the first of these rows of the history, up to the second; in
// the order of the changes.
std::vector<PageStory> PagesEndedBetween(Connection& connection, int64_t first, int64_t last);
// Every page of one alarm.
std::vector<PageStory> PagesOf(Connection& connection, const std::string& alarm);

}  // namespace host

#endif
