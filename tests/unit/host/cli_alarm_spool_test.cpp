// pagerfwd alarm while the database is away.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class CliAlarmSpool : public CliFixture {
 protected:
    CliAlarmSpool() { EXPECT_EQ(0, Run({"init"}).exit_code); }

    static std::vector<std::string> Texts() {
        std::vector<std::string> texts;
        host::Connection connection("site.db");
        host::Statement statement(connection, "SELECT details FROM AlarmLog ORDER BY row_id");
        return statement.Texts();
    }
    static size_t Waiting() {
        size_t count = 0;
        if (std::filesystem::exists("site.db-spool")) {
            for (const auto& entry : std::filesystem::directory_iterator("site.db-spool")) {
                count += entry.path().filename() != "lock" ? 1 : 0;
            }
        }
        return count;
    }
};

TEST_F(CliAlarmSpool, KeepsWhatIsNotToWaitForTheDatabase) {
    const ProgramRun run = Run({"alarm", "raise", "--spool", "a"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("", run.out);
    EXPECT_THAT(run.err, HasSubstr("it waits in site.db-spool/"));
    EXPECT_EQ(1U, Waiting());
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(CliAlarmSpool, IsTakenUpBeforeWhatTheNextCommandIsAskedFor) {
    Run({"alarm", "raise", "--spool", "--key", "k", "a"});
    Run({"alarm", "withdraw", "--spool", "--key", "k"});
    EXPECT_EQ(2U, Waiting());
    EXPECT_EQ(0, Run({"alarm", "raise", "b"}).exit_code);
    EXPECT_THAT(Texts(), ElementsAre("a", "b"));
    EXPECT_EQ(0U, Waiting());
    EXPECT_THAT(Run({"alarm", "list"}).out, HasSubstr("resolved"));
}

TEST_F(CliAlarmSpool, TellsMistakesAtOnce) {
    EXPECT_EQ(2, Run({"alarm", "raise", "--spool", " "}).exit_code);
    EXPECT_EQ(2, Run({"alarm", "raise", "--spool", "--severity", "bad", "x"}).exit_code);
    EXPECT_EQ(0U, Waiting());
}

TEST_F(CliAlarmSpool, KeepsNothingForADatabaseThatIsNone) {
    EXPECT_EQ(
        3,
        RunProgram({PAGERFWD_PROGRAM, "--database", "none.db", "alarm", "raise", "x"}).exit_code);
    EXPECT_EQ(
        3, RunProgram({PAGERFWD_PROGRAM, "--database", "none.db", "alarm", "raise", "--spool", "x"})
               .exit_code);
    EXPECT_FALSE(std::filesystem::exists("none.db-spool"));
}

TEST_F(CliAlarmSpool, IsForTheOwnerAndGroupOfTheDatabase) {
    Run({"alarm", "raise", "--spool", "a"});
    using std::filesystem::perms;
    for (const auto& entry : std::filesystem::directory_iterator("site.db-spool")) {
        EXPECT_EQ(perms::none, entry.status().permissions() & perms::others_all);
    }
    EXPECT_EQ(perms::none,
              std::filesystem::status("site.db-spool").permissions() & perms::others_all);
}

#ifndef SANITIZED  // a sanitizer needs descriptors of its own to look at an object
// The system has no descriptor left for it.
TEST_F(CliAlarmSpool, KeepsWhatTheDatabaseCannotTakeNow) {
    const ProgramRun run =
        RunProgram({"/bin/sh", "-c",
                    "ulimit -n 5; exec " PAGERFWD_PROGRAM " --database site.db alarm raise a"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("", run.out);
    EXPECT_THAT(run.err, HasSubstr("it waits in site.db-spool/"));
    EXPECT_EQ(1U, Waiting());
}
#endif

}  // namespace
