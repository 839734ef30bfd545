// `pagerfwd line test` through simulated modems: alone, and while an engine serves the line.
#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;

class LineCall : public RunTest {
 protected:
    static constexpr const char* kConnected =
        "test call over line \"COM 1\": ATDT0,5550101 ...\n"
        "connected, and hung up: CONNECT 2400\n";
    static constexpr const char* kConnectedByEngine =
        "test call over line \"COM 1\": ATDT0,5550101, by the running engine ...\n"
        "connected, and hung up: CONNECT 2400\nexit 0\n";

    // Adds a setting to the modem.
    void Modem(const std::string& setting) {
        const std::string line = "port = \"COM 1\"\n";
        exchange.insert(exchange.find(line) + line.size(), setting + "\n");
    }
    void CallAt(int second, const std::string& number = "0,5550101") {
        At(second,
           Pagerfwd("line test \"COM 1\" " + number) + " >beside 2>&1; echo \"exit $?\" >>beside");
    }
    // What the command beside an engine said, and its exit code behind it.
    std::string Beside(int until) {
        At(until, "kill -TERM $PPID");
        const ProgramRun run = Simulated({"run"});
        EXPECT_EQ(0, run.exit_code) << run.err;
        said_by_engine = run.err;
        return ReadFile("beside");
    }

    static nlohmann::json Report() { return nlohmann::json::parse(ReadFile("report.json")); }
    // In which calls pages have arrived.
    static std::vector<int> CallsOfPages() {
        std::vector<int> calls;
        const nlohmann::json report = Report();
        for (const nlohmann::json& page : report["pages"]) {
            calls.push_back(page["call"].get<int>());
        }
        return calls;
    }
    // Of each: when it begins, when it ends.
    static std::vector<std::pair<double, double>> Calls() {
        std::vector<std::pair<double, double>> calls;
        const nlohmann::json report = Report();
        for (const nlohmann::json& call : report["calls"]) {
            calls.emplace_back(call["from_seconds"].get<double>(),
                               call["to_seconds"].get<double>());
        }
        return calls;
    }

    std::string said_by_engine;
};

// --- Without an engine.

TEST_F(LineCall, IsHungUpWhenItIsAnswered) {
    const ProgramRun run = Simulated({"line", "test", "COM 1", "0,5550101"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_EQ(kConnected, run.out);
    ASSERT_EQ(1U, Calls().size());
    EXPECT_GT(5, Calls()[0].second - Calls()[0].first);
    EXPECT_THAT(pages, IsEmpty());
    for (const char* table : {"Host_Sends", "Host_History", "Host_TestPages"}) {
        EXPECT_THAT(Rows("count(*) FROM " + std::string(table)), ElementsAre("0")) << table;
    }
}

struct Failing {
    const char* modem;
    const char* number;
    int exit_code;
    const char* said;
};

void PrintTo(const Failing& failing, std::ostream* out) {
    *out << failing.said;
}

class LineCallThatFails : public LineCall, public ::testing::WithParamInterface<Failing> {};

TEST_P(LineCallThatFails, SaysWhatCame) {
    Modem(GetParam().modem);
    exchange +=
        "[[centre]]\nname = \"busy\"\nprotocol = \"tap\"\nnumbers = [\"5550109\"]\n"
        "calls = \"busy\"\n"
        "[[centre]]\nname = \"silent\"\nprotocol = \"tap\"\nnumbers = [\"5550108\"]\n"
        "calls = \"no answer\"\n";
    const ProgramRun run = Simulated({"line", "test", "COM 1", GetParam().number});
    EXPECT_EQ(GetParam().exit_code, run.exit_code);
    EXPECT_THAT(run.out, EndsWith(std::string("\nnot connected: ") + GetParam().said + "\n"));
    EXPECT_THAT(run.err, HasSubstr("(result " + std::to_string(GetParam().exit_code) + ")"));
}

INSTANTIATE_TEST_SUITE_P(
    Since, LineCallThatFails,
    ::testing::Values(Failing{"", "5550109", 6, "BUSY"}, Failing{"", "5550108", 6, "NO ANSWER"},
                      Failing{"dial_tone = false", "5550101", 6, "NO DIALTONE"},
                      Failing{"powered = false", "5550101", 8, "the modem doesn't answer"},
                      Failing{"there_until = \"2001-01-08 09:00:00\"", "5550101", 5,
                              "/dev/ttyS0 can't be opened: No such file or directory"}));

TEST_F(LineCall, LeavesPendingPagesAlone) {
    Raise("DUTY/1");
    const std::string before = exchange;
    At(5, KillAll());
    Simulated({"run"});
    exchange = before;
    pages.clear();
    EXPECT_EQ(0, Simulated({"line", "test", "COM 1", "0,5550101"}).exit_code);
    EXPECT_THAT(Stories(), ElementsAre("duty pending 0"));
    RunUntilDone();
    EXPECT_THAT(Stories(), ElementsAre("duty done 1"));
}

TEST_F(LineCall, IsGivenUpAndHungUpWhenTheOperatorEndsIt) {
    At(6, "kill -INT $PPID");
    const ProgramRun run = Simulated({"line", "test", "COM 1", "0,5550101"});
    EXPECT_EQ(6, run.exit_code);
    EXPECT_THAT(run.out, EndsWith("\nnot connected: nobody answered\n"));
    EXPECT_THAT(Calls(), IsEmpty());
}

// --- By a running engine.

TEST_F(LineCall, IsMadeByTheEnginesLine) {
    CallAt(5);
    EXPECT_EQ(kConnectedByEngine, Beside(120));
    EXPECT_EQ(1U, Calls().size());
    EXPECT_THAT(said_by_engine,
                HasSubstr("line \"COM 1\": test call to 0,5550101: CONNECT 2400 (result 0)"));
    EXPECT_THAT(Rows("count(*) FROM Host_Sends"), ElementsAre("0"));
    EXPECT_THAT(Rows("health FROM Host_Lines"), ElementsAre("well"));
}

TEST_F(LineCall, WaitsForThePageOnTheLineAndTheNextPageWaitsForIt) {
    Raise("DUTY/1");
    Raise("DUTY/2");
    CallAt(12);
    EXPECT_EQ(
        "test call over line \"COM 1\": ATDT0,5550101, by the running engine ...\n"
        "waiting: the line is busy (page to duty: dial)\n"
        "connected, and hung up: CONNECT 2400\nexit 0\n",
        Beside(300));
    EXPECT_EQ(3U, Calls().size());
    EXPECT_THAT(CallsOfPages(), ElementsAre(0, 2)) << "the test call is the second";
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 2)));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "duty done 1"));
}

TEST_F(LineCall, IsMadeOverAPausedLine) {
    RunProgram({PAGERFWD_PROGRAM, "line", "pause", "COM 1"});
    CallAt(5);
    EXPECT_EQ(kConnectedByEngine, Beside(120));
    EXPECT_THAT(RunProgram({PAGERFWD_PROGRAM, "line", "list"}).out, HasSubstr(" paused\n"));
}

TEST_F(LineCall, IsAnsweredWhereTheDeviceIsMissing) {
    Modem("there_from = \"2001-01-08 10:10:00\"");
    CallAt(60);
    EXPECT_THAT(
        Beside(120),
        HasSubstr("\nnot connected: /dev/ttyS0 can't be opened: No such file or directory\n"));
    EXPECT_THAT(ReadFile("beside"), EndsWith("(result 5)\nexit 5\n"));
}

TEST_F(LineCall, IsMadeOverASickLineWhoseModemIsSilent) {
    Modem("powered = false");
    Execute("INSERT INTO Host_Lines (line, health, reason) VALUES ('COM 1', 'sick', 'x')");
    CallAt(60);
    EXPECT_THAT(Beside(120), EndsWith("exit 8\n"));
    EXPECT_THAT(ReadFile("beside"), HasSubstr("\nnot connected: the modem doesn't answer\n"));
    EXPECT_THAT(said_by_engine, Not(HasSubstr("is back")));
}

// Else it would be asked a minute later.
TEST_F(LineCall, BringsASickLineBackSoonWhoseModemAnswers) {
    for (const int second : {5, 8, 11}) {
        At(second, "read lines </proc/$PPID/task/$PPID/children; kill -KILL $lines");
    }
    CallAt(15);
    EXPECT_EQ(kConnectedByEngine, Beside(120));
    EXPECT_THAT(said_by_engine, ContainsRegex("10:00:1[0-9] error: line .COM 1. is sick"));
    EXPECT_THAT(said_by_engine, ContainsRegex("10:00:[34][0-9] line .COM 1. is back"));
}

TEST_F(LineCall, IsAnsweredWhereTheDeviceIsUsedForAnotherDatabase) {
    MakeSite("other.db", kSite);
    At(2, Pagerfwd("--database other.db test duty >other"));
    RunProgram({PAGERFWD_PROGRAM, "line", "pause", "COM 1"});
    CallAt(10);
    EXPECT_THAT(Beside(200), HasSubstr("\nnot connected: its device is used already\n"));
}

TEST_F(LineCall, EndsWhereTheEngineEndsBeforeIt) {
    Raise("DUTY/1");
    CallAt(12);
    EXPECT_THAT(Beside(15),
                EndsWith("the engine that was running ended before it had done it\nexit 3\n"));
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
    EXPECT_EQ(1U, Calls().size());
    EXPECT_THAT(Rows("count(*) FROM Host_TestPages"), ElementsAre("0"));
}

TEST_F(LineCall, IsNotMadeWhereNobodyWaitsForItAnyMore) {
    Raise("DUTY/1");
    At(12, Pagerfwd("line test \"COM 1\" 0,5550101 >beside & echo $! >call; wait"));
    At(16, "read call <call; kill -KILL $call");
    EXPECT_THAT(Beside(200), HasSubstr("waiting: the line is busy"));
    EXPECT_EQ(1U, Calls().size());
    EXPECT_THAT(pages, ElementsAre(Pair("tap", 1)));
}

}  // namespace
