// `pagerfwd run` and those beside it: a second engine, and test pages that it is asked for.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
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
        return TextOf("beside");
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
    EXPECT_THAT(said,
                HasSubstr("port \"COM 1\", /dev/ttyS0: used already by pagerfwd run, process "));
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
    // Asks the engine for a test page while its clock stands still, and lets it go on until it has
    // answered.
    ProgramRun Ask() {
        mkfifo("asked", 0600);
        mkfifo("answered", 0600);
        At(5, "cat asked >/dev/null");
        At(900, "cat answered >/dev/null; kill -TERM $PPID");
        std::string engine_command = "exec";
        for (const std::string& word : CommandOf({"run"})) {
            engine_command += " '" + word + "'";
        }
        ChildProcess engine({"/bin/sh", "-c", engine_command + " 2>run.txt"});
        const int asked = open("asked", O_WRONLY | O_CLOEXEC);  // waits for its reader
        ChildProcess asker({"/bin/sh", "-c", Pagerfwd("test duty 2>test.txt")});
        while (Rows("pager FROM Host_TestPages").empty()) {
            usleep(10000);  // the asker's process has a clock of its own
        }
        close(asked);
        const std::string first = asker.ReadLine();
        ProgramRun run{0, first + "\n" + asker.ReadLine(), ""};
        run.exit_code = asker.Finish();
        run.err = TextOf("test.txt");
        std::ofstream("answered").close();
        EXPECT_EQ(0, engine.Finish());
        CountPages();
        return run;
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
};

TEST_F(TestPageByRun, IsSentByIt) {
    const ProgramRun run = Ask();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("test page to \"duty\", number 5550111, by the running engine ...\nsent", run.out);
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(TextOf("run.txt"), HasSubstr("test page to \"duty\": result 0\n"));
    EXPECT_THAT(Rows("pager FROM Host_TestPages"), IsEmpty());
}

TEST_F(TestPageByRun, HasItsResult) {
    exchange +=
        "[[centre]]\nname = \"busy\"\nprotocol = \"tap\"\nnumbers = [\"5550109\"]\n"
        "calls = \"busy\"\n";
    Execute("UPDATE AlarmFwd_COMProperties SET SMS1Dial = 'ATDT0,5550109'");
    const ProgramRun run = Ask();
    EXPECT_EQ(6, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("\nnot sent"));
    EXPECT_THAT(run.err, HasSubstr("(result 6)"));
}

// Behind the page that is on the line; the alarm's others go on.
TEST_F(TestPageByRun, IsSentBetweenTheOthers) {
    Raise("ALL/1");
    EXPECT_EQ(0, Ask().exit_code);
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
