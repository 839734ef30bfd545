// Two hosts over one database: what becomes of a page when a node is killed, with its lines or
// without, stopped and woken up, ended in order, drained; and how nodes begin.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "tests/proof/two_hosts.h"
#include "tests/unit/host/files.h"

namespace proof {
namespace {

using ::testing::HasSubstr;

TEST_F(TwoHosts, LoseNoPageWhenOneIsKilledWithItsLines) {
    BeginBoth();
    north_->Signal(SIGKILL, true);
    const auto killed = std::chrono::steady_clock::now();
    UntilTakenOver();
    EXPECT_LT(std::chrono::steady_clock::now() - killed, std::chrono::seconds(8));
    UntilAllLeft();
    EXPECT_THAT(ReadFile("south.log"), HasSubstr("was on its line, and may have been sent"));
    Judge(2);
}

TEST_F(TwoHosts, LoseNoPageWhenOnlyTheNodeIsKilled) {
    BeginBoth();
    north_->Signal(SIGKILL, false);
    UntilAllLeft();
    Judge(2);
}

TEST_F(TwoHosts, LoseNoPageWhenOneIsStoppedForLongerThanItsLease) {
    BeginBoth();
    north_->Signal(SIGSTOP, true);
    UntilTakenOver();
    north_->Signal(SIGCONT, true);
    UntilAllLeft();
    EXPECT_THAT(ReadFile("north.log"), HasSubstr("it begins anew"));
    EXPECT_EQ("3", Ask("SELECT term FROM Host_Nodes WHERE node = 'north'"));
    Judge(2);
}

TEST_F(TwoHosts, SendNoPageTwiceWhenOneIsDrained) {
    BeginBoth();
    EXPECT_EQ(0, Pagerfwd({"node", "drain", "north"}).exit_code);
    UntilAllLeft();
    EXPECT_EQ("0", Ask("SELECT count(*) FROM Host_History WHERE note LIKE '%may have%'"));
    Judge(2);
}

TEST_F(TwoHosts, SendNoPageTwiceWhenOneEndsInOrder) {
    BeginBoth();
    north_->Signal(SIGTERM, false);
    north_->Await();
    UntilAllLeft();
    EXPECT_EQ("0", Ask("SELECT count(*) FROM Host_History WHERE note LIKE '%may have%'"));
    Judge(2);
}

TEST_F(TwoHosts, AskAboutAPageThatMayHaveLeft) {
    MakeSite("[site]\nunknown_outcome = \"ask\"\n");
    const auto north = Run("north");
    Until("north", [&] { return Ask("SELECT count(*) FROM Host_Lines WHERE pid > 0") == "1"; });
    Raise(1);
    UntilOnLine("north");
    north->Signal(SIGKILL, true);
    const auto south = Run("south");
    Until("the question", [] {
        return Pagerfwd({"page", "list"}).out.find("outcome unknown") != std::string::npos;
    });
    const std::string alarm = Ask("SELECT alarmlogID FROM AlarmLog");
    EXPECT_EQ(0, Pagerfwd({"page", "resend", alarm, "duty"}).exit_code);
    UntilAllLeft();
    Judge(1);
}

TEST_F(TwoHosts, HaveTwoNames) {
    MakeSite();
    const auto north = Run("north");
    Until("north", [&] { return Ask("SELECT count(*) FROM Host_Lines WHERE pid > 0") == "1"; });
    std::filesystem::create_directory("south-host");
    const ProgramRun second =
        Pagerfwd({"--state", "south-host", "--locks", ".", "run", "--node", "north"});
    EXPECT_EQ(1, second.exit_code);
    EXPECT_THAT(second.err, HasSubstr("node \"north\" runs already: "));
}

// Two that start at one instant: each has its term, and one of them takes the alarms up.
TEST_F(TwoHosts, StartAtOneInstantOnAnEmptySite) {
    MakeSite();
    const auto north = Run("north");
    const auto south = Run("south");
    UntilBothServe();
    EXPECT_EQ("2", Ask("SELECT count(*) FROM Host_Nodes WHERE term = 1"));
    EXPECT_EQ("1", Ask("SELECT count(*) FROM Host_Nodes WHERE leads = 1"));
    Raise(2);
    UntilAllLeft();
    Judge(2);
}

}  // namespace
}  // namespace proof
