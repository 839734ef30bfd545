// The commands that look at things, as the built program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "host/store/connection.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/recorded_trace.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

std::string ReadWhole(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

constexpr const char* kSite =
    "encoding = \"latin1\"\n\n[[port]]\nname = \"COM 1\"\nbaud = 9600\nflow = \"none\"\n"
    "modem = true\ninit = \"AT&F\"\nreset = \"ATZ\"\n\n[port.pager]\ndial = \"ATDT0,\"\n"
    "prompt = \">\"\ndata = 8\nparity = \"none\"\nstop = 1\n\n[port.sms1]\nprotocol = \"TAP\"\n"
    "dial = \"ATDT1\"\ndata = 7\nparity = \"even\"\nstop = 1\n\n[port.sms2]\nprotocol = \"UCP\"\n"
    "dial = \"ATDT2\"\ndata = 8\nparity = \"none\"\nstop = 1\n\n[[hours]]\nname = \"office\"\n"
    "mon-fri = \"8-18\"\n\n[[hours]]\nname = \"always\"\nall = true\n\n[[pager]]\n"
    "description = \"duty \\\"A\\\"\"\nowner = \"J\xC3\xBCrgen\"\nport = \"COM 1\"\ntype = "
    "\"sms1\"\n"
    "number = \"5550111\"\nretries = 5\ndelay = 45\nhours = \"always\"\n";

class SiteCommands : public ::testing::Test {
 protected:
    SiteCommands() {
        unsetenv("PAGERFWD_DATABASE");
        EXPECT_EQ(0, Run({"init"}).exit_code);
        WriteFile("site.toml", kSite);
        EXPECT_EQ(0, Run({"import", "site.toml"}).exit_code);
    }

    static ProgramRun Run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), PAGERFWD_PROGRAM);
        return RunProgram(arguments);
    }

    static void Execute(const char* sql) {
        host::Connection connection("pagerfwd.db");
        connection.Execute(sql);
    }

    const test_support::TempDir folder;
};

// --- export.

TEST_F(SiteCommands, ExportWhatWasImported) {
    const ProgramRun run = Run({"export"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(kSite, run.out);
}

TEST_F(SiteCommands, ExportToAFileThatIsNotThereYet) {
    const ProgramRun run = Run({"export", "copy.toml"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("copy.toml: written\n", run.out);
    EXPECT_EQ(kSite, ReadWhole("copy.toml"));
    WriteFile("copy.toml", "mine");
    const ProgramRun refused = Run({"export", "copy.toml"});
    EXPECT_EQ(2, refused.exit_code);
    EXPECT_THAT(refused.err, HasSubstr("copy.toml: is there already"));
    EXPECT_EQ("mine", ReadWhole("copy.toml"));
    EXPECT_EQ(0, Run({"export", "--force", "copy.toml"}).exit_code);
    EXPECT_EQ(kSite, ReadWhole("copy.toml"));
    EXPECT_EQ(3, Run({"export", "none/copy.toml"}).exit_code);
}

TEST_F(SiteCommands, ExportWhatImportWouldRefuseAndSaySo) {
    Execute("UPDATE AlarmFwd_COMProperties SET PagerParity = 'Mark'");
    const ProgramRun run = Run({"export"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("parity = \"Mark\""));
    EXPECT_THAT(run.err,
                AllOf(HasSubstr("row 1 of AlarmFwd_COMProperties: error: port \"COM 1\", pager: "
                                "parity \"Mark\" is refused"),
                      HasSubstr("can't be imported before")));
}

// --- trace.

class TraceCommand : public ::testing::Test {
 protected:
    TraceCommand() {
        TraceWriter trace;
        trace.Say("CPagerHdl::CPagerHdl: site.db\n").Begin("duty").Say("Pager NOT found!").End();
        trace.Say("Check4Dial\n").Say("what\x1b[2J");
        trace.Begin("J\xFCrgen", "01/09/01").Message().Say("Before Dial").Say("After Dial").End();
        WriteFile("pageprot.txt", trace.Text());
    }

    static ProgramRun Run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {PAGERFWD_PROGRAM, "trace"});
        return RunProgram(arguments);
    }

    const test_support::TempDir folder;
};

TEST_F(TraceCommand, ShowsTheTraceOfThisFolder) {
    const ProgramRun run = Run({});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, AllOf(StartsWith("10:00:00  an engine begins"),
                               HasSubstr("\npage 1  2001-01-08 10:00:00  \"duty\""),
                               HasSubstr("\n10:00:00  ? what\\x1b[2J\n"),
                               HasSubstr("\npage 2  2001-01-09 10:00:00  \"J\xC3\xBCrgen\"")));
    EXPECT_THAT(run.out, AllOf(Not(HasSubstr("Check4Dial")), Not(HasSubstr("\x1b"))));
    EXPECT_THAT(Run({"--all"}).out, HasSubstr("10:00:00  Check4Dial\n"));
}

TEST_F(TraceCommand, ShowsThePagesThatAreAskedFor) {
    const auto pages = [](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = options;
        arguments.emplace_back("--brief");
        const std::string out = Run(arguments).out;
        return (out.find("page 1 ") != std::string::npos ? 1 : 0) +
               (out.find("page 2 ") != std::string::npos ? 2 : 0);
    };
    EXPECT_EQ(3, pages({}));
    EXPECT_EQ(1, pages({"--failed"}));
    EXPECT_EQ(2, pages({"--pager", "J\xC3\xBCrgen"}));
    EXPECT_EQ(0, pages({"--pager", "J"}));
    EXPECT_EQ(2, pages({"--page", "2"}));
    EXPECT_EQ(2, pages({"--since", "2001-01-09"}));
    EXPECT_EQ(1, pages({"--until", "2001-01-08 10:00"}));
    EXPECT_EQ(0, pages({"--failed", "--page", "2"}));
}

TEST_F(TraceCommand, SaysThatNoPageIsAskedFor) {
    const ProgramRun run = Run({"--pager", "nobody"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("", run.out);
    EXPECT_THAT(run.err, HasSubstr("none of its 2 page(s)"));
}

TEST_F(TraceCommand, WritesJson) {
    const auto json = nlohmann::json::parse(Run({"--json"}).out);
    ASSERT_EQ(2U, json.size());
    EXPECT_EQ("duty", json[0]["pager"]);
    EXPECT_EQ("sent", json[1]["outcome"]);
    EXPECT_EQ("[]\n", Run({"--json", "--pager", "nobody"}).out);
}

TEST_F(TraceCommand, DrawsAPage) {
    const ProgramRun run = Run({"--page", "2", "--svg", "page.svg"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("page.svg: page 2\n", run.out);
    EXPECT_TRUE(std::filesystem::exists("page.svg"));
}

TEST_F(TraceCommand, SaysWhyItCanNotDraw) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--svg", "page.svg"}, "--page N"},
        {{"--svg", "page.svg", "--page", "3"}, "has 2 page(s), and no page 3"},
        {{"--svg", "page.svg", "--page", "2", "--failed"}, "none of those"},
        {{"--svg", "page.svg", "--page", "2", "--json"}, "--json"},
        {{"--page", "0"}, "--page"},
    };
    for (const auto& [arguments, words] : cases) {
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(2, run.exit_code) << words;
        EXPECT_THAT(run.err, HasSubstr(words));
        EXPECT_FALSE(std::filesystem::exists("page.svg"));
    }
    const ProgramRun run = Run({"--page", "2", "--svg", "none/page.svg"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("none/page.svg: can't be written: No such file"));
}

TEST_F(TraceCommand, SaysWhyItCanNotRead) {
    EXPECT_THAT(Run({"none.txt"}).err,
                HasSubstr("none.txt: can't be read: No such file or directory; a trace is"));
    EXPECT_EQ(3, Run({"none.txt"}).exit_code);
    EXPECT_EQ(3, Run({"."}).exit_code);
    EXPECT_EQ(2, Run({"--since", "noon"}).exit_code);
    EXPECT_THAT(Run({"--since", "noon"}).err, HasSubstr("write it as 2001-01-08"));
    EXPECT_EQ(2, Run({"--encoding", "utf8"}).exit_code);
    EXPECT_THAT(Run({"--encoding", "shift_jis", "--pager", "\xC3\xBC"}).err, HasSubstr("U+00FC"));
}

TEST_F(TraceCommand, ReadsStandardInput) {
    const ProgramRun run =
        RunProgram({"/bin/sh", "-c", std::string(PAGERFWD_PROGRAM " trace - <pageprot.txt")});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("page 2 "));
}

TEST_F(TraceCommand, OfAnEmptyFileIsEmpty) {
    WriteFile("pageprot.txt", "");
    const ProgramRun run = Run({});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, IsEmpty());
}

}  // namespace
