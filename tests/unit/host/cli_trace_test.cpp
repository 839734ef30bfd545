// pagerfwd trace, of this folder and of all lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/lines/line_folder.h"
#include "host/store/connection.h"
#include "host/store/pool.h"
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
    EXPECT_EQ("dialled", json[1]["outcome"]);
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
    EXPECT_THAT(Run({"--encoding", "shift_jis", "--pager", "\xC3\xBC"}).err,
                HasSubstr("no pager of a site in this encoding has a name with '\u00FC' (U+00FC)"));
}

TEST_F(TraceCommand, ReadsStandardInput) {
    const ProgramRun run =
        RunProgram({"/bin/sh", "-c", std::string(PAGERFWD_PROGRAM " trace - <pageprot.txt")});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, HasSubstr("page 2 "));
}

// All lines at once.
class TraceOfLines : public TraceCommand {
 protected:
    TraceOfLines() {
        EXPECT_EQ(0, RunProgram({PAGERFWD_PROGRAM, "init"}).exit_code);
        host::Connection("pagerfwd.db")
            .Execute(
                "INSERT INTO AlarmFwd_COMProperties (Description, device) VALUES"
                " ('north', '/dev/ttyUSB0'), ('S\xFC"
                "d', '/dev/ttyUSB1'), ('idle', '/dev/ttyUSB2')");
        Write(
            "S\xFC"
            "d",
            TraceWriter(36001).Begin("second").Message().Say("After Dial").End());
        Write("north", TraceWriter(36000)
                           .Say("CPagerHdl::CPagerHdl: site.db\n")
                           .Begin("first")
                           .Say("Pager NOT found!")
                           .End()
                           .Pass(2)
                           .Begin("third")
                           .Message()
                           .Say("After Dial")
                           .End());
    }
    ~TraceOfLines() override { host::CloseDatabases(); }

    static void Write(const std::string& line, const TraceWriter& trace) {
        WriteFile(host::MakeLineFolder("pagerfwd.db", line) + "/" + host::kTraceFile, trace.Text());
    }
};

TEST_F(TraceOfLines, AreJoinedEachPageWithItsLine) {
    const ProgramRun run = Run({"--brief"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out,
                AllOf(HasSubstr("page 1  2001-01-08 10:00:00  \"first\"  sms1  5550111  north"),
                      HasSubstr("page 2  2001-01-08 10:00:01  \"second\"  sms1  5550111  "
                                "S\xC3\xBC"
                                "d"),
                      HasSubstr("page 3  2001-01-08 10:00:02  \"third\"")));
    EXPECT_THAT(Run({}).out, StartsWith("10:00:00  north: an engine begins"));
}

TEST_F(TraceOfLines, AreFilteredAndDrawnLikeOne) {
    EXPECT_THAT(Run({"--failed", "--brief"}).out,
                AllOf(HasSubstr("\"first\""), Not(HasSubstr("\"second\""))));
    const auto json = nlohmann::json::parse(Run({"--json"}).out);
    ASSERT_EQ(3U, json.size());
    EXPECT_EQ(
        "S\xC3\xBC"
        "d",
        json[1]["port"]);
    EXPECT_EQ("page.svg: page 3\n", Run({"--page", "3", "--svg", "page.svg"}).out);
    EXPECT_THAT(Run({"--page", "4", "--svg", "page.svg"}).err,
                HasSubstr("the trace of all lines has 3 page(s), and no page 4"));
}

TEST_F(TraceOfLines, AreReadOneByOneByTheirNames) {
    const ProgramRun run = Run({"--line",
                                "S\xC3\xBC"
                                "d",
                                "--brief"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, StartsWith("page 1  2001-01-08 10:00:01  \"second\""));
    EXPECT_THAT(run.out, Not(HasSubstr("page 2")));
}

TEST_F(TraceOfLines, AreLeftAloneWhereAFileIsNamed) {
    const ProgramRun run = Run({"pageprot.txt", "--brief"});
    EXPECT_THAT(run.out, HasSubstr("page 1  2001-01-08 10:00:00  \"duty\"  sms1  5550111  COM 1"));
    EXPECT_EQ(2, Run({"pageprot.txt", "--line", "north"}).exit_code);
}

TEST_F(TraceOfLines, AreMissedByTheirNames) {
    const ProgramRun unknown = Run({"--line", "west"});
    EXPECT_EQ(2, unknown.exit_code);
    EXPECT_THAT(unknown.err, HasSubstr("the site has no port \"west\""));
    const ProgramRun none = Run({"--line", "idle"});
    EXPECT_EQ(3, none.exit_code);
    EXPECT_THAT(none.err, HasSubstr("pagerfwd.db-lines/idle/pageprot.txt: can't be read: No such"));
}

TEST_F(TraceOfLines, GiveWayToThatOfThisFolderWhereThereAreNone) {
    std::filesystem::remove_all("pagerfwd.db-lines");
    EXPECT_THAT(Run({"--brief"}).out, HasSubstr("\"duty\""));
}

TEST_F(TraceCommand, OfAnEmptyFileIsEmpty) {
    WriteFile("pageprot.txt", "");
    const ProgramRun run = Run({});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, IsEmpty());
}

}  // namespace
