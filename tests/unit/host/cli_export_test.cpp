// pagerfwd export and check, of a site that has a line of every kind; explain and in-hours in JSON.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kWholeSite =
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

class CliWholeSite : public CliFixture {
 protected:
    CliWholeSite() { MakeSite(kWholeSite); }
};

// --- export.

TEST_F(CliWholeSite, ExportWhatWasImported) {
    const ProgramRun run = Run({"export"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(kWholeSite, run.out);
}

TEST_F(CliWholeSite, ExportToAFileThatIsNotThereYet) {
    const ProgramRun run = Run({"export", "copy.toml"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ("copy.toml: written\n", run.out);
    EXPECT_EQ(kWholeSite, ReadFile("copy.toml"));
    WriteFile("copy.toml", "mine");
    const ProgramRun refused = Run({"export", "copy.toml"});
    EXPECT_EQ(2, refused.exit_code);
    EXPECT_THAT(refused.err, HasSubstr("copy.toml: is there already"));
    EXPECT_EQ("mine", ReadFile("copy.toml"));
    EXPECT_EQ(0, Run({"export", "--force", "copy.toml"}).exit_code);
    EXPECT_EQ(kWholeSite, ReadFile("copy.toml"));
    EXPECT_EQ(3, Run({"export", "none/copy.toml"}).exit_code);
}

TEST_F(CliWholeSite, ExportTheWholeFileOrNone) {
    WriteFile("copy.toml", "mine");
    // A disk that is full behind the first block.
    const ProgramRun run =
        RunProgram({"/bin/sh", "-c",
                    std::string("ulimit -f 1; trap '' XFSZ; exec ") + PAGERFWD_PROGRAM +
                        " --database site.db export --force copy.toml"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("copy.toml"));
    EXPECT_EQ("mine", ReadFile("copy.toml"));
    for (const auto& file : std::filesystem::directory_iterator(".")) {
        EXPECT_THAT(file.path().filename().string(), Not(HasSubstr("copy.toml."))) << "left behind";
    }
}

TEST_F(CliWholeSite, ExportWhatImportWouldRefuseAndSaySo) {
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

TEST_F(CliWholeSite, CheckTheDatabaseWithoutAFile) {
    const ProgramRun sound = Run({"check"});
    EXPECT_EQ(0, sound.exit_code) << sound.out;
    Execute("UPDATE AlarmFwd_COMProperties SET Baud = '1'");
    const ProgramRun run = Run({"check"});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_THAT(
        run.out,
        AllOf(HasSubstr("site.db: row 1 of AlarmFwd_COMProperties: error: port "
                        "\"COM 1\": 1 is no speed of the serial line driver\n    Every page"),
              HasSubstr("\nTo mend them: pagerfwd export site.toml")));
    EXPECT_EQ(3, RunProgram({PAGERFWD_PROGRAM, "--database", "none.db", "check"}).exit_code);
}

TEST_F(CliWholeSite, CheckWhosePagesNoOtherLineTakesOver) {
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

TEST_F(CliWholeSite, CheckInJson) {
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

TEST_F(CliWholeSite, ExplainInJson) {
    const auto json = nlohmann::json::parse(Run({"explain", "duty \"A\"", "--json"}).out);
    EXPECT_EQ("duty \"A\"", json["pager"]);
    EXPECT_EQ("ATDT1<cr>", json["steps"][0]["bytes"]);
    EXPECT_TRUE(json["notes"].is_array());
}

TEST_F(CliWholeSite, AnswerInJson) {
    const ProgramRun run = Run({"in-hours", "office", "--json"});
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ("office", json["hours"]);
    EXPECT_EQ(run.exit_code == 0, json["allowed"].get<bool>());
}

}  // namespace
