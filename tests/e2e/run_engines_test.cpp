// `pagerfwd run` and those beside it: a second engine, and test pages that it is asked for.
#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::StartsWith;

class RunBeside : public RunTest {
 protected:
    // What a command beside the engine said, and its exit code behind it.
    std::string Beside(const std::string& arguments) {
        At(5, Pagerfwd(arguments) + " >beside 2>&1; echo \"exit $?\" >>beside");
        At(60, "kill -TERM $PPID");
        EXPECT_EQ(0, Simulated({"run"}).exit_code);
        return ReadFile("beside");
    }
};

TEST_F(RunBeside, IsRefusedForTheSameDatabase) {
    EXPECT_THAT(Beside("run --until-done"),
                AllOf(HasSubstr("./pagerfwd.db: served already by pagerfwd run, process "),
                      HasSubstr("\nexit 1\n")));
}

TEST_F(RunBeside, HasNoLineForAnotherDatabaseWithTheSamePort) {
    MakeSite("other.db", kSite);
    At(40, "kill -TERM $(cat other.pid)");
    const std::string said =
        Beside("--database other.db run >said 2>&1 & echo $! >other.pid; wait; cat said");
    EXPECT_THAT(said, HasSubstr("/dev/ttyS0: used already by pagerfwd run, process "));
    EXPECT_THAT(said, HasSubstr("line \"COM 1\" is sick: its device is used already"));
}

TEST_F(RunBeside, RefusesATestPageOverItsPort) {
    MakeSite("other.db", kSite);
    EXPECT_THAT(Beside("--database other.db test duty"),
                AllOf(HasSubstr("/dev/ttyS0: used already by pagerfwd run, process "),
                      HasSubstr("\nexit 3\n")));
}

TEST_F(RunBeside, MayServeAnotherPort) {
    MakeSite("other.db", "[[port]]\nname = \"COM 2\"\n");
    EXPECT_THAT(Beside("--database other.db run --until-done"), HasSubstr("ended\nexit 0\n"));
}

TEST_F(RunBeside, SeesTheEngine) {
    EXPECT_THAT(Beside("status"), StartsWith("engine: run, process "));
}

TEST_F(RunBeside, MayFollowOneThatWasKilled) {
    At(5, "kill -KILL $PPID");
    EXPECT_EQ(128 + 9, Simulated({"run"}).exit_code);
    EXPECT_THAT(RunProgram({PAGERFWD_PROGRAM, "status"}).out, StartsWith("engine: not running\n"));
    EXPECT_EQ(0, RunUntilDone().exit_code);
}

// --- Test pages.

class TestPageByRun : public RunTest {
 protected:
    // Asks a running engine for a test page.
    std::string Ask() {
        At(5, Pagerfwd("test duty >test.txt 2>&1; echo \"exit $?\" >>test.txt"));
        At(900, "kill -TERM $PPID");
        const ProgramRun run = Simulated({"run"});
        EXPECT_EQ(0, run.exit_code);
        said_by_engine = run.err;
        return ReadFile("test.txt");
    }

    // Leaves the pages of an alarm pending.
    void LeavePages() {
        Raise("ALL/1");
        const std::string before = exchange;
        At(5, KillAll());
        Simulated({"run"});
        exchange = before;
        pages.clear();
    }

    std::string said_by_engine;
};

TEST_F(TestPageByRun, IsSentByIt) {
    EXPECT_EQ("test page to \"duty\", number 5550111, by the running engine ...\nsent\nexit 0\n",
              Ask());
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(said_by_engine, HasSubstr("test page to \"duty\": result 0\n"));
    EXPECT_THAT(Rows("pager FROM Host_TestPages"), IsEmpty());
}

TEST_F(TestPageByRun, HasItsResult) {
    exchange +=
        "[[centre]]\nname = \"busy\"\nprotocol = \"tap\"\nnumbers = [\"5550109\"]\n"
        "calls = \"busy\"\n";
    Execute("UPDATE AlarmFwd_COMProperties SET SMS1Dial = 'ATDT0,5550109'");
    EXPECT_THAT(
        Ask(), AllOf(HasSubstr("\nnot sent\n"), HasSubstr("(result 6)\n"), EndsWith("\nexit 6\n")));
}

// Behind the page that is on the line; the alarm's others go on.
TEST_F(TestPageByRun, IsSentBetweenTheOthers) {
    Raise("ALL/1");
    EXPECT_THAT(Ask(), EndsWith("\nsent\nexit 0\n"));
    EXPECT_THAT(pages, ElementsAre(Pair("ntt", 1), Pair("plain", 2), Pair("tap", 2)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "osaka off limit 1", "tech off limit 2"));
}

TEST_F(TestPageByRun, LeavesPendingPagesAloneWithoutIt) {
    LeavePages();
    EXPECT_EQ(0, Simulated({"test", "duty"}).exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty pending 0", "osaka pending 0", "tech pending 0"));
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("ntt", 1), Pair("plain", 2), Pair("tap", 2)));
}

// Where the last state of an alarm belongs to another page, an engine would drop those it owes.
TEST_F(TestPageByRun, DropsNoPageOfAnAlarmWhoseOthersHaveEnded) {
    LeavePages();
    Execute("UPDATE AlarmLog SET pagerstate = '4'");
    EXPECT_EQ(0, Simulated({"test", "duty"}).exit_code);
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("ntt", 1), Pair("plain", 2), Pair("tap", 2)));
}

}  // namespace
