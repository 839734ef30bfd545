// Two hosts over one database, upgraded one after the other: both versions serve the site together;
// the newer tables are made when the last node of the older one has gone, and that one is refused
// from then on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <string>

#include "tests/proof/two_hosts.h"
#include "tests/unit/host/files.h"

namespace proof {
namespace {

using ::testing::HasSubstr;

class Upgrade : public TwoHosts {
 protected:
    static std::unique_ptr<StartedProgram> RunNext(const std::string& node) {
        return Run(node, {}, NEXT_PAGERFWD_PROGRAM);
    }
    static ProgramRun InitByNext() { return RunProgram({NEXT_PAGERFWD_PROGRAM, "init"}); }
    // A node of the next version that begins alone makes its tables at once.
    void BeginOldBeforeNext() {
        north_ = Run("north");
        Until("north", [&] { return Ask("SELECT count(*) FROM Host_Lines WHERE pid > 0") == "1"; });
        south_ = RunNext("south");
        UntilBothServe();
    }
    std::string Version() const {
        return Ask("SELECT obj_description(to_regclass('host_settings'))");
    }
};

TEST_F(Upgrade, IsEnteredWhenTheLastNodeOfTheVersionBeforeHasGone) {
    MakeSite();
    const std::string before = Version();
    const std::string behind = std::to_string(std::stoi(before) + 1);
    BeginOldBeforeNext();
    const ProgramRun init = InitByNext();
    EXPECT_EQ(0, init.exit_code) << init.err;
    EXPECT_THAT(init.out, HasSubstr("Still older: \"north\" ("));
    Raise(2);
    UntilAllLeft();
    Until("one by each", [&] { return Ask("SELECT count(DISTINCT port) FROM Host_Sends") == "2"; });
    EXPECT_EQ(before, Version());

    north_->Signal(SIGTERM, false);
    north_->Await();
    Until("the newer tables", [&] { return Version() == behind; });
    EXPECT_THAT(ReadFile("south.log"), HasSubstr("the database is brought up to date"));
    const ProgramRun refused =
        Pagerfwd({"--state", "north-host", "--locks", "north-host", "run", "--node", "north"});
    EXPECT_EQ(3, refused.exit_code);
    EXPECT_THAT(refused.err, HasSubstr("made by a newer pagerfwd, which this one doesn't"));

    north_ = RunNext("north");
    UntilBothServe();
    Raise(2, NEXT_PAGERFWD_PROGRAM);
    UntilAllLeft();
    EXPECT_THAT(InitByNext().out, HasSubstr("has its tables already"));
    Judge(4);
}

// One that was killed has its lease until another takes it away.
TEST_F(Upgrade, IsEnteredBehindTheTakeoverOfANodeOfTheVersionBefore) {
    MakeSite();
    const std::string before = Version();
    BeginOldBeforeNext();
    north_->Signal(SIGKILL, true);
    EXPECT_THAT(InitByNext().out, HasSubstr("Still older: \"north\" ("));
    Until("the newer tables", [&] { return Version() != before; });
    Raise(1, NEXT_PAGERFWD_PROGRAM);
    UntilAllLeft();
    Judge(1);
}

}  // namespace
}  // namespace proof
