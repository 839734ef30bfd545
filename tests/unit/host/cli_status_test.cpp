// pagerfwd status: what is pending, and what has become of the rest.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

// Two pages that are pending and two that have ended, since 2001-01-08 10:00:00.
constexpr const char* kPages =
    "INSERT INTO AlarmLog (alarmlogID, pagerstate) VALUES ('7', '2');"
    "INSERT INTO AlarmFwd_PagerSetting (description, numretries, retrydelay)"
    " VALUES ('duty', '2', '30');"
    "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState, PagerRetries)"
    " VALUES ('7', 'ops', 'duty', '2', '1'), ('7', 'ops', 'night', '2', '0');"
    "DELETE FROM Host_History;"
    "INSERT INTO Host_History (at, change, alarm, alarm_group, pager, state, tries) VALUES"
    " (978948000, 'written', '7', 'ops', 'duty', '2', '0'),"
    " (978948000, 'written', '7', 'ops', 'night', '2', '0'),"
    " (978948060, 'written', '7', 'ops', 'duty', '2', '1'),"
    " (978948000, 'written', '6', 'ops', 'duty', '2', '0'),"
    " (978948030, 'written', '6', 'ops', 'duty', '4', '0'),"
    " (978948000, 'written', '5', 'ops', 'duty', '2', '2'),"
    " (978948090, 'written', '5', 'ops', 'duty', '3', '3');";

class CliStatus : public CliFixture {
 protected:
    CliStatus() { EXPECT_EQ(0, Run({"init"}).exit_code); }

    static nlohmann::json Status(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), {"status", "--json"});
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(0, run.exit_code) << run.err;
        return nlohmann::json::parse(run.out);
    }
};

TEST_F(CliStatus, OfANewDatabaseIsEmpty) {
    EXPECT_EQ("engine: not running\npending: 0\nended, the last 0:\n", Run({"status"}).out);
    EXPECT_EQ(nlohmann::json::parse(R"({"engine": "not running", "lines": [],
                                        "pending": [], "ended": []})"),
              Status());
}

TEST_F(CliStatus, IsATable) {
    Execute(kPages);
    EXPECT_EQ(
        "engine: not running\n"
        "pending: 2\n"
        "ALARM  GROUP  PAGER  STATE    TRIES   QUEUED               DUE (computed)\n"
        "7      ops    duty   pending  1 of 3  2001-01-08 10:00:00  2001-01-08 10:30:00\n"
        "7      ops    night  pending  0 of 6  2001-01-08 10:00:00  2001-01-08 10:00:00\n"
        "ended, the last 2:\n"
        "ALARM  GROUP  PAGER  STATE      TRIES   QUEUED               ENDED (computed)\n"
        "6      ops    duty   done       1 of 3  2001-01-08 10:00:00  2001-01-08 10:00:30\n"
        "5      ops    duty   off limit  3 of 3  2001-01-08 10:00:00  2001-01-08 10:01:30\n",
        Run({"status"}).out);
}

TEST_F(CliStatus, IsJsonThatMarksWhatIsComputed) {
    Execute(kPages);
    const nlohmann::json status = Status();
    ASSERT_EQ(2U, status["pending"].size());
    EXPECT_EQ(nlohmann::json::parse(R"({"alarm": "7", "group": "ops", "pager": "duty",
                                        "state": "pending", "outcome": "pending", "tries": 1, "retries": 2,
                                        "queued": "2001-01-08 10:00:00",
                                        "computed": {"due": "2001-01-08 10:30:00"}})"),
              status["pending"][0]);
    ASSERT_EQ(2U, status["ended"].size());
    EXPECT_EQ(nlohmann::json::parse(R"({"alarm": "5", "group": "ops", "pager": "duty",
                                        "state": "off limit", "outcome": "off limit", "tries": 3, "retries": 2,
                                        "queued": "2001-01-08 10:00:00",
                                        "computed": {"ended": "2001-01-08 10:01:30"}})"),
              status["ended"][1]);
}

TEST_F(CliStatus, ShowsAsManyEndedOnesAsAreWanted) {
    Execute(kPages);
    ASSERT_EQ(1U, Status({"--ended", "1"})["ended"].size());
    EXPECT_EQ("5", Status({"--ended", "1"})["ended"][0]["alarm"]);
    EXPECT_EQ(0U, Status({"--ended", "0"})["ended"].size());
    EXPECT_EQ(2, Run({"status", "--ended", "-1"}).exit_code);
}

TEST_F(CliStatus, NamesTheEngineThatRuns) {
    const ChildProcess engine({STORE_PROCESS, "site.db", "engine"});
    const_cast<ChildProcess&>(engine).ReadLine();
    EXPECT_THAT(Run({"status"}).out, HasSubstr("engine: a test, process "));
    EXPECT_EQ("running", Status()["engine"]);
}

TEST_F(CliStatus, NeverSteersTheTerminal) {
    Execute(
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState) VALUES"
        " (char(27) || '[1', char(27) || '[2', char(27,10) || '[3', '2')");
    EXPECT_THAT(Run({"status"}).out, AllOf(HasSubstr("\\x1b[1"), HasSubstr("\\x1b[2"),
                                           HasSubstr("\\x1b\\x0a[3"), Not(HasSubstr("\x1b"))));
    EXPECT_THAT(Run({"status", "--json"}).out,
                AllOf(HasSubstr("\\u001b[1"), Not(HasSubstr("\x1b"))));
}

TEST_F(CliStatus, ShowsNamesInTheEncodingOfTheSite) {
    Execute(
        "INSERT INTO Host_Settings VALUES ('encoding', 'shift_jis');"
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState) VALUES"
        " ('7', 'ops', CAST(x'938C8B9E' AS TEXT), '2')");
    EXPECT_THAT(Run({"status"}).out, HasSubstr("\u6771\u4EAC"));
    EXPECT_EQ("\u6771\u4EAC", Status()["pending"][0]["pager"]);
}

TEST_F(CliStatus, ChangesNothing) {
    Execute(kPages);
    // One that a process left behind when it died while it rewrote it.
    Execute("UPDATE AlarmFwd_PagerEvents SET hidden_by = 4711 WHERE PagerDescr = 'night'");
    const std::vector<std::string> before = Dump();
    EXPECT_THAT(before, ::testing::Contains(HasSubstr("4711")));
    Run({"status"});
    Run({"status", "--json"});
    EXPECT_EQ(before, Dump());
}

}  // namespace
