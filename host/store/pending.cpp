// Pending pages. Tested by tests/unit/host/hidden_rows_test.cpp.
#include "host/store/pending.h"

namespace host {

int64_t CountPendingPages(Connection& connection) {
    Statement statement(connection,
                        "SELECT count(*) FROM AlarmFwd_PagerEvents AS event"
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

}  // namespace host
