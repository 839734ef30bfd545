// The backlog. Tested by tests/unit/host/backlog_test.cpp.
#include "host/pages/backlog.h"

#include <string>
#include <string_view>
#include <vector>

#include "host/alarms/alarms.h"
#include "host/alarms/states.h"
#include "host/pages/deliveries.h"
#include "host/store/event_history.h"
#include "host/store/faults.h"
#include "host/store/schema.h"
#include "host/text/controls.h"

namespace host {
namespace {

std::vector<int64_t> Numbers(Statement& statement) {
    std::vector<int64_t> numbers;
    while (statement.Step()) {
        numbers.push_back(statement.Number(0));
    }
    return numbers;
}

// One that is too large doesn't hold up the others: it is told, and left as it is. Returns the sum
// of what `work` returns.
template <typename Work>
int32_t ForEach(const std::string& what, const std::vector<int64_t>& rows, Work work) {
    int32_t sum = 0;
    for (const int64_t row : rows) {
        try {
            sum += work(row);
        } catch (const RowTooLarge& error) {
            ReportFault(what + " " + std::to_string(row) + ": " + error.what());
        }
    }
    return sum;
}

constexpr const char* kAlarmRow = "row of AlarmLog";

// Returns how many have it then.
int32_t SetStates(Connection& connection, const std::vector<int64_t>& alarms, const char* state) {
    return ForEach(kAlarmRow, alarms, [&](int64_t row) {
        SetPagerState(connection, row, state);
        return 1;
    });
}

const std::string kOpen = "pagerstate IN ('', '0', '2') AND alarmack IN ('', '0')";

std::vector<int64_t> OldAlarms(Connection& connection, std::time_t raised_before,
                               const std::string& condition) {
    return Numbers(
        Statement(
            connection,
            "SELECT row_id FROM AlarmLog WHERE CAST(timestamp AS INTEGER) < ? AND " + condition)
            .Bind(static_cast<int64_t>(raised_before)));
}

std::string NumberIn(Connection& connection, int64_t row) {
    Statement statement(connection, "SELECT alarmlogID FROM AlarmLog WHERE row_id = ?");
    statement.Bind(row).Step();
    return std::string(statement.Text(0));
}

int32_t DiscardPending(Connection& connection, const std::string& alarm) {
    return ForEach("row of AlarmFwd_PagerEvents",
                   Numbers(Statement(connection,
                                     "SELECT row_id FROM AlarmFwd_PagerEvents"
                                     " WHERE AlmLogID = ? AND PagerState = '2'")
                               .Bind(alarm)),
                   [&](int64_t row) {
                       SetEventState(connection, row, kStateOffLimit, kChanged);
                       return 1;
                   });
}

int32_t DiscardPlanned(Connection& connection, const std::string& alarm) {
    return ForEach("delivery of alarm " + alarm + ", place",
                   Numbers(Statement(connection,
                                     "SELECT place FROM Host_Deliveries"
                                     " WHERE alarm = ? AND answer IS NULL")
                               .Bind(alarm)),
                   [&](int64_t place) {
                       CloseDelivery(connection, alarm, place, kGivenUp);
                       return 1;
                   });
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
                        "SELECT count(*), min(CAST(alarm.timestamp AS INTEGER)) FROM"
                        " (SELECT AlmLogID AS number FROM AlarmFwd_PagerEvents"
                        "   WHERE PagerState = '2'"
                        "  UNION ALL SELECT alarm FROM Host_Deliveries WHERE answer IS NULL)"
                        " JOIN AlarmLog AS alarm ON alarm.alarmlogID = number"
                        " WHERE alarm.pagerstate = '2'");
    statement.Step();
    return {statement.Number(0), static_cast<std::time_t>(statement.Number(1))};
}

int32_t MendAlarmStates(Connection& connection) {
    WriteTransaction transaction(connection);
    const std::vector<int64_t> alarms =
        Numbers(Statement(connection,
                          "SELECT row_id FROM AlarmLog"
                          " WHERE pagerstate IN ('3', '4') AND alarmack IN ('', '0')"
                          " AND alarmlogID IN (SELECT AlmLogID FROM AlarmFwd_PagerEvents"
                          "  WHERE PagerState = ? UNION"
                          "  SELECT alarm FROM Host_Deliveries WHERE answer IS NULL)")
                    .Bind(kStateBeingPaged));
    const int32_t mended = SetStates(connection, alarms, kStateBeingPaged);
    transaction.Commit();
    return mended;
}

int32_t EndFinishedAlarms(Connection& connection) {
    constexpr const char* kFinished =
        "SELECT row_id FROM AlarmLog AS alarm"
        " WHERE pagerstate = '2' AND alarmack IN ('', '0')"
        " AND NOT EXISTS (SELECT 1 FROM Host_Deliveries WHERE alarm = alarm.alarmlogID"
        "  AND answer IS NULL)"
        " AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents WHERE AlmLogID = alarm.alarmlogID"
        "  AND PagerState NOT IN ('3', '4'))"
        " AND EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents WHERE AlmLogID = alarm.alarmlogID"
        "  AND PagerState = ?)";
    WriteTransaction transaction(connection);
    // One page that nobody got counts for all.
    int32_t ended = 0;
    for (const char* state : {kStateOffLimit, kStateDone}) {
        ended += SetStates(connection,
                           Numbers(Statement(connection, kFinished).Bind(std::string_view(state))),
                           state);
    }
    transaction.Commit();
    return ended;
}

void MendTexts(Connection& connection) {
    constexpr const char* kAnyControl = "*[\x01-\x1F\x7F]*";
    WriteTransaction transaction(connection);
    const std::vector<int64_t> rows =
        Numbers(Statement(connection,
                          "SELECT row_id FROM AlarmFwd_PagerEvents WHERE PagerState = '2'"
                          " AND (AlmGroup GLOB ?1 OR PagerDescr GLOB ?1)")
                    .Bind(std::string_view(kAnyControl)));
    for (const int64_t row : rows) {
        MendTextsOf(connection, row);
    }
    transaction.Commit();
}

int32_t DiscardPages(Connection& connection, std::time_t raised_before) {
    WriteTransaction transaction(connection);
    // Off limit first: the history tells then that they were given up.
    SetStates(connection, OldAlarms(connection, raised_before, kOpen), kStateOffLimit);
    const std::vector<int64_t> alarms =
        OldAlarms(connection, raised_before, "(pagerstate = '3' OR " + kOpen + ")");
    const int32_t discarded = ForEach(kAlarmRow, alarms, [&](int64_t row) {
        const std::string number = NumberIn(connection, row);
        return DiscardPending(connection, number) + DiscardPlanned(connection, number);
    });
    transaction.Commit();
    return discarded;
}

}  // namespace host
