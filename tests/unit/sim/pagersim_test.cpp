// pagersim around a small program: its command line, its record, its expectations.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "tests/unit/sim/pagersim_fixture.h"

namespace pagersim {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TEST_F(PagersimTest, ShowsTheDialogueAndWhatWasReceived) {
    const Result result = Client(kConnect + kPage + Words{"close"});
    EXPECT_EQ("", result.err);
    EXPECT_EQ(0, result.status);
    EXPECT_EQ(
        "    0.000  COM 1  program  # opens the line\n"
        "    0.000  COM 1  program  # sets the line to 2400,e,7,1\n"
        "    0.000  COM 1  program  > ATDT0,5550101<cr>\n"
        "    0.000  COM 1  modem    < ATDT0,5550101<cr>\n"
        "    9.300  COM 1  modem    < <cr><lf>CONNECT 2400<cr><lf>\n"
        "    9.300  COM 1  tap      # answers 5550101\n"
        "    9.300  COM 1  program  > <cr>\n"
        "    9.400  COM 1  tap      < ID=\n"
        "    9.400  COM 1  program  > <esc>PG1<cr>\n"
        "    9.500  COM 1  tap      < <cr><ack><cr><esc>[p<cr>\n"
        "    9.500  COM 1  program  > <stx>123<cr>ABC<cr><etx>17;<cr>\n"
        "    9.500  COM 1  tap      = page for 123: ABC\n"
        "    9.600  COM 1  tap      < <cr><ack><cr>\n"
        "    9.600  COM 1  program  > <eot><cr>\n"
        "    9.700  COM 1  tap      < <cr><esc><eot><cr>\n"
        "    9.700  COM 1  tap      # the call is over\n"
        "    9.700  COM 1  program  # closes the line\n"
        "tap received 1 page:\n"
        "  123: \"ABC\", in a call of 0.400 s on COM 1\n"
        "plain received nothing\n"
        "virtual time: 9.700 s\n",
        result.out);
}

TEST_F(PagersimTest, SameRunSameTranscript) {
    const Words steps = kConnect + kPage + Words{"sleep:5", "close"};
    const std::string first = Client(steps).out;
    EXPECT_EQ(first, Client(steps).out);
}

TEST_F(PagersimTest, DialogueStandsBeforeWhatTheProgramSaysNext) {
    const Result result = Client(kConnect + kPage + Words{"close", "print:sent"});
    EXPECT_LT(result.out.find("closes the line"), result.out.find("\nsent\n"));
    EXPECT_LT(result.out.find("\nsent\n"), result.out.find("tap received"));
}

TEST_F(PagersimTest, QuietLeavesOnlyTheProgramsOutput) {
    const Result result = Client(kConnect + kPage + Words{"print:sent"}, {"--quiet"});
    EXPECT_EQ("sent\n", result.out);
    EXPECT_EQ("", result.err);
}

TEST_F(PagersimTest, TranscriptGoesToAFile) {
    const std::string shown =
        Client(kConnect + kPage + Words{"close"}, {"--transcript", "t.txt"}).out;
    EXPECT_THAT(Contents(Path("t.txt")),
                EndsWith("# the call is over\n"
                         "    9.700  COM 1  program  # closes the line\n"));
    EXPECT_THAT(shown, StartsWith(Contents(Path("t.txt"))));
}

TEST_F(PagersimTest, TranscriptToStandardOutputIsShownOnce) {
    const std::string out = Client(kConnect, {"--quiet", "--transcript", "-"}).out;
    EXPECT_EQ(out.find("CONNECT"), out.rfind("CONNECT"));
    EXPECT_THAT(out, Not(HasSubstr("received")));
    EXPECT_THAT(out, HasSubstr("CONNECT"));
}

TEST_F(PagersimTest, ReportIsForPrograms) {
    Client(kConnect + kPage, {"--report", "r.json", "--expect", "tap:123=ABC"});
    EXPECT_THAT(Contents(Path("r.json")), EndsWith("}\n"));
    const auto report = nlohmann::json::parse(Contents(Path("r.json")));
    EXPECT_EQ("ABC", report["pages"][0]["text"]);
    EXPECT_EQ("5550101", report["calls"][0]["number"]);
    EXPECT_EQ(0, report["status"]);
    EXPECT_TRUE(report["expected"]["met"]);
}

TEST_F(PagersimTest, JsonIsTheSame) {
    Client(kConnect, {"--json", "r.json"});
    EXPECT_FALSE(nlohmann::json::parse(Contents(Path("r.json"))).contains("expected"));
}

// Expectations.

TEST_F(PagersimTest, ExactlyTheExpectedPage) {
    const Result result = Client(kConnect + kPage, {"--expect", "tap:123=ABC"});
    EXPECT_EQ(0, result.status);
    EXPECT_THAT(result.out, EndsWith("received exactly what was expected\n"));
}

TEST_F(PagersimTest, OneByteOffIsNotThePage) {
    const Result result = Client(kConnect + kPage, {"--quiet", "--expect", "tap:123=ABD"});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ(
        "expected, but not received: tap, 123: \"ABD\"\n"
        "received, but not expected: tap, 123: \"ABC\"\n",
        result.err);
}

TEST_F(PagersimTest, OneMorePageIsOneTooMany) {
    const Words again = {
        "send:\\x02"
        "02\\r\\r\\x03"
        "081\\r",
        "wait:\\r\\x06\\r"};
    Words twice = kPage;
    twice.insert(twice.end() - 2, again.begin(), again.end());
    EXPECT_EQ(1, Client(kConnect + twice, {"--expect", "tap:123=ABC"}).status);
    EXPECT_EQ(0,
              Client(kConnect + twice, {"--expect", "tap:123=ABC", "--expect", "tap:02="}).status);
}

TEST_F(PagersimTest, ExpectingNothing) {
    EXPECT_EQ(0, Client(kConnect, {"--expect", "nothing"}).status);
    EXPECT_EQ(1, Client(kConnect + kPage, {"--expect", "nothing"}).status);
}

TEST_F(PagersimTest, ExpectationsMayStandInTheExchangeFile) {
    Write("exchange.toml",
          std::string(kExchange) +
              "[[expect]]\ncentre = \"tap\"\nrecipient = \"123\"\ntext = \"ABC\"\n");
    EXPECT_EQ(0, Client(kConnect + kPage).status);
    EXPECT_EQ(1, Client(kConnect).status);
    EXPECT_EQ(0, Client(kConnect, {"--expect", "nothing"}).status) << "the command line counts";
}

TEST_F(PagersimTest, ProgramsStatusComesFirst) {
    EXPECT_EQ(3, Client({"exit:3"}).status);
    EXPECT_EQ(3, Client({"exit:3"}, {"--expect", "tap:1=A"}).status);
}

// What programs do.

TEST_F(PagersimTest, NothingIsLostWhenTheProgramIsKilled) {
    const Result result = Client(kConnect + kPage + Words{"kill"});
    EXPECT_EQ(128 + SIGKILL, result.status);
    EXPECT_THAT(result.out, HasSubstr("= page for 123: ABC\n"));
    EXPECT_THAT(result.out, HasSubstr("< <cr><esc><eot><cr>\n")) << "the open line too";
}

TEST_F(PagersimTest, NorWhenItClosesEveryDescriptor) {
    const Result result =
        Client(Words{"close-all"} + kConnect + kPage, {"--expect", "tap:123=ABC"});
    EXPECT_EQ(0, result.status) << result.out;
}

TEST_F(PagersimTest, OtherPortsDoNotExist) {
    const Result result = Client({"open:/dev/ttyS1"}, {"--quiet"});
    EXPECT_EQ("/dev/ttyS1: No such file or directory\n", result.out);
    EXPECT_EQ(2, result.status);
}

TEST_F(PagersimTest, TimeIsVirtualAndBeginsOnAMonday) {
    EXPECT_EQ("2001-01-08 10:00:00\n2001-01-08 11:00:00\n",
              Client({"now", "sleep:3600", "now"}, {"--quiet"}).out);
}

TEST_F(PagersimTest, StartCanBeChosen) {
    EXPECT_EQ("2001-02-03 04:05:06\n",
              Client({"now"}, {"--quiet", "--start", "2001-02-03 04:05:06"}).out);
}

TEST_F(PagersimTest, ProgramsOfOneCommandShareTheTime) {
    const Words open_a_minute = {"open:/dev/ttyS0", "sleep:60", "close"};
    const Result result = Client(open_a_minute + Words{"exec", "now", "open:/dev/ttyS0"});
    EXPECT_THAT(result.out, HasSubstr("   60.000  COM 1  program  # closes the line\n"));
    EXPECT_THAT(result.out, HasSubstr("2001-01-08 10:01:00\n"));
    EXPECT_THAT(result.out, HasSubstr("   60.000  COM 1  program  # opens the line\n"));
}

TEST_F(PagersimTest, ClockGoesOnWithTheNextRun) {
    const Words options = {"--quiet", "--clock", "clock", "--start", "2001-02-03 04:05:06"};
    EXPECT_EQ("2001-02-03 04:05:06\n", Client({"now", "sleep:60"}, options).out);
    EXPECT_EQ("2001-02-03 04:06:06\n", Client({"now"}, options).out);
}

TEST_F(PagersimTest, ClockGoesOnBehindAKilledProgram) {
    const Words options = {"--quiet", "--clock", "clock"};
    Client(kConnect + Words{"sleep:60", "send:x", "kill"}, options);
    EXPECT_EQ("2001-01-08 10:01:10\n", Client({"now"}, options).out);
}

TEST_F(PagersimTest, RequestToEndIsPassedOn) {
    int input[2];
    ASSERT_EQ(0, pipe(input));
    const pid_t child = Start({"--", SIM_CLIENT, "stdin"}, input[0]);
    while (Contents(Path("out")).find("ready") == std::string::npos) {
        usleep(1000);
    }
    kill(child, SIGTERM);
    EXPECT_EQ(128 + SIGTERM, End(child).status);
    close(input[0]);
    close(input[1]);
}

TEST_F(PagersimTest, InterruptIsLeftToTheProgram) {
    int input[2];
    ASSERT_EQ(0, pipe(input));
    const pid_t child = Start({"--", SIM_CLIENT, "stdin", "exit:4"}, input[0]);
    while (Contents(Path("out")).find("ready") == std::string::npos) {
        usleep(1000);
    }
    kill(child, SIGINT);
    ASSERT_EQ(1, write(input[1], "x", 1));
    EXPECT_EQ(4, End(child).status);
    close(input[0]);
    close(input[1]);
}

// The folder for what lies about while a program runs.
class PagersimLeftovers : public PagersimTest {
 protected:
    PagersimLeftovers() { setenv("TMPDIR", folder_.c_str(), 1); }
    ~PagersimLeftovers() override {
        unsetenv("TMPDIR");
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            EXPECT_THAT(entry.path().filename().string(), Not(StartsWith("pagersim-")));
        }
    }
};

TEST_F(PagersimLeftovers, AreNone) {
    EXPECT_EQ(0, Client(kConnect).status);
}

TEST_F(PagersimLeftovers, AreNoneOfALibraryThatMayLieAnywhere) {
    std::filesystem::create_directory(Path("a b:c"));
    std::filesystem::copy(PRELOAD, Path("a b:c/preload.so"));
    setenv("PAGERSIM_PRELOAD", Path("a b:c/preload.so").c_str(), 1);
    const Result result = Client(kConnect, {"--quiet"});
    unsetenv("PAGERSIM_PRELOAD");
    EXPECT_EQ(0, result.status) << result.out << result.err;
}

// Mistakes of the user.

TEST_F(PagersimTest, HelpTeaches) {
    const Result result = Run({"--help"});
    EXPECT_EQ(0, result.status);
    EXPECT_THAT(result.out, HasSubstr("Usage: pagersim [OPTIONS] -- COMMAND"));
    EXPECT_THAT(result.out, HasSubstr("Examples:"));
    for (const char* option : {"--exchange", "--start", "--step", "--transcript", "--report",
                               "--json", "--expect", "--quiet", "--clock"}) {
        EXPECT_THAT(result.out, HasSubstr(option));
    }
}

TEST_F(PagersimTest, NamesTheProgramThatTheSystemRefusesToStart) {
    std::filesystem::copy(SIM_CLIENT, Path("interpreter"));
    std::filesystem::permissions(Path("interpreter"), std::filesystem::perms::owner_read);
    Write("script", "#!" + Path("interpreter") + "\n");
    std::filesystem::permissions(Path("script"), std::filesystem::perms::owner_all);
    const Result result = Run({"--quiet", "--", "./script", "word"});
    EXPECT_EQ(127, result.status);
    EXPECT_EQ("pagersim: ./script can't be started: Permission denied\n", result.err);
}

TEST_F(PagersimTest, MistakesRunNothing) {
    struct Mistake {
        Words words;
        const char* told;
    };
    const Mistake mistakes[] = {
        {{}, "pagersim: there is no command to run; write it behind --"},
        {{"--"}, "pagersim: there is no command to run; write it behind --"},
        {{SIM_CLIENT}, "The following argument was not expected"},
        {{"--step", "0", "--", SIM_CLIENT}, "--step"},
        {{"--exchange", "none.toml", "--", SIM_CLIENT}, "pagersim: none.toml: can't be read"},
        {{"--start", "now", "--", SIM_CLIENT}, "pagersim: --start now: write it as \"2001"},
        {{"--expect", "HELLO", "--", SIM_CLIENT},
         "pagersim: --expect HELLO: write CENTRE:PAGER=TEXT"},
        {{"--transcript", "/no/such/file", "--", SIM_CLIENT}, "/no/such/file: can't be written"},
        {{"--expect", "nothing", "stray", "--", SIM_CLIENT}, "was not expected: stray"},
        {{"--beside", "true", "stray", "--", SIM_CLIENT}, "was not expected: stray"},
        {{"--", "./none"}, "pagersim: ./none: there is no such program"},
    };
    for (const Mistake& mistake : mistakes) {
        const Result result = Run(mistake.words);
        EXPECT_EQ(2, result.status) << mistake.told;
        EXPECT_THAT(result.err, HasSubstr(mistake.told));
    }
}

TEST_F(PagersimTest, MistakesInTheExchangeFileAreAllTold) {
    Write("exchange.toml", "[[line]]\nport = 1\npowered = 1\n");
    const Result result = Client({});
    EXPECT_EQ(2, result.status);
    EXPECT_EQ(
        "pagersim: exchange.toml:2: port must be a text; put it between quotes\n"
        "pagersim: exchange.toml:3: powered must be true or false\n",
        result.err);
}

// It would open the machine's own ports, unless there is a preload for it too.
TEST_F(PagersimTest, ProgramOfAnotherWordSizeIsNotRun) {
    const char other_class = sizeof(void*) == 4 ? '\x02' : '\x01';
    Write("other", std::string("\x7f"
                               "ELF") +
                       other_class);
    chmod(Path("other").c_str(), 0755);
    std::filesystem::copy(PRELOAD, Path("alone.so"));
    setenv("PAGERSIM_PRELOAD", Path("alone.so").c_str(), 1);
    const Result result = Run({"--", "./other"});
    unsetenv("PAGERSIM_PRELOAD");
    EXPECT_EQ(2, result.status);
    EXPECT_THAT(result.err, HasSubstr("Use the pagersim of the other build"));
}

TEST_F(PagersimTest, MissingPreloadIsSaid) {
    setenv("PAGERSIM_PRELOAD", "/no/such/file", 1);
    const Result result = Client({"print:hello"});
    unsetenv("PAGERSIM_PRELOAD");
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("", result.out);
    EXPECT_THAT(result.err, HasSubstr("libpagersim-preload.so is missing"));
}

}  // namespace
}  // namespace pagersim
