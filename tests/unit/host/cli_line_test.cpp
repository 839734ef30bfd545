// pagerfwd line, and the lines in the status.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class CliLine : public CliFixture {
 protected:
    CliLine() {
        EXPECT_EQ(0, Run({"init"}).exit_code);
        Execute(
            "INSERT INTO AlarmFwd_COMProperties (Description, device)"
            " VALUES ('north', '/dev/ttyUSB0'), ('COM 2', '')");
    }
    static nlohmann::json Lines() {
        return nlohmann::json::parse(Run({"line", "list", "--json"}).out);
    }
    static void LetThemWork() {
        Execute(
            "INSERT INTO Host_Lines (line, health, since, reason, doing, doing_since, pid) VALUES"
            " ('north', 'well', 978948000, '', 'page of alarm 7', 978948100, 12),"
            " ('COM 2', 'sick', 978948060, 'no dial tone', '', 0, 0);"
            "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState, line)"
            " VALUES ('7', 'ops', 'duty', '2', 'north'), ('8', 'ops', 'duty', '2', 'north'),"
            " ('6', 'ops', 'duty', '4', 'north');"
            "INSERT INTO Host_Sends (at, seconds, alarm, pager, port, outcome, result, reason)"
            " VALUES (978948090, 30, '6', 'duty', 'north', 'sent', 0, '')");
    }
};

TEST_F(CliLine, IsOfUnknownHealthBeforeAnyEngineRan) {
    EXPECT_EQ(
        "LINE   DEVICE        PAGES  LAST SENT  DOING  HEALTH\n"
        "north  /dev/ttyUSB0  0      -          -      unknown\n"
        "COM 2  /dev/ttyS1    0      -          -      unknown\n",
        Run({"line", "list"}).out);
    EXPECT_TRUE(Lines()[0]["last_sent"].is_null());
}

TEST_F(CliLine, IsShownWithWhatItDoes) {
    LetThemWork();
    const std::string table =
        "LINE   DEVICE        PAGES  LAST SENT            DOING            HEALTH\n"
        "north  /dev/ttyUSB0  2      2001-01-08 10:01:30  page of alarm 7  well\n"
        "COM 2  /dev/ttyS1    0      -                    -                sick since "
        "2001-01-08 10:01:00: no dial tone\n";
    EXPECT_EQ(table, Run({"line", "list"}).out);
    EXPECT_THAT(Run({"status"}).out, HasSubstr("engine: not running\n" + table + "pending: 2\n"));
    EXPECT_EQ(nlohmann::json::parse(R"({"line": "north", "device": "/dev/ttyUSB0",
        "health": "well", "reason": "", "paused": false, "doing": "page of alarm 7", "pages": 2,
        "since": "2001-01-08 10:00:00", "doing_since": "2001-01-08 10:01:40",
        "last_sent": "2001-01-08 10:01:30"})"),
              Lines()[0]);
    EXPECT_EQ(Lines(), nlohmann::json::parse(Run({"status", "--json"}).out)["lines"]);
}

TEST_F(CliLine, HasThePagesThatWaitForItAlone) {
    LetThemWork();
    Execute(
        "INSERT INTO AlarmFwd_PagerSetting (description, comport) VALUES ('bound', 'COM 2'),"
        " ('any', '');"
        "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, line) VALUES"
        " ('9', 0, 'ops', 'bound', 0, ''), ('9', 1, 'ops', 'any', 0, ''),"
        " ('9', 2, 'ops', 'gone', 0, ''), ('10', 0, 'ops', 'bound', 0, 'COM 2')");
    EXPECT_EQ(2, Lines()[0]["pages"]);
    EXPECT_EQ(2, Lines()[1]["pages"]);
}

TEST_F(CliLine, IsPausedAndPutBack) {
    EXPECT_EQ("line \"COM 2\": paused\n", Run({"line", "pause", "COM 2"}).out);
    EXPECT_EQ("line \"COM 2\": was paused before\n", Run({"line", "pause", "COM 2"}).out);
    EXPECT_THAT(Run({"line", "list"}).out, HasSubstr("-      paused\n"));
    EXPECT_EQ(true, Lines()[1]["paused"]);
    EXPECT_EQ(false, Lines()[0]["paused"]);
    EXPECT_EQ("line \"COM 2\": in service again\n", Run({"line", "resume", "COM 2"}).out);
    EXPECT_EQ("line \"COM 2\": was not paused\n", Run({"line", "resume", "COM 2"}).out);
    EXPECT_EQ(false, Lines()[1]["paused"]);
}

TEST_F(CliLine, ThatIsSickAndPausedSaysBoth) {
    LetThemWork();
    Run({"line", "pause", "COM 2"});
    EXPECT_THAT(Run({"line", "list"}).out,
                HasSubstr("paused, sick since 2001-01-08 10:01:00: no dial tone\n"));
}

TEST_F(CliLine, ThatIsNotThereIsRefused) {
    const ProgramRun run = Run({"line", "pause", "south"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, AllOf(HasSubstr("no line \"south\""), HasSubstr("\"north\", \"COM 2\"")));
    EXPECT_EQ(2, Run({"line"}).exit_code);
    Execute("DELETE FROM AlarmFwd_COMProperties");
    EXPECT_EQ("no lines\n", Run({"line", "list"}).out);
}

}  // namespace
