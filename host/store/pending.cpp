// Pending pages. Tested by tests/unit/host/hidden_rows_test.cpp.
#include "host/store/pending.h"

#include <string>

namespace host {

int64_t CountPendingPages(Connection& connection) {
    Statement statement(
        connection, std::string("SELECT count(*) + (SELECT count(*) FROM Host_Deliveries WHERE ") +
                        kWaitsForALibrary +
                        ")"
                        " FROM AlarmFwd_PagerEvents AS event"
                        " WHERE PagerState = '2'"
                        " AND EXISTS (SELECT 1 FROM AlarmLog"
                        "  WHERE alarmlogID = event.AlmLogID AND pagerstate = '2')"
                        " AND EXISTS (SELECT 1 FROM AlarmFwd_PagerSetting"
                        "  WHERE description = event.PagerDescr)");
    statement.Step();
    return statement.Number(0);
}

bool HasPagesInHand(Connection& connection) {
    return Statement(connection,
                     "SELECT event.* FROM AlarmFwd_PagerEvents AS event WHERE PagerState = '2'"
                     " AND EXISTS (SELECT 1 FROM AlarmLog WHERE alarmlogID = event.AlmLogID)"
                     " AND EXISTS (SELECT 1 FROM AlarmFwd_PagerSetting"
                     "  WHERE description = event.PagerDescr) LIMIT 1")
        .Step();
}

bool IsPending(Connection& connection, const std::string& alarm, const std::string& group,
               const std::string& pager) {
    Statement statement(connection,
                        "SELECT 1 FROM AlarmFwd_PagerEvents WHERE +PagerState = '2'"
                        " AND AlmLogID = ? AND AlmGroup = ? AND PagerDescr = ?");
    return statement.Bind(alarm).Bind(group).Bind(pager).Step();
}

bool HasPagesOf(Connection& connection, const std::string& line) {
    Statement statement(connection,
                        "SELECT 1 FROM AlarmFwd_PagerEvents AS event"
                        " WHERE PagerState = '2' AND line = ?"
                        " AND EXISTS (SELECT 1 FROM AlarmLog"
                        "  WHERE alarmlogID = event.AlmLogID AND pagerstate = '2')"
                        " AND EXISTS (SELECT 1 FROM AlarmFwd_PagerSetting"
                        "  WHERE description = event.PagerDescr)");
    return statement.Bind(line).Step();
}

}  // namespace host
