// The backlog. Tested by tests/unit/host/backlog_test.cpp.
#include "host/service/backlog.h"

#include <string>
#include <string_view>
#include <vector>

#include "host/service/deliveries.h"
#include "host/store/faults.h"
#include "host/text/controls.h"

namespace host {
namespace {

std::vector<int64_t> RowIds(Connection& connection, const char* sql) {
    std::vector<int64_t> rows;
    Statement statement(connection, sql);
    while (statement.Step()) {
        rows.push_back(statement.Number(0));
    }
    return rows;
}

// Of an event, and of its history: both are found by the group and the pager.
void MendTextsOf(Connection& connection, int64_t row) {
    std::string alarm;
    std::string group;
    std::string pager;
    {
        Statement statement(connection,
                            "SELECT AlmLogID, AlmGroup, PagerDescr FROM AlarmFwd_PagerEvents"
                            " WHERE row_id = ?");
        statement.Bind(row).Step();
        alarm = statement.Text(0);
        group = statement.Text(1);
        pager = statement.Text(2);
    }
    const std::string new_group = WithoutControls(group);
    const std::string new_pager = WithoutControls(pager);
    Statement(connection,
              "UPDATE AlarmFwd_PagerEvents SET AlmGroup = ?, PagerDescr = ? WHERE row_id = ?")
        .Bind(new_group)
        .Bind(new_pager)
        .Bind(row)
        .Run();
    Statement(connection,
              "UPDATE Host_History SET alarm_group = ?, pager = ?"
              " WHERE alarm = ? AND alarm_group = ? AND pager = ?")
        .Bind(new_group)
        .Bind(new_pager)
        .Bind(alarm)
        .Bind(group)
        .Bind(pager)
        .Run();
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
    WriteTransaction transaction(connection);
    int32_t mended = 0;
    for (const int64_t row : RowIds(connection,
                                    "SELECT row_id FROM AlarmLog"
                                    " WHERE pagerstate IN ('3', '4') AND alarmack IN ('', '0')"
                                    " AND alarmlogID IN (SELECT AlmLogID FROM AlarmFwd_PagerEvents"
                                    "  WHERE PagerState = '2')")) {
        try {
            Statement(connection, "UPDATE AlarmLog SET pagerstate = '2' WHERE row_id = ?")
                .Bind(row)
                .Run();
            ++mended;
        } catch (const RowTooLarge& error) {
            ReportFault("row " + std::to_string(row) + " of AlarmLog: " + error.what());
        }
    }
    transaction.Commit();
    return mended;
}

void MendTexts(Connection& connection) {
    constexpr const char* kRows =
        "SELECT row_id FROM AlarmFwd_PagerEvents WHERE PagerState = '2'"
        " AND (AlmGroup GLOB ?1 OR PagerDescr GLOB ?1)";
    constexpr const char* kAnyControl = "*[\x01-\x1F\x7F]*";
    WriteTransaction transaction(connection);
    std::vector<int64_t> rows;
    {
        Statement statement(connection, kRows);
        statement.Bind(std::string_view(kAnyControl));
        while (statement.Step()) {
            rows.push_back(statement.Number(0));
        }
    }
    for (const int64_t row : rows) {
        MendTextsOf(connection, row);
    }
    transaction.Commit();
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
