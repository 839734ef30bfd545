// `pagerfwd run` where the system refuses what it needs: room on the disk, or a thread.
#include "host/files/last_room.h"
#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;

class RunRefused : public RunTest {
 protected:
    // Under a system that refuses, as the variable says: before the simulation's own calls, which
    // are made in the library's name.
    ProgramRun RunUntilDoneWith(const std::string& refusal) {
        return RunWith(refusal, "--until-done");
    }
    ProgramRun RunWith(const std::string& refusal, const std::string& options) {
        WriteFile("pagerfwd.sh", "LD_PRELOAD=\"" REFUSALS ":$LD_PRELOAD\" " + refusal +
                                     " exec " PAGERFWD_PROGRAM " run " + options + "\n");
        WriteFile("exchange.toml", exchange);
        const ProgramRun run =
            RunProgram({PAGERSIM_PROGRAM, "--quiet", "--clock", "clock", "--report", "report.json",
                        "--", "/bin/sh", "pagerfwd.sh"});
        CountPages();
        return run;
    }
    // From one second to another, for these.
    static std::string During(const std::string& refusal, int from, int to) {
        return refusal + "=\"" + std::to_string(kNow + from) + " " + std::to_string(kNow + to) +
               "\"";
    }
    static size_t Count(const std::string& text, const std::string& part) {
        size_t count = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++count;
        }
        return count;
    }
};

// A page is queued, and its worker can't be started; nothing else happens that would start it.
TEST_F(RunRefused, StartsTheWorkerThatTheSystemHadNoThreadForAtTheNextLook) {
    Raise("DUTY/1");
    At(300, "kill -TERM $PPID");
    const ProgramRun run = RunUntilDoneWith("PAGERFWD_REFUSED_THREADS=1");
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
}

// The library waits for such a line for ever.
TEST_F(RunRefused, StartsALineAnewThatNeverTakesItsBytes) {
    Raise("DUTY/1");
    At(3000, "kill -TERM $PPID");
    const ProgramRun run = RunUntilDoneWith(During("PAGERFWD_STALLED_LINE", 10, 700));
    EXPECT_THAT(run.err, HasSubstr("the library doesn't go on; the line is started anew"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1))) << run.err;
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
}

// The library takes a port whose device it couldn't open for taken as long as it is loaded: another
// try in the same process, five minutes later, would find it so.
TEST_F(RunRefused, StartsALineAnewWhosePortStaysTaken) {
    Raise("DUTY/1");
    At(3000, "kill -TERM $PPID");
    const ProgramRun run = RunUntilDoneWith(During("PAGERFWD_TAKEN_LINE", 0, 2));
    EXPECT_THAT(run.err, HasSubstr("/dev/ttyS0 could not be opened"));
    EXPECT_THAT(run.err, Not(HasSubstr("is sick")));
    EXPECT_THAT(Rows("outcome || ' ' || result FROM Host_Sends ORDER BY row_id"),
                ElementsAre("not sent 5", "sent 0"));
    EXPECT_GT(60, std::stol(Rows("max(at) FROM Host_Sends").at(0)) - kNow) << run.err;
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
}

// Longer than that: it is asked then, without a page, until the device can be opened.
TEST_F(RunRefused, AsksALineWhosePortIsTakenForLong) {
    Raise("DUTY/1");
    At(3000, "kill -TERM $PPID");
    const ProgramRun run = RunUntilDoneWith(During("PAGERFWD_TAKEN_LINE", 0, 200));
    EXPECT_THAT(run.err, HasSubstr("line \"COM 1\" is sick: its device can't be opened"));
    EXPECT_THAT(run.err, HasSubstr("line \"COM 1\" is back"));
    EXPECT_GT(600, std::stol(Rows("max(at) FROM Host_Sends").at(0)) - kNow) << run.err;
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
}

TEST_F(RunRefused, TellsOfWhatItCouldNotWriteToTheEnd) {
    Raise("DUTY/1");
    At(120, "kill -TERM $PPID");
    const ProgramRun run = RunWith(During("PAGERFWD_REFUSED_WRITES", 10, 100000), "");
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_THAT(run.err,
                ContainsRegex("error: line .COM 1.: [1-9] change.s. could not be written to "
                              "the end; pages that were sent meanwhile may be sent again"));
}

TEST_F(RunRefused, TellsOfADiskThatIsFullAndThatItHasRoomAgain) {
    MakeSite("pagerfwd.db",
             "[notify]\ncommand = [\"/bin/sh\", \"-c\", \"cat >>told\"]\n" + std::string(kSite));
    At(600, "kill -TERM $PPID");
    const ProgramRun run = RunWith(During("PAGERFWD_NO_ROOM", 100, 300), "");
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("error: the disk of ./pagerfwd.db is full: 0 KiB are left"));
    EXPECT_THAT(run.err, HasSubstr("the disk of ./pagerfwd.db has room again"));
    const std::string told = ReadFile("told");
    EXPECT_EQ(2U, Count(told, R"("kind":"disk-full")")) << told;
    EXPECT_THAT(told, HasSubstr("the disk of ./pagerfwd.db is full"));
    EXPECT_THAT(told, HasSubstr("the disk of ./pagerfwd.db has room again"));
}

// --- A clock that is set, in the middle of the first of two pages. By hours: a time server was not
// there at the start. By minutes: a host was set aside.

class RunWhileTheClockIsSet : public RunRefused, public ::testing::WithParamInterface<int> {
 protected:
    static std::string SetAt(int second, int by) {
        return "PAGERFWD_SET_CLOCK=\"" + std::to_string(kNow + second) + " " + std::to_string(by) +
               "\"";
    }
};

TEST_P(RunWhileTheClockIsSet, SendsEachPageOnceAndTakesNoLineForStuck) {
    Raise("DUTY/1");
    Raise("DUTY/2");
    At(600, "kill -TERM $PPID");
    const ProgramRun run = RunUntilDoneWith(SetAt(12, GetParam()));
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, Not(HasSubstr("started anew")));
    EXPECT_THAT(run.err, Not(HasSubstr("killed")));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 2))) << run.err;
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "duty done 1"));
}

// A line that waits for nothing but its node's bell.
TEST_P(RunWhileTheClockIsSet, LeavesALineInPeaceThatHasNothingToDo) {
    At(200, Pagerfwd("alarm raise --group DUTY/1 --server s x >/dev/null"));
    At(300, "kill -TERM $PPID");
    const ProgramRun run = RunWith(SetAt(100, GetParam()), "");
    EXPECT_THAT(run.err, Not(HasSubstr("started anew")));
    EXPECT_THAT(run.err, Not(HasSubstr("killed")));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1))) << run.err;
}

INSTANTIATE_TEST_SUITE_P(By, RunWhileTheClockIsSet,
                         ::testing::Values(-25 * 3600, -700, 500, 700, 25 * 3600));

struct Refusal {
    const char* name;
    size_t times_told;  // what is written within the room that is reserved isn't refused
};

class RunOnAFullDisk : public RunRefused, public ::testing::WithParamInterface<Refusal> {
 protected:
    static constexpr size_t kAlarms = 12;
};

// One line sends twelve pages in some six minutes: most of them while nothing can be written.
TEST_P(RunOnAFullDisk, EndsAllPagesAndSendsNoneAgain) {
    for (size_t alarm = 1; alarm <= kAlarms; ++alarm) {
        Raise("DUTY/" + std::to_string(alarm));
    }
    const ProgramRun run = RunUntilDoneWith(During(GetParam().name, 40, 20 * 60));
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(pages, ElementsAre(Pair("tap", kAlarms)));
    EXPECT_EQ(std::vector<std::string>(kAlarms, "duty done 1"), Stories());
    const size_t told = GetParam().times_told;
    EXPECT_EQ(told, Count(run.err, "what can't be written is kept in memory until it can\n"));
    EXPECT_EQ(told, Count(run.err, " that had been kept are written\n")) << run.err;
    pages.clear();
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, IsEmpty());
}

// Not even what lies beside the database could be made.
TEST_F(RunRefused, BeginsOnAFullDiskInTheRoomThatWasKept) {
    host::KeepLastRoom("pagerfwd.db");
    Raise("DUTY/1");
    const ProgramRun run = RunUntilDoneWith(During("PAGERFWD_NO_OTHER_ROOM", 0, 20));
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1))) << run.err;
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
}

// What it has kept is written into the room that was kept for it.
TEST_F(RunRefused, SendsNothingAgainThatWasEndedOnAFullDisk) {
    constexpr int kAlarms = 2;  // as many as a line has before it could be seen to have sent any
    for (int alarm = 1; alarm <= kAlarms; ++alarm) {
        Raise("DUTY/" + std::to_string(alarm));
    }
    At(300, "kill -TERM $PPID");
    const ProgramRun run = RunUntilDoneWith(During("PAGERFWD_NO_OTHER_ROOM", 10, 3600));
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("what can't be written is kept in memory until it can\n"));
    EXPECT_THAT(run.err, HasSubstr(" that had been kept are written\n"));
    EXPECT_THAT(run.err, Not(HasSubstr("could not be written to the end")));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", kAlarms)));
    EXPECT_EQ(std::vector<std::string>(kAlarms, "duty done 1"), Stories());
    pages.clear();
    EXPECT_EQ(0, RunUntilDone().exit_code);
    EXPECT_THAT(pages, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Where, RunOnAFullDisk,
                         ::testing::Values(Refusal{"PAGERFWD_FULL_DISK", 0},
                                           Refusal{"PAGERFWD_REFUSED_WRITES", 1}));

}  // namespace
