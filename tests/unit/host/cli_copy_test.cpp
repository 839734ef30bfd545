// `pagerfwd copy` and `init --print`.
#include <gmock/gmock.h>

#include "host/process/database_locks.h"
#include "host/store/rights.h"
#include "host/store/tables/nodes.h"
#include "tests/unit/host/cli_fixture.h"

namespace host {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class CopyCommand : public CliFixture {
 protected:
    CopyCommand() {
        Run({"init"});
        Run({"alarm", "raise", "Pump 3"});
    }
};

TEST_F(CopyCommand, MovesAWholeSite) {
    const ProgramRun run = Run({"copy", "site.db", "other.db"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, HasSubstr("AlarmLog: 1 row\n"));
    EXPECT_THAT(run.out, HasSubstr("other.db: is now as site.db is\n"));
    EXPECT_THAT(RunProgram({PAGERFWD_PROGRAM, "--database", "other.db", "alarm", "list"}).out,
                HasSubstr("Pump 3"));
}

TEST_F(CopyCommand, RefusesADatabaseWithASite) {
    Run({"copy", "site.db", "other.db"});
    const ProgramRun run = Run({"copy", "site.db", "other.db"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("other.db: holds a site already"));
}

TEST_F(CopyCommand, RefusesADatabaseThatIsServed) {
    LockFile engine = EngineLock("site.db");
    ASSERT_TRUE(engine.TryTake("run"));
    const ProgramRun run = Run({"copy", "site.db", "other.db"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("site.db: served by "));
}

// On whichever host, of which no lock here tells anything.
TEST_F(CopyCommand, RefusesADatabaseThatANodeSomewhereHolds) {
    Connection site("site.db");
    const auto tenure = TakeLease(site, "north", "a host, process 7", std::chrono::hours(1));
    const ProgramRun run = Run({"copy", "site.db", "other.db"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("site.db: node \"north\" serves it: a host, process 7"));
    EndLease(site, *tenure);
    EXPECT_EQ(0, Run({"copy", "site.db", "other.db"}).exit_code);
}

TEST_F(CopyCommand, RefusesToFillADatabaseThatANodeSomewhereHolds) {
    RunProgram({PAGERFWD_PROGRAM, "--database", "other.db", "init"});
    Connection other("other.db");
    TakeLease(other, "north", "a host, process 7", std::chrono::hours(1));
    const ProgramRun run = Run({"copy", "site.db", "other.db"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("other.db: node \"north\" serves it: a host, process 7"));
}

TEST_F(CopyCommand, RefusesWhatIsNoSite) {
    EXPECT_EQ(3, Run({"copy", "none.db", "other.db"}).exit_code);
    EXPECT_FALSE(std::filesystem::exists("other.db"));
    Connection("newer.db", Connection::Mode::kCreate).Execute("PRAGMA user_version = 99");
    EXPECT_THAT(Run({"copy", "newer.db", "other.db"}).err, HasSubstr("made by a newer pagerfwd"));
    EXPECT_THAT(Run({"copy", "site.db", "newer.db"}).err, HasSubstr("made by a newer pagerfwd"));
}

TEST_F(CopyCommand, TakesNoPasswordThatEverybodySees) {
    const ProgramRun run = Run({"copy", "site.db", "postgresql://ann:secret@db/site"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("PGPASSFILE"));
    EXPECT_THAT(run.err, Not(HasSubstr("secret")));
}

TEST_F(CopyCommand, HasBesideItThePrintedSchemaThatNeedsNoDatabase) {
    const ProgramRun run =
        RunProgram({PAGERFWD_PROGRAM, "--database", "none.db", "init", "--print"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ(SchemaForPostgres(), run.out);
    EXPECT_FALSE(std::filesystem::exists("none.db"));
}

}  // namespace
}  // namespace host
