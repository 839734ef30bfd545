// The pages that an engine takes up when it starts.
#ifndef PAGERFWD_HOST_STORE_PENDING_H
#define PAGERFWD_HOST_STORE_PENDING_H

#include <cstdint>
#include <string>

#include "host/store/connection.h"

namespace host {

// How many events are in state 2, with an alarm in state 2 and a pager that is known, and how many
// pages have still to be given to a library. Events hidden by a process count: if it has ended, the
// start brings them back.
int64_t CountPendingPages(Connection& connection);

// The condition of an alarm that is owed a page, on its row of AlarmLog: an event is pending,
// hidden or not, or a delivery still open.
inline constexpr const char* kIsOwedAPage =
    "(EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
    "  WHERE AlmLogID = AlarmLog.alarmlogID AND +PagerState = '2')"
    " OR EXISTS (SELECT 1 FROM Host_Deliveries"
    "  WHERE alarm = AlarmLog.alarmlogID AND answer IS NULL))";

// The condition of a page that no library has yet, or any more, on its row of Host_Deliveries.
inline constexpr const char* kWaitsForALibrary =
    "answer IS NULL AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
    " WHERE AlmLogID = Host_Deliveries.alarm AND AlmGroup = Host_Deliveries.alarm_group"
    " AND PagerDescr = Host_Deliveries.pager AND +PagerState = '2')";

// Whether an engine still has a page in hand, be it only to drop it since its alarm was
// acknowledged. Throws RowTooLarge at a page that no engine could read.
bool HasPagesInHand(Connection& connection);

// Whether the page's event is in state 2.
bool IsPending(Connection& connection, const std::string& alarm, const std::string& group,
               const std::string& pager);

// Whether a line's process has pages that its library goes through once a minute.
bool HasPagesOf(Connection& connection, const std::string& line);

}  // namespace host

#endif
