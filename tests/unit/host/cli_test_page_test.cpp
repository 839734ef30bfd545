// pagerfwd test, with a library that only shows how it is called.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "host/devices/device_lock.h"
#include "tests/unit/host/cli_fixture.h"
#include "tests/unit/host/table_client.h"

namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class CliTestPage : public CliFixture {
 protected:
    // A site with one pager, which the library pages with this result.
    static void MakeSiteWithResult(int result) {
        MakeSite(
            "[[port]]\nname = \"COM 1\"\n[port.sms1]\ndial = \"ATDT1\"\n"
            "[[pager]]\ndescription = \"duty\"\ntype = \"sms1\"\nnumber = \"" +
            std::to_string(result) + "\"\n");
    }
};

TEST_F(CliTestPage, GivesTheLibraryWhatTheTablesSay) {
    MakeSite();
    const ProgramRun run = Run({"test", "duty"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("[site.db|duty|0|COM 1|4|always|1|quiet]"));
    EXPECT_THAT(run.out, HasSubstr("[stopped]"));
    EXPECT_THAT(run.out,
                AllOf(StartsWith("test page to \"duty\", number 0 ...\n"), EndsWith("sent\n")));
    EXPECT_EQ("", run.err);
}

TEST_F(CliTestPage, SaysWhatBecameOfATestPage) {
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

TEST_F(CliTestPage, LocksItsDeviceInTheFolderThatIsNamed) {
    MakeSite();
    EXPECT_THAT(Run({"--locks", "none-such", "test", "duty"}).err,
                HasSubstr("none-such: no locks can be made there"));
}

TEST_F(CliTestPage, GoesByTheLineThatIsNamed) {
    MakeSite(R"(
[[port]]
name = "north"
device = "/dev/ttyNone0"
[port.sms1]
dial = "ATDT1"
[[port]]
name = "south"
device = "/dev/ttyNone1"
[port.sms1]
dial = "ATDT1"
[[pager]]
description = "duty"
type = "sms1"
number = "0"
)");
    host::LockFile taken = host::LockOfDevice({"site.db", folder.Path().string()}, "/dev/ttyNone0");
    ASSERT_TRUE(taken.TryTake("another"));
    EXPECT_NE(0, Run({"test", "duty", "--line", "north"}).exit_code);
    EXPECT_EQ(0, Run({"test", "duty", "--line", "south"}).exit_code);
    EXPECT_THAT(Run({"test", "duty", "--line", "west"}).err, HasSubstr("\"west\""));
}

TEST_F(CliTestPage, SaysThatTheLibraryDoesNotKnowThePager) {
    MakeSiteWithResult(-1);
    const ProgramRun run = Run({"test", "duty"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("(result -1)"));
}

TEST_F(CliTestPage, SaysThatAResultIsNotKnown) {
    MakeSiteWithResult(99);
    const ProgramRun run = Run({"test", "duty"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("not known: 99"));
}

TEST_F(CliTestPage, NamesThePagersThatThereAre) {
    MakeSite();
    const ProgramRun run = Run({"test", "nobody"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_EQ("", run.out);
    EXPECT_EQ("pagerfwd: there is no pager \"nobody\"; pagers of this database: \"duty\"\n",
              run.err);
}

TEST_F(CliTestPage, NamesNoPagerOfAnEmptyDatabase) {
    ASSERT_EQ(0, Run({"init"}).exit_code);
    EXPECT_THAT(Run({"test", "duty"}).err, HasSubstr("import a site file first"));
}

TEST_F(CliTestPage, RefusesAPagerThatIsThereTwice) {
    MakeSite();
    OpenTable("site.db", "AlarmFwd_PagerSetting").Insert({{"description", "duty"}});
    host::CloseDatabases();
    const ProgramRun run = Run({"test", "duty"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("more than once"));
}

TEST_F(CliTestPage, TracesOnlyWhenAsked) {
    MakeSiteWithResult(7);
    const ProgramRun run = Run({"--trace", "test", "duty"});
    EXPECT_THAT(run.out, HasSubstr("|traced]"));
    EXPECT_THAT(run.err,
                AllOf(HasSubstr("pagerfwd trace pageprot.txt"), Not(HasSubstr("add: --trace"))));
    EXPECT_TRUE(std::filesystem::exists("pageprot.txt"));
}

// The library can't be stopped once a line of its trace couldn't be written.
TEST_F(CliTestPage, DoesNotStartWhereTheTraceCanNotBeWritten) {
    MakeSite();
    std::filesystem::create_directory("pageprot.txt");
    const ProgramRun run = Run({"--trace", "test", "duty"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("the trace can't be written in this folder"));
    EXPECT_EQ("", run.out);
}

TEST_F(CliTestPage, FindsAPagerByItsNameInTheTerminalsEncoding) {
    MakeSite(
        "[[port]]\nname = \"COM 1\"\n[port.sms1]\ndial = \"ATDT1\"\n"
        "[[pager]]\ndescription = \"J\xC3\xBCrgen\"\ntype = \"sms1\"\nnumber = \"0\"\n");
    const ProgramRun run = Run({"test", "J\xC3\xBCrgen"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("test page to \"J\xC3\xBCrgen\""));
    EXPECT_THAT(run.out, HasSubstr("[site.db|J\xFCrgen|"));
    EXPECT_THAT(Run({"test", "\xE2\x82\xAC"}).err, HasSubstr("\"J\xC3\xBCrgen\""));
}

TEST_F(CliTestPage, CountsTwoByteCharactersWhereTheSiteIsShiftJis) {
    MakeSite(
        "encoding = \"shift_jis\"\n[[port]]\nname = \"COM 1\"\n[port.pager]\ndial = \"ATDT1\"\n"
        "[[pager]]\ndescription = \"duty\"\ntype = \"ntt\"\nnumber = \"0\"\n");
    EXPECT_THAT(Run({"test", "duty"}).out, HasSubstr("|2|quiet]"));
}

TEST_F(CliTestPage, SendsNoEscapesToTheTerminal) {
    MakeSite();
    const ProgramRun run = Run({"test", "\x1b[2Jnobody"});
    EXPECT_THAT(run.err, AllOf(HasSubstr("\\x1b[2Jnobody"), Not(HasSubstr("\x1b"))));
}

TEST_F(CliTestPage, LeavesATestPageToARunningEngine) {
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

}  // namespace
