// What is said of a command line that can't be understood.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

struct UsageCase {
    std::vector<std::string> arguments;
    const char* said;
};

void PrintTo(const UsageCase& one, std::ostream* out) {
    *out << one.said;
}

class WrongCommandLine : public CliFixture, public ::testing::WithParamInterface<UsageCase> {};

TEST_P(WrongCommandLine, IsAnsweredInWords) {
    std::vector<std::string> command = GetParam().arguments;
    command.insert(command.begin(), PAGERFWD_PROGRAM);
    const ProgramRun run = RunProgram(command);
    EXPECT_EQ(2, run.exit_code);
    EXPECT_EQ("", run.out);
    EXPECT_EQ("pagerfwd: " + std::string(GetParam().said) + " --help\n", run.err);
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongCommandLine,
    ::testing::Values(
        UsageCase{{}, "a command is missing\nTo see what there is: pagerfwd"},
        UsageCase{
            {"statsu"},
            "there is no command \"statsu\"; did you mean status?\nTo see what there is: pagerfwd"},
        UsageCase{
            {"--database", "x.db", "stauts", "--json"},
            "there is no command \"stauts\"; did you mean status?\nTo see what there is: pagerfwd"},
        UsageCase{
            {"tset"},
            "there is no command \"tset\"; did you mean test?\nTo see what there is: pagerfwd"},
        UsageCase{{"frobnicate"},
                  "there is no command \"frobnicate\"\nTo see what there is: pagerfwd"},
        UsageCase{{"name"}, "there is no command \"name\"\nTo see what there is: pagerfwd"},
        UsageCase{{"alarm"}, "a command is missing\nTo see what there is: pagerfwd alarm"},
        UsageCase{{"line"}, "a command is missing\nTo see what there is: pagerfwd line"},
        UsageCase{{"node"}, "a command is missing\nTo see what there is: pagerfwd node"},
        UsageCase{{"page"}, "a command is missing\nTo see what there is: pagerfwd page"},
        UsageCase{{"token"}, "a command is missing\nTo see what there is: pagerfwd token"},
        UsageCase{
            {"alarm", "rase", "x"},
            "there is no command \"rase\"; did you mean raise?\nTo see what there is: pagerfwd "
            "alarm"},
        UsageCase{
            {"status", "--endd", "3"},
            "there is no option --endd; did you mean --ended?\nTo see what there is: pagerfwd "
            "status"},
        UsageCase{{"alarm", "list", "--databse", "x.db"},
                  "there is no option --databse; did you mean --database?\nTo see what there is: "
                  "pagerfwd alarm list"},
        UsageCase{{"init", "now"},
                  "\"now\" is one word too many\nTo see what there is: pagerfwd init"},
        UsageCase{{"test"}, "PAGER is required\nTo see what there is: pagerfwd test"},
        UsageCase{
            {"alarm", "list", "--count", "0"},
            "--count: \"0\" is no number from 1 on\nTo see what there is: pagerfwd alarm list"},
        UsageCase{{"status", "--ended", "-1"},
                  "--ended: \"-1\" is no number from 0 on\nTo see what there is: pagerfwd status"},
        UsageCase{{"run", "--lease", "4"},
                  "--lease: Value 4 not in range 5 to 86400\nTo see what there is: pagerfwd run"},
        UsageCase{{"watch", "--every", "4000"},
                  "--every: \"4000\" is no number from 0.1 to 3600\nTo see what there is: pagerfwd "
                  "watch"}));

TEST_F(CliFixture, AWordOfAnyLengthIsAnswered) {
    const ProgramRun run = Run({std::string(100'000, 'x')});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, Not(HasSubstr("did you mean")));
}

TEST_F(CliFixture, AWrongWordNeverSteersTheTerminal) {
    EXPECT_THAT(Run({"\x1b[2J"}).err, StartsWith("pagerfwd: there is no command \"\\x1b[2J\""));
}

// --- What the help shows.

class HelpOf : public ::testing::TestWithParam<const char*> {
 protected:
    static ProgramRun Shell(const std::string& command) {
        return RunProgram({"/bin/sh", "-c", command});
    }
    static std::string Help() {
        std::vector<std::string> command = {PAGERFWD_PROGRAM};
        std::istringstream words(GetParam());
        for (std::string word; words >> word;) {
            command.push_back(word);
        }
        command.emplace_back("--help");
        return RunProgram(command).out;
    }
    // The lines below "Example:" or "Examples:".
    static std::vector<std::string> BelowExamples() {
        std::vector<std::string> lines;
        std::istringstream help(Help());
        bool below = false;
        for (std::string line; std::getline(help, line);) {
            if (below && !line.empty()) {
                lines.push_back(line);
            }
            below = below || line == "Example:" || line == "Examples:";
        }
        return lines;
    }
    // Without what another program does.
    static std::vector<std::string> Examples() {
        std::vector<std::string> examples;
        for (const std::string& line : BelowExamples()) {
            if (line.rfind("  pagerfwd ", 0) == 0) {
                examples.push_back(line.substr(0, line.find_first_of("|&;")));
            }
        }
        return examples;
    }

    const test_support::TempDir folder;  // without a database
};

class HelpOfCommand : public HelpOf {};

// Nowhere to put a site of its own: without it none of them goes on for good.
TEST_P(HelpOfCommand, HasExamplesThatAreUnderstood) {
    const std::vector<std::string> examples = Examples();
    EXPECT_FALSE(examples.empty());
    for (const std::string& example : examples) {
        const ProgramRun run =
            Shell("TMPDIR=/nowhere " PAGERFWD_PROGRAM + example.substr(sizeof "  pagerfwd" - 1));
        EXPECT_NE(2, run.exit_code) << example << "\n" << run.err;
    }
}

TEST(ADemonstration, IsNoneWhereNoFolderIsForWhatIsTemporary) {
    const ProgramRun run =
        RunProgram({"/bin/sh", "-c", "TMPDIR=/nowhere " PAGERFWD_PROGRAM " web --demo"});
    EXPECT_EQ(3, run.exit_code);
    EXPECT_EQ("pagerfwd: TMPDIR names no folder: No such file or directory\n", run.err);
}

TEST_P(HelpOfCommand, SetsItsExamplesIn) {
    for (const std::string& line : BelowExamples()) {
        EXPECT_THAT(line, StartsWith("  "));
    }
}

TEST_P(HelpOf, SaysHowTheCommandIsCalled) {
    EXPECT_THAT(Help(), HasSubstr("Usage: pagerfwd " + std::string(GetParam())));
}

// "  --why TEXT REQUIRED         Why, for whoever asks later", or on two lines what is too long.
constexpr const char* kExplained =
    "(  (-[a-z],)?--[a-z-]+( [A-Z(\"][^ ]*( [^ ]+)*)?|  [A-Z]+( [^ ]+)*|  [a-z-]+)"
    "(  +([A-Z]|libPagerFwd).*)?| {30}[A-Z].*";

TEST_P(HelpOf, ExplainsItsWordsInSentences) {
    std::istringstream help(Help());
    bool is_list = false;
    std::string before;
    for (std::string line; std::getline(help, line); before = line) {
        if (is_list && !line.empty()) {
            EXPECT_THAT(line, MatchesRegex(kExplained));
        } else if (before.empty() && !line.empty()) {
            EXPECT_THAT(line, MatchesRegex("[A-Z>].*")) << "begins a paragraph";
        }
        is_list = !line.empty() && (is_list || line == "Positionals:" || line == "Options:" ||
                                    line == "Subcommands:");
    }
}

constexpr const char* kCommands[] = {
    "alarm raise", "alarm ack",  "alarm list",  "alarm withdraw", "check",
    "copy",        "explain",    "export",      "hours",          "hours show",
    "hours edit",  "import",     "in-hours",    "init",           "line test",
    "log",         "node drain", "node resume", "node remove",    "notify",
    "page cancel", "page done",  "page move",   "page resend",    "ports",
    "routes",      "run",        "status",      "test",           "token add",
    "trace",       "watch",      "web"};

INSTANTIATE_TEST_SUITE_P(Groups, HelpOf,
                         ::testing::Values("", "alarm", "line", "node", "page", "token"));
INSTANTIATE_TEST_SUITE_P(Commands, HelpOf, ::testing::ValuesIn(kCommands));
INSTANTIATE_TEST_SUITE_P(Commands, HelpOfCommand, ::testing::ValuesIn(kCommands));

}  // namespace
