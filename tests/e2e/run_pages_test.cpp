// What an operator asks of pages and lines while a node serves them.
#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Pair;

class RunPages : public RunTest {
 protected:
    RunPages() {
        MakeSite("pagerfwd.db", std::string(kSite) + R"(
[[port]]
name = "COM 2"
[port.pager]
dial = "ATDT0,"
[port.sms1]
dial = "ATDT0,5550101"
)");
        exchange = "[[line]]\nport = \"COM 2\"\n" + exchange;
    }
    void PageAt(int second, const std::string& arguments) {
        At(second, Pagerfwd("page " + arguments) + " >>said 2>&1");
    }
    // "sent by COM 2", one for each sending.
    static std::vector<std::string> Sends() {
        return Rows("outcome || ' by ' || port FROM Host_Sends");
    }
};

// The page is on the line at that moment, and would be repeated a minute later.
TEST_F(RunPages, GiveOneUpBehindThePageOnTheLine) {
    const int32_t alarm = Raise("TECH/1");
    PageAt(12, "cancel " + std::to_string(alarm) + " tech --why 'the pump is off'");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(ReadFile("said"), HasSubstr("\"tech\": to be given up, as soon as its line"));
    EXPECT_THAT(pages, ElementsAre(Pair("plain", 1)));
    EXPECT_THAT(run.err, HasSubstr("to \"tech\": given up by hand: the pump is off ("));
    EXPECT_EQ("3", StateOf(alarm));
}

// Between two tries nothing is on the line.
TEST_F(RunPages, GiveOneUpAtOnceBetweenItsTries) {
    const int32_t alarm = Raise("TECH/1");
    PageAt(45, "cancel " + std::to_string(alarm) + " tech --why 'the pump is off'");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(ReadFile("said"), HasSubstr("\"tech\": given up\n"));
    EXPECT_THAT(pages, ElementsAre(Pair("plain", 1)));
}

// A first failure is tried again five minutes later; by the other line at once.
TEST_F(RunPages, MoveOneToTheOtherLine) {
    const size_t at = exchange.find("numbers = [\"5550101\"]");
    exchange.insert(at, "busy_calls = 1\n");
    const int32_t alarm = Raise("DUTY/1");
    PageAt(60, "move " + std::to_string(alarm) + " duty --line 'COM 2'");
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(ReadFile("said"), HasSubstr("\"duty\": moved to line \"COM 2\"\n"));
    EXPECT_THAT(Sends(), ElementsAre("not sent by COM 1", "sent by COM 2"));
    EXPECT_THAT(Rows("max(at) - 978948000 < 120 FROM Host_Sends"), ElementsAre("1"));
    EXPECT_EQ("4", StateOf(alarm));
}

TEST_F(RunPages, GoByTheOtherLineWhileOneIsPaused) {
    EXPECT_EQ(0, RunProgram({PAGERFWD_PROGRAM, "line", "pause", "COM 1"}).exit_code);
    Raise("DUTY/1");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(Sends(), ElementsAre("sent by COM 2"));
}

TEST_F(RunPages, GoToTheOtherLineWhenTheirsIsPausedBetweenTwoTries) {
    exchange.insert(exchange.find("numbers = [\"5550101\"]"), "busy_calls = 1\n");
    Raise("DUTY/1");
    At(60, Pagerfwd("line pause 'COM 1' >/dev/null"));
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(Sends(), ElementsAre("not sent by COM 1", "sent by COM 2"));
    EXPECT_THAT(Rows("note FROM Host_History WHERE note <> ''"), ElementsAre("it is paused"));
    EXPECT_THAT(run.err, HasSubstr("1 page(s) taken from line \"COM 1\", to go by another\n"));
}

// Killed while it dialled; of the porter's pages, one had been tried once already.
TEST_F(RunPages, AreThoseThatAnOlderMakeHasLeft) {
    RunProgram({"/bin/rm", "-f", "pagerfwd.db"});
    host::Connection("pagerfwd.db", host::Connection::Mode::kCreate)
        .Execute(ReadFile(DATABASES "/version_2.sql"));
    EXPECT_EQ(0, RunProgram({PAGERFWD_PROGRAM, "init"}).exit_code);
    Execute("UPDATE AlarmFwd_PagerSetting SET numretries = '1', retrydelay = '1'");
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr("3 page(s) are pending from before"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty phone done 1", "duty phone done 1",
                                       "porter off limit 2", "porter off limit 2"));
    EXPECT_THAT(Rows("min(CAST(tries AS INTEGER)) FROM Host_History WHERE alarm = '978948000'"
                     " AND pager = 'porter' AND line = 'COM 1' AND change = 'written'"),
                ElementsAre("1"));
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog ORDER BY row_id"), ElementsAre("3", "1", "3"));
}

}  // namespace
