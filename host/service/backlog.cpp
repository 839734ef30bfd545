// The backlog. Tested by tests/unit/host/backlog_test.cpp.
#include "host/service/backlog.h"

#include <string>

#include "host/service/deliveries.h"

namespace host {
namespace {

int32_t Change(Connection& connection, const char* sql) {
    WriteTransaction transaction(connection);
    connection.Execute(sql);
    const int32_t count = connection.Changes();
    transaction.Commit();
    return count;
}

}  // namespace

Backlog LookAtBacklog(Connection& connection) {
    Statement statement(connection,
                        "SELECT count(*), min(CAST(alarm.timestamp AS INTEGER))"
                        " FROM AlarmFwd_PagerEvents AS event"
                        " JOIN AlarmLog AS alarm ON alarm.alarmlogID = event.AlmLogID"
                        " WHERE event.PagerState = '2' AND alarm.pagerstate = '2'");
    statement.Step();
    return {statement.Number(0), static_cast<std::time_t>(statement.Number(1))};
}

int32_t MendAlarmStates(Connection& connection) {
    return Change(connection,
                  "UPDATE AlarmLog SET pagerstate = '2'"
                  " WHERE pagerstate IN ('3', '4') AND alarmack IN ('', '0')"
                  " AND alarmlogID IN (SELECT AlmLogID FROM AlarmFwd_PagerEvents"
                  "  WHERE PagerState = '2')");
}

int32_t DiscardPages(Connection& connection, std::time_t raised_before) {
    WriteTransaction transaction(connection);
    const auto change = [&](const std::string& sql) {
        Statement(connection, sql).Bind(static_cast<int64_t>(raised_before)).Run();
        return connection.Changes();
    };
    const std::string of_these =
        " IN (SELECT alarmlogID FROM AlarmLog WHERE pagerstate = '3'"
        " AND CAST(timestamp AS INTEGER) < ?)";
    change(
        "UPDATE AlarmLog SET pagerstate = '3' WHERE pagerstate IN ('', '0', '2')"
        " AND alarmack IN ('', '0') AND CAST(timestamp AS INTEGER) < ?");
    // Off limit first: the history tells then that they were given up.
    const int32_t pending = change(
        "UPDATE AlarmFwd_PagerEvents SET PagerState = '3' WHERE PagerState = '2' AND AlmLogID" +
        of_these);
    const int32_t planned =
        change("UPDATE Host_Deliveries SET answer = " + std::to_string(kGivenUp) +
               " WHERE answer IS NULL AND alarm" + of_these);
    transaction.Commit();
    return pending + planned;
}

}  // namespace host
