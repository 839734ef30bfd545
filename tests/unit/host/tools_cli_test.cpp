// The commands that look at things, as the built program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
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

std::string ReadWhole(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

constexpr const char* kToolsSite =
    "encoding = \"latin1\"\n\n[[port]]\nname = \"COM 1\"\nbaud = 9600\nflow = \"none\"\n"
    "modem = true\ninit = \"AT&F\"\nreset = \"ATZ\"\n\n[port.pager]\ndial = \"ATDT0,\"\n"
    "prompt = \">\"\ndata = 8\nparity = \"none\"\nstop = 1\n\n[port.sms1]\nprotocol = \"TAP\"\n"
    "dial = \"ATDT1\"\ndata = 7\nparity = \"even\"\nstop = 1\n\n[port.sms2]\nprotocol = \"UCP\"\n"
    "dial = \"ATDT2\"\ndata = 8\nparity = \"none\"\nstop = 1\n\n[[hours]]\nname = \"office\"\n"
    "mon-fri = \"8-18\"\n\n[[hours]]\nname = \"always\"\nall = true\n\n[[pager]]\n"
    "description = \"duty \\\"A\\\"\"\nowner = \"J\xC3\xBCrgen\"\nport = \"COM 1\"\ntype = "
    "\"sms1\"\n"
    "number = \"5550111\"\nretries = 5\ndelay = 45\nhours = \"always\"\n\n[[route]]\n"
    "groups = \"*\"\npagers = [\"duty \\\"A\\\"\"]\n";

class SiteCommands : public ::testing::Test {
 protected:
    SiteCommands() {
        unsetenv("PAGERFWD_DATABASE");
        EXPECT_EQ(0, Run({"init"}).exit_code);
        WriteFile("site.toml", kToolsSite);
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
    EXPECT_EQ(kToolsSite, run.out);
}

TEST_F(SiteCommands, ExportToAFileThatIsNotThereYet) {
    const ProgramRun run = Run({"export", "copy.toml"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("copy.toml: written\n", run.out);
    EXPECT_EQ(kToolsSite, ReadWhole("copy.toml"));
    WriteFile("copy.toml", "mine");
    const ProgramRun refused = Run({"export", "copy.toml"});
    EXPECT_EQ(2, refused.exit_code);
    EXPECT_THAT(refused.err, HasSubstr("copy.toml: is there already"));
    EXPECT_EQ("mine", ReadWhole("copy.toml"));
    EXPECT_EQ(0, Run({"export", "--force", "copy.toml"}).exit_code);
    EXPECT_EQ(kToolsSite, ReadWhole("copy.toml"));
    EXPECT_EQ(3, Run({"export", "none/copy.toml"}).exit_code);
}

TEST_F(SiteCommands, ExportTheWholeFileOrNone) {
    WriteFile("copy.toml", "mine");
    // A disk that is full behind the first block.
    const ProgramRun run = RunProgram({"/bin/sh", "-c",
                                       std::string("ulimit -f 1; trap '' XFSZ; exec ") +
                                           PAGERFWD_PROGRAM + " export --force copy.toml"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("copy.toml"));
    EXPECT_EQ("mine", ReadWhole("copy.toml"));
    for (const auto& file : std::filesystem::directory_iterator(".")) {
        EXPECT_THAT(file.path().filename().string(), Not(HasSubstr("copy.toml."))) << "left behind";
    }
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

// --- check.

TEST_F(SiteCommands, CheckTheDatabaseWithoutAFile) {
    const ProgramRun sound = Run({"check"});
    EXPECT_EQ(0, sound.exit_code) << sound.out;
    Execute("UPDATE AlarmFwd_COMProperties SET Baud = '1'");
    const ProgramRun run = Run({"check"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(
        run.out,
        AllOf(HasSubstr("pagerfwd.db: row 1 of AlarmFwd_COMProperties: error: port "
                        "\"COM 1\": 1 is no speed of the serial line driver\n    Every page"),
              HasSubstr("\nTo mend them: pagerfwd export site.toml")));
    EXPECT_EQ(3, Run({"--database", "none.db", "check"}).exit_code);
}

TEST_F(SiteCommands, CheckWhosePagesNoOtherLineTakesOver) {
    const ProgramRun run = Run({"check"});
    EXPECT_THAT(run.out, HasSubstr("note: over port \"COM 1\" only, so that nothing reaches them "
                                   "while its line is out: \"duty \"A\"\"\n"));
    const auto only = nlohmann::json::parse(Run({"check", "--json"}).out)["one_port_only"];
    ASSERT_EQ(1U, only.size());
    EXPECT_EQ("duty \"A\"", only[0]["pager"]);
    EXPECT_EQ("COM 1", only[0]["port"]);
    Execute("UPDATE AlarmFwd_COMProperties SET Baud = '1'");
    EXPECT_THAT(Run({"check"}).out, Not(HasSubstr("note:"))) << "first things first";
}

TEST_F(SiteCommands, CheckInJson) {
    WriteFile("bad.toml", "\n[[port]]\nname = \"COM 1\"\nbaud = 1\n");
    const ProgramRun run = Run({"check", "bad.toml", "--json"});
    EXPECT_EQ(1, run.exit_code);
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ("bad.toml", json["file"]);
    EXPECT_EQ(1, json["errors"]);
    EXPECT_EQ(4, json["findings"][0]["line"]);
    EXPECT_EQ("error", json["findings"][0]["severity"]);
    Execute("UPDATE AlarmFwd_COMProperties SET Baud = '1'");
    EXPECT_EQ("row 1 of AlarmFwd_COMProperties",
              nlohmann::json::parse(Run({"check", "--json"}).out)["findings"][0]["place"]);
}

// --- explain, in-hours.

TEST_F(SiteCommands, ExplainInJson) {
    const auto json = nlohmann::json::parse(Run({"explain", "duty \"A\"", "--json"}).out);
    EXPECT_EQ("duty \"A\"", json["pager"]);
    EXPECT_EQ("ATDT1<cr>", json["steps"][0]["bytes"]);
    EXPECT_TRUE(json["notes"].is_array());
}

TEST_F(SiteCommands, AnswerInJson) {
    const ProgramRun run = Run({"--library", FAKE_LIBRARY, "in-hours", "office", "--json"});
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ("office", json["hours"]);
    EXPECT_EQ(run.exit_code == 0, json["allowed"].get<bool>());
}

// --- hours.

constexpr const char* kOffice =
    "hours \"office\"\n"
    "#     0        8        16\n"
    "mon   ........ xxxxxxxx xx......\n"
    "tue   ........ xxxxxxxx xx......\n"
    "wed   ........ xxxxxxxx xx......\n"
    "thu   ........ xxxxxxxx xx......\n"
    "fri   ........ xxxxxxxx xx......\n"
    "sat   ........ ........ ........\n"
    "sun   ........ ........ ........\n";

TEST_F(SiteCommands, ShowHoursAsAGrid) {
    const ProgramRun run = Run({"hours", "show", "office"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(kOffice, run.out);
    EXPECT_THAT(Run({"hours", "show"}).out,
                AllOf(StartsWith(kOffice), HasSubstr("\n\nhours \"always\"\n")));
    const auto json = nlohmann::json::parse(Run({"hours", "show", "office", "--json"}).out);
    EXPECT_EQ("office", json[0]["name"]);
    EXPECT_EQ("8-18", json[0]["week"]["mon"]);
    EXPECT_EQ("none", json[0]["week"]["sun"]);
}

TEST_F(SiteCommands, ChangeHoursByOptions) {
    const ProgramRun run =
        Run({"hours", "edit", "office", "--set", "Mon-Fri 08-17", "--set", "sat 9-12"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, AllOf(HasSubstr("\nfri   ........ xxxxxxxx x.......\n"),
                               HasSubstr("\nsat   ........ .xxx.... ........\n")));
    EXPECT_THAT(Run({"export"}).out, HasSubstr("mon-fri = \"8-17\"\nsat = \"9-12\"\n"));
    EXPECT_EQ("hours \"office\": unchanged\n",
              Run({"hours", "edit", "office", "--set", "sat 9-12"}).out);
}

TEST_F(SiteCommands, AddHoursOnlyWhenAsked) {
    const ProgramRun refused = Run({"hours", "edit", "night", "--set", "mon-sun 0-6"});
    EXPECT_EQ(2, refused.exit_code);
    EXPECT_THAT(refused.err,
                AllOf(HasSubstr("there are no hours \"night\""), HasSubstr("--create")));
    EXPECT_EQ(0, Run({"hours", "edit", "night", "--set", "mon-sun 0-6", "--create"}).exit_code);
    EXPECT_THAT(Run({"hours", "show", "night"}).out, HasSubstr("sun   xxxxxx.. "));
    EXPECT_THAT(Run({"hours", "edit", "night", "--set", "mon-sun none"}).err,
                HasSubstr("none is ever sent"));
}

TEST_F(SiteCommands, ChangeHoursInTheEditorOfTheUser) {
    setenv("EDITOR", "sed -i 's/^sun.*/sun x....... ........ ......../'", 1);
    const ProgramRun run = Run({"hours", "edit", "office"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, HasSubstr("\nsun   x....... ........ ........\n"));

    setenv("EDITOR", "true", 1);
    EXPECT_EQ("hours \"office\": unchanged\n", Run({"hours", "edit", "office"}).out);

    setenv("EDITOR", "false", 1);
    EXPECT_EQ(3, Run({"hours", "edit", "office"}).exit_code);
    unsetenv("EDITOR");
}

TEST_F(SiteCommands, KeepWhatWasTypedWhereItIsNoWeek) {
    setenv("EDITOR", "sed -i 's/^sun.*/sun y/'", 1);
    setenv("TMPDIR", ".", 1);
    const ProgramRun run = Run({"hours", "edit", "office"});
    unsetenv("EDITOR");
    unsetenv("TMPDIR");
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("line 9: sun: \"y\" is neither x"));
    const size_t at = run.err.find("kept in ");
    ASSERT_NE(std::string::npos, at);
    const std::string path = run.err.substr(at + 8, run.err.find('\n', at) - at - 8);
    EXPECT_THAT(ReadWhole(path.c_str()), HasSubstr("\nsun y\n"));
    EXPECT_EQ(kOffice, Run({"hours", "show", "office"}).out);
}

TEST_F(SiteCommands, SayWhatIsWrongWithHours) {
    EXPECT_EQ(2, Run({"hours"}).exit_code);
    EXPECT_THAT(Run({"hours", "show", "nights"}).err,
                HasSubstr("hours of this database: \"office\", \"always\""));
    const ProgramRun run = Run({"hours", "edit", "office", "--set", "mon 17-8"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("--set: \"17-8\" ends before it begins"));
    EXPECT_EQ(kOffice, Run({"hours", "show", "office"}).out);
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

// --- trace, of all lines.

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
