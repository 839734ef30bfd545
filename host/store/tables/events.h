// AlarmFwd_PagerEvents as the host asks of it: the pages that a library has, or takes up when it
// starts. Hidden ones (host/store/hidden_rows.h) count, unless said otherwise: if the process that
// hid them has ended, the next start brings them back.
//
// Questions about pages that are still owed, be it as an event or as a delivery, are here, too.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_EVENTS_H
#define PAGERFWD_HOST_STORE_TABLES_EVENTS_H

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/page_key.h"

namespace host {

// --- Single ones. Those that change anything require a write transaction.

// A page has one event; another program may have written a second.
struct PendingEvent {
    int64_t row;
    int64_t tries;
    std::string line;
};
// None: no library has the page.
std::optional<PendingEvent> FindEvent(Connection& connection, const PageKey& page);

// Changes an event's state, with its history. change: as in schema.h.
void SetEventState(Connection& connection, int64_t row, const std::string& state,
                   const char* change, std::string_view note = {});
// The same; it is in sight from then on.
void EndEvent(Connection& connection, int64_t row, const char* change, const std::string& why);
// Deletes it, with its history.
void RemoveEvent(Connection& connection, int64_t row, const char* change, const std::string& why);
// Of a page that no library has: one that has ended, with its history.
void AddEndedEvent(Connection& connection, const PageKey& page, const char* state,
                   const std::string& why);
// Of a page without a line.
void SetEventLine(Connection& connection, const PageKey& page, const std::string& line);

// --- Those of an alarm, in order.
std::vector<std::string> EventStates(Connection& connection, const std::string& alarm);
std::vector<int64_t> PendingRows(Connection& connection, const std::string& alarm);

// --- Those of a line, in order; of no line, where it is empty.
std::vector<PageKey> PendingEvents(Connection& connection, const std::string& line);
// Those that are called so in the trace, which cuts long texts off. No alarm: any.
std::vector<PageKey> PendingTracedEvents(Connection& connection, const std::string& line,
                                         const PageKey& traced);
// Whether a line's process has pages that its library goes through once a minute.
bool HasPagesOf(Connection& connection, const std::string& line);

// --- All pending ones.

// Those that another line than theirs had before, with their tries over all lines.
struct MovedEvent {
    PageKey page;
    int64_t tries;
    std::string line;
};
std::vector<MovedEvent> PendingMovedEvents(Connection& connection);

struct EventKey {
    int64_t row;
    PageKey page;
};
std::vector<EventKey> PendingKeys(Connection& connection);
// Of an event, and of its history: both are found by the group and the pager.
void RenameEvent(Connection& connection, const EventKey& event, const std::string& group,
                 const std::string& pager);

// Of an alarm in state 2 that nobody has acknowledged, with what is known of its way.
struct EventOnItsWay {
    std::string alarm;
    std::string pager;
    std::string line;
    std::time_t changed;  // last
    bool was_sent;        // once at least, over this line
    bool was_moved;       // from another line
};
std::vector<EventOnItsWay> EventsOnTheirWay(Connection& connection);

// Whether an engine still has a page in hand, be it only to drop it since its alarm was
// acknowledged. Throws RowTooLarge at a page that no engine could read.
bool HasPagesInHand(Connection& connection);

// --- Pages that are owed, as events or as deliveries.

// The condition of an alarm that is owed a page, on its row of AlarmLog: an event is pending, or a
// delivery still open. No index is to find an event by its state, here and elsewhere: nearly all
// share it. So what is compared isn't quite the column.
inline constexpr const char* kIsOwedAPage =
    "(EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
    "  WHERE AlmLogID = AlarmLog.alarmlogID AND PagerState || '' = '2')"
    " OR EXISTS (SELECT 1 FROM Host_Deliveries"
    "  WHERE alarm = AlarmLog.alarmlogID AND answer IS NULL))";

struct OwedPage {
    PageKey page;
    bool waits;  // no library has it yet, or any more
    std::string line;
    bool unknown = false;  // it may have left, and waits for an operator
    int64_t place = 0;     // among those of its alarm that wait, or that don't
};
// Alarm by alarm; in the order in which they were queued, and behind them those that wait.
std::vector<OwedPage> OwedPages(Connection& connection);

// How many events are in state 2, with an alarm in state 2 and a pager that is known, and how many
// pages have still to be given to a library.
int64_t CountPendingPages(Connection& connection);

// Pages of alarms in state 2, and when the oldest of these was raised.
struct Backlog {
    int64_t pages = 0;
    std::time_t oldest = 0;  // 0: there is none
};
Backlog LookAtBacklog(Connection& connection);

// When the oldest alarm was raised of which a page has never been tried; 0: all have been.
std::time_t OldestUntried(Connection& connection);

// Pagers for which pages are owed, of alarms that nobody has acknowledged.
std::vector<std::string> PagersWithPages(Connection& connection);

// How many pages each line has, those included that it has still to hand over.
std::map<std::string, int64_t> CountByLine(Connection& connection);

struct LinePages {
    int64_t untried = 0;  // that have not been tried over the line
    int64_t all = 0;
};
// By line; of none, too: "".
std::map<std::string, LinePages> PagesByLine(Connection& connection);

}  // namespace host

#endif
