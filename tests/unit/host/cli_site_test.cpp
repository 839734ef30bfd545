// pagerfwd init, check, import, in-hours.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/unit/host/cli_fixture.h"
#include "tests/unit/host/files.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class CliSite : public CliFixture {};

TEST_F(CliSite, MakesADatabaseOnce) {
    const ProgramRun first = Run({"init"});
    EXPECT_EQ(0, first.exit_code);
    EXPECT_THAT(first.out, StartsWith("site.db: made"));
    const ProgramRun second = Run({"init"});
    EXPECT_EQ(0, second.exit_code);
    EXPECT_EQ("site.db: has its tables already; nothing changed\n", second.out);
}

TEST_F(CliSite, BringsADatabaseUpToDateThatNoEngineServes) {
    host::Connection("site.db", host::Connection::Mode::kCreate)
        .Execute(ReadFile(DATABASES "/version_2.sql"));
    EXPECT_THAT(Run({"status"}).err, HasSubstr("bring it up to date with: pagerfwd init"));
    ChildProcess engine({STORE_PROCESS, "site.db", "engine"});
    ASSERT_EQ("taken", engine.ReadLine());
    const ProgramRun refused = Run({"init"});
    EXPECT_EQ(3, refused.exit_code);
    EXPECT_THAT(refused.err, HasSubstr("an older pagerfwd serves it (pagerfwd a test, process "));
    engine.Finish();
    EXPECT_EQ("site.db: brought up to date\n", Run({"init"}).out);
    EXPECT_THAT(Run({"status"}).out, HasSubstr("pending: 3\n"));
}

TEST_F(CliSite, SaysWhyADatabaseCanNotBeMade) {
    WriteFile("letter.txt", std::string(4096, 'x'));
    const ProgramRun run = RunProgram({PAGERFWD_PROGRAM, "--database", "letter.txt", "init"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_EQ("pagerfwd: letter.txt: file is not a database\n", run.err);
}

TEST_F(CliSite, ChecksWithoutADatabase) {
    WriteFile("site.toml", kCliSite);
    const ProgramRun run = Run({"check", "site.toml"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, StartsWith("site.toml: no mistakes\nnote: an alarm whose number has gone "
                                    "dead takes up to 65 minutes of the line (pager \"duty\": 12 "
                                    "calls of up to 325 s)\n"));
    EXPECT_FALSE(std::filesystem::exists("site.db"));
}

TEST_F(CliSite, ChecksAndCounts) {
    WriteFile("site.toml", "bogus = 1\n[[port]]\nname = \"COM 1\"\nbaud = 1\n");
    const ProgramRun run = Run({"check", "site.toml"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.out, AllOf(StartsWith("site.toml:1: error: unknown key \"bogus\""),
                               HasSubstr("\nsite.toml:4: error: port \"COM 1\": 1 is no speed"),
                               HasSubstr("\nsite.toml: 2 errors, 0 warnings\n")));
}

TEST_F(CliSite, LooksNoFurtherThanASyntaxError) {
    WriteFile("site.toml", "[[port]\n");
    const ProgramRun run = Run({"check", "site.toml"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.out, AllOf(StartsWith("site.toml:1: error: "),
                               HasSubstr("site.toml: 1 error, 0 warnings\n")));
}

TEST_F(CliSite, WarnsWithoutFailing) {
    WriteFile("site.toml", "encoding = \"latin1\"\n");
    const ProgramRun run = Run({"check", "site.toml"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("site.toml:1: warning: there is no port"));
}

TEST_F(CliSite, SaysWhyAFileCanNotBeRead) {
    const ProgramRun none = Run({"check", "none.toml"});
    EXPECT_EQ(3, none.exit_code);
    EXPECT_EQ("pagerfwd: none.toml: can't be read: No such file or directory\n", none.err);
    const ProgramRun directory = Run({"check", "."});
    EXPECT_EQ(3, directory.exit_code);
    EXPECT_EQ("pagerfwd: .: can't be read: Is a directory\n", directory.err);
}

TEST_F(CliSite, Imports) {
    WriteFile("site.toml", kCliSite);
    ASSERT_EQ(0, Run({"init"}).exit_code);
    const ProgramRun run = Run({"import", "site.toml"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("site.db: now has 1 port and 1 pager\n", run.out);
    EXPECT_EQ("", run.err);
}

TEST_F(CliSite, ImportsNothingOfAFileWithErrors) {
    MakeSite();
    WriteFile("bad.toml",
              "[[pager]]\ndescription = \"J\xE2\x82\xAC\"\ntype = \"sms1\"\n"
              "number = \"1\"\n");
    const ProgramRun run = Run({"import", "bad.toml"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_EQ("", run.out);
    EXPECT_THAT(run.err, AllOf(HasSubstr("bad.toml:2: error: "), HasSubstr("(U+20AC)"),
                               HasSubstr("nothing is imported\n")));
    EXPECT_EQ(0, Run({"test", "duty"}).exit_code);
}

TEST_F(CliSite, ImportsInSpiteOfWarnings) {
    ASSERT_EQ(0, Run({"init"}).exit_code);
    WriteFile("site.toml", "encoding = \"latin1\"\n");
    const ProgramRun run = Run({"import", "site.toml"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("warning"));
}

TEST_F(CliSite, TakesNoEmptyFileForASite) {
    MakeSite();
    WriteFile("empty.toml", "");
    EXPECT_EQ(1, Run({"check", "empty.toml"}).exit_code);
    EXPECT_EQ(1, Run({"import", "empty.toml"}).exit_code);
    EXPECT_EQ(0, Run({"test", "duty"}).exit_code);
}

TEST_F(CliSite, ReadsASiteFromStandardInput) {
    WriteFile("site.toml", kCliSite);
    WriteFile("bad.toml", "[[port]]\nname = \"COM 0\"\n");
    const auto with_input = [](const std::string& command, const char* file) {
        return RunProgram({"/bin/sh", "-c",
                           std::string("exec ") + PAGERFWD_PROGRAM + " --database site.db " +
                               command + " - <" + file});
    };
    ProgramRun run = with_input("check", "site.toml");
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, StartsWith("standard input: no mistakes\n"));
    run = with_input("check", "bad.toml");
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.out, StartsWith("standard input:2: error: port \"COM 0\" has no device"));
    ASSERT_EQ(0, Run({"init"}).exit_code);
    EXPECT_EQ(0, with_input("import", "site.toml").exit_code);
    EXPECT_EQ(0, Run({"test", "duty"}).exit_code);
}

TEST_F(CliSite, ImportsIntoADatabaseThatExists) {
    WriteFile("site.toml", kCliSite);
    const ProgramRun run = Run({"import", "site.toml"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("make it with: pagerfwd init"));
}

TEST_F(CliSite, LeavesNoLogBehind) {
    MakeSite();
    EXPECT_FALSE(std::filesystem::exists("site.db-wal"));
}

TEST_F(CliSite, SaysWhetherAPageMayLeaveNow) {
    MakeSite(std::string(kCliSite) + "[[hours]]\nname = \"never\"\n");
    const ProgramRun open = Run({"in-hours", "open"});
    EXPECT_EQ(0, open.exit_code);
    EXPECT_EQ("hours \"open\": a page may leave now\n", open.out);
    const ProgramRun closed = Run({"in-hours", "never"});
    EXPECT_EQ(1, closed.exit_code);
    EXPECT_EQ("hours \"never\": no page leaves in this hour\n", closed.out);
}

TEST_F(CliSite, NamesTheHoursThatThereAre) {
    MakeSite();
    const ProgramRun run = Run({"in-hours", "night"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_EQ(
        "pagerfwd: there are no hours \"night\"; hours of this database: \"open\", "
        "\"shut\", \"always\"\n",
        run.err);
}

TEST_F(CliSite, AsksForHoursInADatabaseThatExists) {
    const ProgramRun run = Run({"in-hours", "open"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("there is no such database"));
}

}  // namespace
