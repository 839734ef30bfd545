// The program as a whole: its words, its options, the library that it loads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/planted.h"
#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class Cli : public CliFixture {};

TEST_F(Cli, TeachesWithExamplesAndExitCodes) {
    const ProgramRun run = Run({"--help"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("pagerfwd import site.toml"));
    EXPECT_THAT(run.out, HasSubstr("  8  test: the modem didn't answer\n"));
    for (const char* command : {"init", "check", "import", "test", "in-hours"}) {
        EXPECT_THAT(run.out, HasSubstr(std::string("\n  ") + command + " "));
        const ProgramRun more = Run({command, "--help"});
        EXPECT_EQ(0, more.exit_code);
        EXPECT_THAT(more.out, HasSubstr("Example"));
    }
}

TEST_F(Cli, SaysItsVersion) {
    const ProgramRun run = Run({"--version"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, StartsWith("pagerfwd "));
    EXPECT_THAT(run.out, HasSubstr(host::HasPostgres() ? "(SQLite, PostgreSQL)" : "(SQLite)"));
}

TEST_F(Cli, RefusesAPasswordThatEverybodyMaySee) {
    const ProgramRun run =
        RunProgram({PAGERFWD_PROGRAM, "--database", "postgresql://anna:secret@/site", "status"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("everybody may see"));
    EXPECT_THAT(run.err, Not(HasSubstr("secret")));
}

TEST_F(Cli, TellsNoPasswordOfAServerThatCantBeReached) {
    setenv("PAGERFWD_DATABASE", "postgresql://anna:secret@/site?host=/nowhere", 1);
    const ProgramRun run = RunProgram({PAGERFWD_PROGRAM, "check"});
    unsetenv("PAGERFWD_DATABASE");
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("postgresql://anna@/site"));
    EXPECT_THAT(run.err, Not(HasSubstr("secret")));
}

TEST_F(Cli, RefusesACommandLineThatItDoesNotUnderstand) {
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {}, {"frobnicate"}, {"test"}, {"import"}, {"init", "too much"}, {"--bogus", "init"}}) {
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(2, run.exit_code);
        EXPECT_THAT(run.out, IsEmpty());
        EXPECT_THAT(run.err, Not(IsEmpty()));
    }
}

TEST_F(Cli, TakesTheDatabaseFromTheEnvironmentUnlessItIsSaid) {
    setenv("PAGERFWD_DATABASE", "env.db", 1);
    EXPECT_EQ(0, RunProgram({PAGERFWD_PROGRAM, "init"}).exit_code);
    EXPECT_TRUE(std::filesystem::exists("env.db"));
    EXPECT_EQ(0, RunProgram({PAGERFWD_PROGRAM, "init", "--database", "said.db"}).exit_code);
    EXPECT_TRUE(std::filesystem::exists("said.db"));
    unsetenv("PAGERFWD_DATABASE");
    EXPECT_EQ(0, RunProgram({PAGERFWD_PROGRAM, "init"}).exit_code);
    EXPECT_TRUE(std::filesystem::exists("pagerfwd.db"));
}

TEST_F(Cli, FailsWhenItsOutputIsLost) {
    WriteFile("site.toml", kCliSite);
    const ProgramRun run = RunProgram(
        {"/bin/sh", "-c", std::string("exec ") + PAGERFWD_PROGRAM + " check site.toml >/dev/full"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("standard output can't be written"));
}

TEST_F(Cli, GivesEachLineItsPriorityOnlyUnderAJournal) {
    ASSERT_EQ(0, Run({"init"}).exit_code);  // without a port, and so without a device
    EXPECT_THAT(Run({"run", "--until-done"}).err, Not(HasSubstr("<6>")));
    setenv("JOURNAL_STREAM", "8:1", 1);
    const ProgramRun run = Run({"run", "--until-done"});
    unsetenv("JOURNAL_STREAM");
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr("<6>serving site.db\n"));
}

TEST_F(Cli, SaysWhyTheLibraryIsNotLoaded) {
    MakeSite();
    const auto test = [](const std::string& library) {
        return RunProgram(
            {PAGERFWD_PROGRAM, "--database", "site.db", "--library", library, "test", "duty"});
    };
    WriteFile("letter.so", "Dear library");
    for (const std::string& library :
         {std::string("./none.so"), std::string("./letter.so"), std::string(NEEDY_LIBRARY)}) {
        const ProgramRun run = test(library);
        EXPECT_EQ(3, run.exit_code);
        EXPECT_EQ("", run.out);
        EXPECT_THAT(run.err, AllOf(HasSubstr("the library can't be loaded: "), HasSubstr(library)));
    }
    EXPECT_THAT(test(NEEDY_LIBRARY).err, HasSubstr("NobodyHasThis"));
    EXPECT_THAT(test(POOR_LIBRARY).err, AllOf(HasSubstr("the library lacks a function: "),
                                              HasSubstr("StartAlarmFwdPager")));
}

TEST_F(Cli, RunsNothingWithoutALibrary) {
    MakeSite();
    for (const char* library : {"./none.so", "planted.so"}) {
        const ProgramRun run = RunProgram({PAGERFWD_PROGRAM, "--database", "site.db", "--library",
                                           library, "run", "--until-done"});
        EXPECT_EQ(3, run.exit_code) << library;
        EXPECT_THAT(run.err, HasSubstr(library));
    }
}

// It would be looked for in folders that whoever started the program has named.
TEST_F(Cli, TakesNoLibraryWithoutASlash) {
    MakeSite();
    std::filesystem::copy_file(FAKE_LIBRARY, "planted.so");
    setenv("LD_LIBRARY_PATH", folder.Path().c_str(), 1);
    const ProgramRun run = RunProgram(
        {PAGERFWD_PROGRAM, "--database", "site.db", "--library", "planted.so", "test", "duty"});
    unsetenv("LD_LIBRARY_PATH");
    EXPECT_EQ(3, run.exit_code);
    EXPECT_EQ("", run.out);
    EXPECT_THAT(run.err, HasSubstr("a file is named by its path, such as ./planted.so"));
}

// Neither the folder at hand nor the linker's are searched: anyone may write to the one.
TEST_F(Cli, RunsNoLibraryThatWasPlanted) {
    MakeSite();
    std::filesystem::copy_file(FAKE_LIBRARY, "libPagerFwd.so");
    std::filesystem::create_directories("elsewhere/bin");
    const std::string program = folder.Path() / "elsewhere/bin/pagerfwd";
    std::filesystem::copy_file(test_support::WithPlanted(PAGERFWD_PROGRAM), program);
    setenv("LD_LIBRARY_PATH", folder.Path().c_str(), 1);
    const ProgramRun run = RunProgram({program, "--database", "site.db", "test", "duty"});
    unsetenv("LD_LIBRARY_PATH");
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err,
                AllOf(HasSubstr("the library can't be loaded: "), HasSubstr("elsewhere/bin/")));
}

TEST_F(Cli, FindsTheLibraryThatIsInstalledWithIt) {
    MakeSite();
    std::filesystem::create_directories("elsewhere/bin");
    std::filesystem::create_directories("elsewhere/lib");
    std::filesystem::copy_file(FAKE_LIBRARY, "elsewhere/lib/libPagerFwd.so");
    const std::string program = folder.Path() / "elsewhere/bin/pagerfwd";
    std::filesystem::copy_file(test_support::WithPlanted(PAGERFWD_PROGRAM), program);
    EXPECT_EQ(0, RunProgram({program, "--database", "site.db", "test", "duty"}).exit_code);
}

}  // namespace
