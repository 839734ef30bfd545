// The fixture of tests on the service's parts: a database with all tables, under the virtual clock,
// and what such tests write and read in it.
#ifndef PAGERFWD_TESTS_UNIT_HOST_SERVICE_TEST_H
#define PAGERFWD_TESTS_UNIT_HOST_SERVICE_TEST_H

#include <sstream>
#include <string>
#include <vector>

#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/deliveries.h"
#include "sim/testing.h"
#include "tests/unit/host/host_test.h"
#include "tests/unit/host/table_client.h"

class ServiceTest : public HostTest {
 protected:
    static constexpr time_t kNow = pagersim::VirtualClock::kDefaultStart;

    void Execute(const std::string& sql) { connection.Execute(sql); }

    // The cells of every row, "a|b|c".
    std::vector<std::string> Rows(const std::string& sql) {
        std::vector<std::string> rows;
        host::Statement statement(connection, "SELECT " + sql);
        while (statement.Step()) {
            rows.emplace_back(statement.Text(0));
        }
        return rows;
    }

    void AddAlarm(const std::string& number, const std::string& state = "0",
                  const std::string& group = "ops", time_t raised = kNow) {
        host::Statement(connection,
                        "INSERT INTO AlarmLog (alarmlogID, pagerstate, alarmack, alarm_group,"
                        " severity, timestamp) VALUES (?, ?, '0', ?, '1', ?)")
            .Bind(number)
            .Bind(state)
            .Bind(group)
            .Bind(int64_t{raised})
            .Run();
    }
    std::string StateOf(const std::string& number) {
        const std::vector<std::string> states =
            Rows("pagerstate FROM AlarmLog WHERE alarmlogID = '" + number + "'");
        return states.size() == 1 ? states[0] : std::to_string(states.size()) + " rows";
    }

    // What an alarm of the group "ops" owes; an answer of none: still to be handed over.
    void AddDelivery(const std::string& alarm, int64_t place, const std::string& pager,
                     const std::string& answer = "NULL") {
        Execute(
            "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, answer, "
            "severity)"
            " VALUES ('" +
            alarm + "', " + std::to_string(place) + ", 'ops', '" + pager + "', 0, " + answer +
            ", " + host::SeverityOf("'" + alarm + "'") + ")");
    }

    void AddPager(const std::string& name, int retries = 5, int delay = 45) {
        host::Statement(connection,
                        "INSERT INTO AlarmFwd_PagerSetting (description, numretries, retrydelay)"
                        " VALUES (?, ?, ?)")
            .Bind(name)
            .Bind(int64_t{retries})
            .Bind(int64_t{delay})
            .Run();
    }

    // An event, as the library writes it.
    void WriteEvent(int32_t alarm, const char* pager, int32_t state, int32_t tries = 0,
                    const char* group = "ops") const {
        ASSERT_EQ(0, OpenTable(database, "AlarmFwd_PagerEvents")
                         .Insert({{"AlmLogID", alarm},
                                  {"AlmGroup", group},
                                  {"PagerDescr", pager},
                                  {"PagerState", state},
                                  {"PagerRetries", tries}}));
    }
    int32_t DeleteEvent(int32_t alarm, const std::string& pager) const {
        return OpenTable(database, "AlarmFwd_PagerEvents")
            .Delete("WHERE AlmGroup = \"ops\" AND AlmLogID = " + std::to_string(alarm) +
                    " AND PagerDescr = \"" + pager + "\"");
    }
    // The library rewrites an event by these two.
    void RewriteEvent(int32_t alarm, const char* pager, int32_t state, int32_t tries) const {
        ASSERT_EQ(1, DeleteEvent(alarm, pager));
        WriteEvent(alarm, pager, state, tries);
    }

    // The library writes so what it has folded the states of an alarm's pages into.
    int32_t Fold(int32_t alarm, int32_t state) const {
        OpenTable alarms(database, "AlarmLog");
        int32_t lock = DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300);
        alarms.Set("WHERE alarmlogID = " + std::to_string(alarm), {{"pagerstate", state}}, 'n');
        return DBAsciiAccessWrite(alarms.handle, "AlarmLog", &lock);
    }

    const pagersim::VirtualClock clock{kNow};
    host::Connection connection{database};
    std::ostringstream said;
    host::OperatorLog log{said, true};
};

#endif
