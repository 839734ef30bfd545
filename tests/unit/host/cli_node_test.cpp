// pagerfwd node, and what an operator says of a page whose outcome is unknown.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::HasSubstr;

class CliNode : public CliFixture {
 protected:
    CliNode() {
        MakeSite();
        Execute(
            "INSERT INTO Host_Nodes (node, place, term, holder, valid_until, leads) VALUES"
            " ('north', 0, 3, 'a, process 12', 99999999999999, 1),"
            " ('south', 1, 0, '', 0, 0), ('east', -1, 2, 'b, process 7', 1, 0)");
    }
    // A page that may have been sent when its node died.
    static void MakeUnknown() {
        Execute(
            "INSERT INTO AlarmLog (alarmlogID, pagerstate, alarmack, alarm_group, severity,"
            " timestamp) VALUES ('978948000', '2', '0', 'ops', '1', '978948000');"
            "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, unknown)"
            " VALUES ('978948000', 0, 'ops', 'duty', 0, 1)");
    }
};

TEST_F(CliNode, IsListed) {
    EXPECT_EQ(
        "NODE   STATE                       PROCESS        TERM  LEADS\n"
        "north  runs                        a, process 12  3     yes\n"
        "south  not running                 -              0     -\n"
        "east   gone, not in the site file  b, process 7   2     -\n",
        Run({"node", "list"}).out);
    const nlohmann::json nodes = nlohmann::json::parse(Run({"node", "list", "--json"}).out);
    EXPECT_TRUE(nodes[0]["runs"]);
    EXPECT_EQ(3, nodes[0]["term"]);
    EXPECT_FALSE(nodes[2]["in_site_file"]);
}

TEST_F(CliNode, IsShownAsTheEngine) {
    EXPECT_THAT(Run({"status"}).out, HasSubstr("engine: node \"north\" (a, process 12)\n"));
}

TEST_F(CliNode, IsTakenOutOfServiceAndPutBack) {
    EXPECT_EQ("node \"north\": drained; each line finishes the page that is on it\n",
              Run({"node", "drain", "north"}).out);
    EXPECT_THAT(Run({"node", "list"}).out, HasSubstr("runs, drained"));
    EXPECT_EQ("node \"south\": drained, as soon as it runs\n", Run({"node", "drain", "south"}).out);
    EXPECT_EQ("node \"north\": in service again\n", Run({"node", "resume", "north"}).out);
    const ProgramRun unknown = Run({"node", "drain", "west"});
    EXPECT_EQ(2, unknown.exit_code);
    EXPECT_THAT(unknown.err, HasSubstr("there is no node \"west\""));
}

TEST_F(CliNode, IsRemovedOnlyWhenItHasEnded) {
    const ProgramRun lives = Run({"node", "remove", "north"});
    EXPECT_EQ(1, lives.exit_code);
    EXPECT_THAT(lives.err, HasSubstr("lives, or did a moment ago: a, process 12"));
    EXPECT_EQ("node \"east\": removed; 0 page(s) of its lines wait for others\n",
              Run({"node", "remove", "east"}).out);
    EXPECT_EQ(2, Run({"node", "remove", "east"}).exit_code);
}

TEST_F(CliNode, HasLeftAPageThatIsSentAgainOrCountedAsSent) {
    MakeUnknown();
    EXPECT_THAT(Run({"page", "list"}).out, HasSubstr("outcome unknown"));
    EXPECT_EQ("page of alarm 978948000 to \"duty\": is sent again\n",
              Run({"page", "resend", "978948000", "duty"}).out);
    EXPECT_THAT(Run({"page", "list"}).out, HasSubstr("waiting"));
    const ProgramRun again = Run({"page", "done", "978948000", "duty"});
    EXPECT_EQ(1, again.exit_code);
    EXPECT_THAT(again.err, HasSubstr("nobody asks what it has come to"));
    Execute("UPDATE Host_Deliveries SET unknown = 1");
    EXPECT_EQ("page of alarm 978948000 to \"duty\": counted as sent\n",
              Run({"page", "done", "978948000", "duty"}).out);
    EXPECT_EQ("no pages are pending\n", Run({"page", "list"}).out);
}

}  // namespace
