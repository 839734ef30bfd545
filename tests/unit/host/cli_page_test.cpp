// pagerfwd page: list, cancel, move.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class CliPage : public CliFixture {
 protected:
    CliPage() {
        MakeSite(R"(
[[port]]
name = "north"
device = "/dev/ttyUSB0"
[port.sms1]
dial = "ATDT1"
[[port]]
name = "south"
device = "/dev/ttyUSB1"
[port.sms1]
dial = "ATDT1"
[[port]]
name = "old"
device = "/dev/ttyUSB2"
[port.pager]
dial = "ATDT"
[[pager]]
description = "duty"
type = "sms1"
number = "1"
[[pager]]
description = "night"
type = "sms1"
number = "2"
[[route]]
pagers = ["duty", "night"]
)");
        Execute(
            "INSERT INTO AlarmLog (alarmlogID, pagerstate, alarmack, alarm_group, timestamp)"
            " VALUES ('7', '2', '0', 'ops', '978948000');"
            "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, answer, line)"
            " VALUES ('7', 0, 'ops', 'duty', 0, 1, 'north'),"
            " ('7', 1, 'ops', 'night', 0, NULL, '');"
            "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState,"
            " PagerRetries, line) VALUES ('7', 'ops', 'duty', '2', '1', 'north');"
            "INSERT INTO Host_History (at, change, alarm, alarm_group, pager, state, tries, line)"
            " VALUES (978948000, 'written', '7', 'ops', 'duty', '2', '1', 'north')");
    }

    static nlohmann::json List() {
        return nlohmann::json::parse(Run({"page", "list", "--json"}).out);
    }
    static std::vector<std::string> Rows(const std::string& sql) {
        std::vector<std::string> rows;
        host::Connection connection("site.db");
        host::Statement statement(connection, "SELECT " + sql);
        while (statement.Step()) {
            rows.emplace_back(statement.Text(0));
        }
        return rows;
    }
};

TEST_F(CliPage, AreListedWithTheirLine) {
    EXPECT_EQ(
        "ALARM  GROUP  PAGER  LINE   TRIES   DUE (computed)       STATE\n"
        "7      ops    duty   north  1 of 6  2001-01-08 10:00:00  pending\n"
        "7      ops    night         0 of 6  2001-01-08 10:00:00  waiting\n",
        Run({"page", "list"}).out);
    const nlohmann::json list = List();
    ASSERT_EQ(2U, list.size());
    EXPECT_EQ("north", list[0]["line"]);
    EXPECT_EQ("pending", list[0]["state"]);
    EXPECT_EQ("2001-01-08 10:00:00", list[0]["computed"]["due"]);
    EXPECT_EQ("", list[1]["line"]);
    EXPECT_EQ("waiting", list[1]["state"]);
}

TEST_F(CliPage, AreNone) {
    Execute("DELETE FROM AlarmFwd_PagerEvents; DELETE FROM Host_Deliveries");
    EXPECT_EQ("no pages are pending\n", Run({"page", "list"}).out);
    EXPECT_THAT(List(), IsEmpty());
}

TEST_F(CliPage, IsGivenUpWithAReason) {
    const ProgramRun run = Run({"page", "cancel", "7", "duty", "--why", "reached by telephone"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("page of alarm 7 to \"duty\": given up\n", run.out);
    EXPECT_EQ(1U, List().size());
    EXPECT_THAT(Rows("note FROM Host_History ORDER BY row_id DESC LIMIT 1"),
                ElementsAre(StartsWith("reached by telephone (")));
    EXPECT_THAT(Run({"log", "7"}).out, HasSubstr("given up by hand (reached by telephone ("));
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog"), ElementsAre("2"));
    EXPECT_EQ(0, Run({"page", "cancel", "7", "night", "--why", "too"}).exit_code);
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog"), ElementsAre("3"));
    EXPECT_THAT(Run({"status"}).out, HasSubstr("cancelled"));
}

TEST_F(CliPage, IsMovedToAnotherLine) {
    const ProgramRun run = Run({"page", "move", "7", "duty", "--line", "south"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("page of alarm 7 to \"duty\": moved to line \"south\"\n", run.out);
    EXPECT_EQ("south", List()[0]["line"]);
    EXPECT_EQ("waiting", List()[0]["state"]);
    EXPECT_EQ(0, List()[0]["tries"]);
}

TEST_F(CliPage, IsMovedOnlyWhereItCanBeSent) {
    const ProgramRun unknown = Run({"page", "move", "7", "duty", "--line", "west"});
    EXPECT_EQ(2, unknown.exit_code);
    EXPECT_THAT(unknown.err, AllOf(HasSubstr("there is no line \"west\""),
                                   HasSubstr("\"north\", \"south\", \"old\"")));
    const ProgramRun mute = Run({"page", "move", "7", "duty", "--line", "old"});
    EXPECT_EQ(2, mute.exit_code);
    EXPECT_THAT(mute.err, HasSubstr("line \"old\" has no dial command for \"duty\""));
    EXPECT_EQ("north", List()[0]["line"]);
}

TEST_F(CliPage, IsMovedOnlyToALineThatIsInService) {
    Execute("INSERT INTO Host_Lines (line, health, reason) VALUES ('south', 'sick', 'no modem')");
    const ProgramRun sick = Run({"page", "move", "7", "duty", "--line", "south"});
    EXPECT_EQ(1, sick.exit_code);
    EXPECT_EQ("pagerfwd: line \"south\" is sick: no modem\n", sick.err);
    Execute("UPDATE Host_Lines SET health = 'well', paused = 1");
    const ProgramRun paused = Run({"page", "move", "7", "duty", "--line", "south"});
    EXPECT_EQ(1, paused.exit_code);
    EXPECT_EQ("pagerfwd: line \"south\" is paused; put it back with: pagerfwd line resume\n",
              paused.err);
    EXPECT_EQ("north", List()[0]["line"]);
}

TEST_F(CliPage, ThatIsNotPendingIsRefused) {
    const ProgramRun run = Run({"page", "cancel", "8", "duty", "--why", "x"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_EQ(
        "pagerfwd: no page of alarm 8 to \"duty\" is pending; pagerfwd page list shows those that "
        "are\n",
        run.err);
    EXPECT_EQ(2, Run({"page", "cancel", "7", "duty"}).exit_code);
    EXPECT_EQ(2, Run({"page", "cancel", "7", "duty", "--why", " "}).exit_code);
    const ProgramRun nowhere = Run({"page", "move", "7", "duty", "--line", ""});
    EXPECT_EQ(2, nowhere.exit_code);
    EXPECT_THAT(nowhere.err, HasSubstr("--line: a line has a name\n"));
    EXPECT_EQ(2, Run({"page"}).exit_code);
    EXPECT_EQ(2U, List().size());
}

// The process of its line has the page: only the engine can take it away.
TEST_F(CliPage, IsLeftToARunningEngine) {
    ChildProcess engine({STORE_PROCESS, "site.db", "engine"});
    ASSERT_EQ("taken", engine.ReadLine());
    const ProgramRun run = Run({"page", "cancel", "7", "duty", "--why", "x"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(
        "page of alarm 7 to \"duty\": to be given up, as soon as its line has finished the page "
        "that is on it\n",
        run.out);
    EXPECT_EQ("pending, to be given up", List()[0]["state"]);
    Execute("UPDATE Host_PageRequests SET line = 'south'");
    EXPECT_EQ("pending, to be moved to south", List()[0]["state"]);
}

}  // namespace
