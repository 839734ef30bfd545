// The command line as a whole: the built program, with a library that only shows how it is called.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/host_test.h"
#include "tests/unit/host/table_client.h"

namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

// A site whose pagers' numbers are the results that the library in these tests gives for them.
constexpr const char* kCliSite = R"(
[[port]]
name = "COM 1"
[port.sms1]
dial = "ATDT1"

[[pager]]
description = "duty"
type = "sms1"
number = "0"
port = "COM 1"

[[route]]
pagers = ["duty"]

[[hours]]
name = "open"
all = true

[[hours]]
name = "shut"
mon = "8-9"
)";

class Cli : public ::testing::Test {
 protected:
    Cli() { unsetenv("PAGERFWD_DATABASE"); }
    ~Cli() override { host::CloseDatabases(); }

    static ProgramRun Run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(),
                         {PAGERFWD_PROGRAM, "--database", "site.db", "--library", FAKE_LIBRARY});
        return RunProgram(arguments);
    }

    static void MakeSite(const std::string& text = kCliSite) {
        WriteFile("site.toml", text);
        ASSERT_EQ(0, Run({"init"}).exit_code);
        const ProgramRun run = Run({"import", "site.toml"});
        ASSERT_EQ(0, run.exit_code) << run.err;
    }

    // A site with one pager, which the library pages with this result.
    static void MakeSiteWithResult(int result) {
        const std::string number = std::to_string(result);
        MakeSite(
            "[[port]]\nname = \"COM 1\"\n[port.sms1]\ndial = \"ATDT1\"\n"
            "[[pager]]\ndescription = \"duty\"\ntype = \"sms1\"\nnumber = \"" +
            number + "\"\n");
    }

    const test_support::TempDir folder;
};

// --- The program.

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

// --- init, check, import.

TEST_F(Cli, MakesADatabaseOnce) {
    const ProgramRun first = Run({"init"});
    EXPECT_EQ(0, first.exit_code);
    EXPECT_THAT(first.out, StartsWith("site.db: made"));
    const ProgramRun second = Run({"init"});
    EXPECT_EQ(0, second.exit_code);
    EXPECT_EQ("site.db: has its tables already; nothing changed\n", second.out);
}

TEST_F(Cli, BringsADatabaseUpToDateThatNoEngineServes) {
    {
        std::ifstream dump(DATABASES "/version_2.sql");
        const std::string old{std::istreambuf_iterator<char>(dump), {}};
        host::Connection("site.db", host::Connection::Mode::kCreate).Execute(old.c_str());
    }
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

TEST_F(Cli, SaysWhyADatabaseCanNotBeMade) {
    WriteFile("letter.txt", std::string(4096, 'x'));
    const ProgramRun run = RunProgram({PAGERFWD_PROGRAM, "--database", "letter.txt", "init"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_EQ("pagerfwd: letter.txt: file is not a database\n", run.err);
}

TEST_F(Cli, ChecksWithoutADatabase) {
    WriteFile("site.toml", kCliSite);
    const ProgramRun run = Run({"check", "site.toml"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, StartsWith("site.toml: no mistakes\nnote: an alarm whose number has gone "
                                    "dead takes up to 65 minutes of the line (pager \"duty\": 12 "
                                    "calls of up to 325 s)\n"));
    EXPECT_FALSE(std::filesystem::exists("site.db"));
}

TEST_F(Cli, ChecksAndCounts) {
    WriteFile("site.toml", "bogus = 1\n[[port]]\nname = \"COM 1\"\nbaud = 1\n");
    const ProgramRun run = Run({"check", "site.toml"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.out, AllOf(StartsWith("site.toml:1: error: unknown key \"bogus\""),
                               HasSubstr("\nsite.toml:4: error: port \"COM 1\": 1 is no speed"),
                               HasSubstr("\nsite.toml: 2 errors, 0 warnings\n")));
}

TEST_F(Cli, LooksNoFurtherThanASyntaxError) {
    WriteFile("site.toml", "[[port]\n");
    const ProgramRun run = Run({"check", "site.toml"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.out, AllOf(StartsWith("site.toml:1: error: "),
                               HasSubstr("site.toml: 1 error, 0 warnings\n")));
}

TEST_F(Cli, WarnsWithoutFailing) {
    WriteFile("site.toml", "encoding = \"latin1\"\n");
    const ProgramRun run = Run({"check", "site.toml"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("site.toml:1: warning: there is no port"));
}

TEST_F(Cli, SaysWhyAFileCanNotBeRead) {
    const ProgramRun none = Run({"check", "none.toml"});
    EXPECT_EQ(3, none.exit_code);
    EXPECT_EQ("pagerfwd: none.toml: can't be read: No such file or directory\n", none.err);
    const ProgramRun directory = Run({"check", "."});
    EXPECT_EQ(3, directory.exit_code);
    EXPECT_EQ("pagerfwd: .: can't be read: Is a directory\n", directory.err);
}

TEST_F(Cli, Imports) {
    WriteFile("site.toml", kCliSite);
    ASSERT_EQ(0, Run({"init"}).exit_code);
    const ProgramRun run = Run({"import", "site.toml"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("site.db: now has 1 port and 1 pager\n", run.out);
    EXPECT_EQ("", run.err);
}

TEST_F(Cli, ImportsNothingOfAFileWithErrors) {
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

TEST_F(Cli, ImportsInSpiteOfWarnings) {
    ASSERT_EQ(0, Run({"init"}).exit_code);
    WriteFile("site.toml", "encoding = \"latin1\"\n");
    const ProgramRun run = Run({"import", "site.toml"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("warning"));
}

TEST_F(Cli, TakesNoEmptyFileForASite) {
    MakeSite();
    WriteFile("empty.toml", "");
    EXPECT_EQ(1, Run({"check", "empty.toml"}).exit_code);
    EXPECT_EQ(1, Run({"import", "empty.toml"}).exit_code);
    EXPECT_EQ(0, Run({"test", "duty"}).exit_code);
}

TEST_F(Cli, ReadsASiteFromStandardInput) {
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

TEST_F(Cli, ImportsIntoADatabaseThatExists) {
    WriteFile("site.toml", kCliSite);
    const ProgramRun run = Run({"import", "site.toml"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("make it with: pagerfwd init"));
}

TEST_F(Cli, LeavesNoLogBehind) {
    MakeSite();
    EXPECT_FALSE(std::filesystem::exists("site.db-wal"));
}

// --- test.

TEST_F(Cli, GivesTheLibraryWhatTheTablesSay) {
    MakeSite();
    const ProgramRun run = Run({"test", "duty"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("[site.db|duty|0|COM 1|4|always|1|quiet]"));
    EXPECT_THAT(run.out, HasSubstr("[stopped]"));
    EXPECT_THAT(run.out,
                AllOf(StartsWith("test page to \"duty\", number 0 ...\n"), EndsWith("sent\n")));
    EXPECT_EQ("", run.err);
}

TEST_F(Cli, SaysWhatBecameOfATestPage) {
    const std::pair<int, const char*> results[] = {{5, "no line"},
                                                   {6, "dialling failed"},
                                                   {7, "didn't take the page"},
                                                   {8, "modem didn't answer"}};
    for (const auto& [result, words] : results) {
        MakeSiteWithResult(result);
        const ProgramRun run = Run({"test", "duty"});
        EXPECT_EQ(result, run.exit_code);
        EXPECT_THAT(run.out, HasSubstr("not sent\n"));
        EXPECT_THAT(run.err,
                    AllOf(HasSubstr(words), HasSubstr("(result " + std::to_string(result) + ")"),
                          HasSubstr("add: --trace")));
    }
}

TEST_F(Cli, SaysThatTheLibraryDoesNotKnowThePager) {
    MakeSiteWithResult(-1);
    const ProgramRun run = Run({"test", "duty"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("(result -1)"));
}

TEST_F(Cli, SaysThatAResultIsNotKnown) {
    MakeSiteWithResult(99);
    const ProgramRun run = Run({"test", "duty"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("not known: 99"));
}

TEST_F(Cli, NamesThePagersThatThereAre) {
    MakeSite();
    const ProgramRun run = Run({"test", "nobody"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_EQ("", run.out);
    EXPECT_EQ("pagerfwd: there is no pager \"nobody\"; pagers of this database: \"duty\"\n",
              run.err);
}

TEST_F(Cli, NamesNoPagerOfAnEmptyDatabase) {
    ASSERT_EQ(0, Run({"init"}).exit_code);
    EXPECT_THAT(Run({"test", "duty"}).err, HasSubstr("import a site file first"));
}

TEST_F(Cli, RefusesAPagerThatIsThereTwice) {
    MakeSite();
    OpenTable("site.db", "AlarmFwd_PagerSetting").Insert({{"description", "duty"}});
    host::CloseDatabases();
    const ProgramRun run = Run({"test", "duty"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("more than once"));
}

TEST_F(Cli, TracesOnlyWhenAsked) {
    MakeSiteWithResult(7);
    const ProgramRun run = Run({"--trace", "test", "duty"});
    EXPECT_THAT(run.out, HasSubstr("|traced]"));
    EXPECT_THAT(run.err,
                AllOf(HasSubstr("pagerfwd trace pageprot.txt"), Not(HasSubstr("add: --trace"))));
    EXPECT_TRUE(std::filesystem::exists("pageprot.txt"));
}

// The library can't be stopped once a line of its trace couldn't be written.
TEST_F(Cli, DoesNotStartWhereTheTraceCanNotBeWritten) {
    MakeSite();
    std::filesystem::create_directory("pageprot.txt");
    const ProgramRun run = Run({"--trace", "test", "duty"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("the trace can't be written in this folder"));
    EXPECT_EQ("", run.out);
}

TEST_F(Cli, FindsAPagerByItsNameInTheTerminalsEncoding) {
    MakeSite(
        "[[port]]\nname = \"COM 1\"\n[port.sms1]\ndial = \"ATDT1\"\n"
        "[[pager]]\ndescription = \"J\xC3\xBCrgen\"\ntype = \"sms1\"\nnumber = \"0\"\n");
    const ProgramRun run = Run({"test", "J\xC3\xBCrgen"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("test page to \"J\xC3\xBCrgen\""));
    EXPECT_THAT(run.out, HasSubstr("[site.db|J\xFCrgen|"));
    EXPECT_THAT(Run({"test", "\xE2\x82\xAC"}).err, HasSubstr("\"J\xC3\xBCrgen\""));
}

TEST_F(Cli, CountsTwoByteCharactersWhereTheSiteIsShiftJis) {
    MakeSite(
        "encoding = \"shift_jis\"\n[[port]]\nname = \"COM 1\"\n[port.pager]\ndial = \"ATDT1\"\n"
        "[[pager]]\ndescription = \"duty\"\ntype = \"ntt\"\nnumber = \"0\"\n");
    EXPECT_THAT(Run({"test", "duty"}).out, HasSubstr("|2|quiet]"));
}

TEST_F(Cli, ExplainsTwoByteCharactersWhereTheSiteIsShiftJis) {
    MakeSite(
        "encoding = \"shift_jis\"\n[[port]]\nname = \"COM 1\"\n[port.pager]\ndial = \"ATDT1\"\n"
        "[[pager]]\ndescription = \"duty\"\ntype = \"ntt\"\nnumber = \"0\"\n");
    // Its second byte is that of a backslash.
    EXPECT_THAT(Run({"explain", "duty", "--server", "\u8868", "--severity", "critical"}).out,
                HasSubstr("\n  = ATDT*2*2966067##;<cr>\n"));
}

TEST_F(Cli, ExplainsAPageOverAPortOfAnyName) {
    MakeSite(R"([[port]]
name = "north"
device = "/dev/ttyUSB0"
[port.pager]
dial = "ATDT0,"
[[port]]
name = "south"
device = "/dev/ttyUSB1"
[port.sms1]
dial = "ATDT1"
[[port]]
name = "west"
device = "/dev/ttyUSB2"
[port.sms1]
dial = "ATDT2"
[[pager]]
description = "duty"
type = "sms1"
number = "0"
)");
    EXPECT_THAT(Run({"explain", "duty"}).out,
                AllOf(HasSubstr("\nport   \"south\", /dev/ttyUSB1\nline   COM1:2400,E,7,1"),
                      HasSubstr("\n    ATDT1 ")));
    EXPECT_THAT(Run({"explain", "duty", "--line", "west"}).out,
                AllOf(HasSubstr("\nport   \"west\", /dev/ttyUSB2\n"), HasSubstr("\n    ATDT2 ")));
    EXPECT_THAT(Run({"explain", "duty", "--line", "west", "--json"}).out,
                AllOf(HasSubstr("\"port\": \"west\""), HasSubstr("\"device\": \"/dev/ttyUSB2\"")));
    for (const char* line : {"north", "east"}) {
        const ProgramRun run = Run({"explain", "duty", "--line", line});
        EXPECT_EQ(5, run.exit_code);
        EXPECT_THAT(run.err, HasSubstr(std::string("it isn't paged over port \"") + line + "\""));
    }
}

TEST_F(Cli, ExplainsAPageOfAnyAlarm) {
    MakeSite();
    EXPECT_THAT(Run({"explain", "duty", "--group", "PLANT/1", "--severity", "major", "--server",
                     "pumps", "--text", "2 \u2013 3"})
                    .out,
                HasSubstr("\n    PLANT/Major/pumps/2 - 3  text\n"));
    const ProgramRun run = Run({"explain", "duty", "--severity", "bad"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("there is no severity \"bad\""));
}

TEST_F(Cli, SendsNoEscapesToTheTerminal) {
    MakeSite();
    const ProgramRun run = Run({"test", "\x1b[2Jnobody"});
    EXPECT_THAT(run.err, AllOf(HasSubstr("\\x1b[2Jnobody"), Not(HasSubstr("\x1b"))));
}

TEST_F(Cli, LeavesATestPageToARunningEngine) {
    MakeSite();
    ChildProcess engine({STORE_PROCESS, "site.db", "engine"});
    ASSERT_EQ("taken", engine.ReadLine());
    ChildProcess test({PAGERFWD_PROGRAM, "--database", "site.db", "test", "duty"});
    EXPECT_EQ("test page to \"duty\", number 0, by the running engine ...", test.ReadLine());
    {
        host::Connection engine_does("site.db");
        while (!host::Statement(engine_does, "SELECT 1 FROM Host_TestPages").Step()) {
            usleep(1000);
        }
        engine_does.Execute("UPDATE Host_TestPages SET answer = 7");
    }
    EXPECT_EQ("not sent", test.ReadLine());
    EXPECT_EQ(7, test.Finish());
}

// --- run.

TEST_F(Cli, GivesEachLineItsPriorityOnlyUnderAJournal) {
    ASSERT_EQ(0, Run({"init"}).exit_code);  // without a port, and so without a device
    EXPECT_THAT(Run({"run", "--until-done"}).err, Not(HasSubstr("<6>")));
    setenv("JOURNAL_STREAM", "8:1", 1);
    const ProgramRun run = Run({"run", "--until-done"});
    unsetenv("JOURNAL_STREAM");
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr("<6>serving site.db\n"));
}

// --- in-hours.

TEST_F(Cli, SaysWhetherAPageMayLeaveNow) {
    MakeSite();
    const ProgramRun open = Run({"in-hours", "open"});
    EXPECT_EQ(0, open.exit_code);
    EXPECT_EQ("hours \"open\": a page may leave now\n", open.out);
    const ProgramRun shut = Run({"in-hours", "shut"});
    EXPECT_EQ(1, shut.exit_code);
    EXPECT_EQ("hours \"shut\": no page leaves in this hour\n", shut.out);
}

TEST_F(Cli, NamesTheHoursThatThereAre) {
    MakeSite();
    const ProgramRun run = Run({"in-hours", "night"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_EQ(
        "pagerfwd: there are no hours \"night\"; hours of this database: \"open\", "
        "\"shut\", \"always\"\n",
        run.err);
}

TEST_F(Cli, AsksForHoursInADatabaseThatExists) {
    const ProgramRun run = Run({"in-hours", "open"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("there is no such database"));
}

// --- The library.

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
    std::filesystem::copy_file(PAGERFWD_PROGRAM, program);
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
    std::filesystem::copy_file(PAGERFWD_PROGRAM, program);
    EXPECT_EQ(0, RunProgram({program, "--database", "site.db", "test", "duty"}).exit_code);
}

}  // namespace
