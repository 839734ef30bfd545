// `pagerfwd test` and `pagerfwd in-hours` through the real library, on simulated lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tests/support/trace.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/files.h"

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;

constexpr const char* kExchange = EXAMPLES "/exchange.toml";
constexpr const char* kModem = "[[line]]\nport = \"COM 1\"\n";
constexpr const char* kTap =
    "[[centre]]\nname = \"tap\"\nprotocol = \"tap\"\nnumbers = [\"5550101\"]\n";

class TestPage : public ::testing::Test {
 protected:
    TestPage() {
        RunProgram({PAGERFWD_PROGRAM, "init"});
        const ProgramRun run = RunProgram({PAGERFWD_PROGRAM, "import", EXAMPLES "/site.toml"});
        EXPECT_EQ(0, run.exit_code) << run.err;
    }

    // Runs pagerfwd on the lines of an exchange, with options for the simulation.
    static ProgramRun Simulated(const std::string& exchange, std::vector<std::string> options,
                                const std::vector<std::string>& arguments) {
        WriteFile("exchange.toml", exchange);
        std::vector<std::string> command = {PAGERSIM_PROGRAM, "--quiet"};
        command.insert(command.end(), options.begin(), options.end());
        command.insert(command.end(), {"--", PAGERFWD_PROGRAM});
        command.insert(command.end(), arguments.begin(), arguments.end());
        return RunProgram(command);
    }

    static ProgramRun Page(const std::string& exchange, const char* pager = "duty phone") {
        return Simulated(exchange, {}, {"test", pager});
    }

    const test_support::TempDir folder;
};

// --- Pages that arrive.

struct Arrival {
    const char* pager;
    const char* page;  // as the centre understands it
};

void PrintTo(const Arrival& arrival, std::ostream* out) {
    *out << arrival.pager;
}

class TestPageOfEachType : public TestPage, public ::testing::WithParamInterface<Arrival> {};

TEST_P(TestPageOfEachType, Arrives) {
    const ProgramRun run =
        RunProgram({PAGERSIM_PROGRAM, "--quiet", "--exchange", kExchange, "--expect",
                    GetParam().page, "--", PAGERFWD_PROGRAM, "test", GetParam().pager});
    EXPECT_EQ(0, run.exit_code) << run.out << run.err;
    EXPECT_THAT(run.out, HasSubstr("sent\n"));
}

INSTANTIATE_TEST_SUITE_P(
    All, TestPageOfEachType,
    ::testing::Values(Arrival{"duty phone", "tap:5550111=TEST/Informational/TESTSERVER/test"},
                      Arrival{"manager phone", "ucp:5550112=TEST/Informational/TESTSERVER/test"},
                      Arrival{"engineer", "plain:3003=TEST/Informational/TESTSERVER/test"},
                      Arrival{"technician", "plain:2002="}, Arrival{"porter", "plain:1001="},
                      Arrival{"Osaka office", "ntt:5550103=4/TESTSERVER"}));

TEST_F(TestPage, LeavesWhateverTheHours) {
    const ProgramRun run =
        RunProgram({PAGERSIM_PROGRAM, "--quiet", "--start", "2001-01-07 03:00:00", "--exchange",
                    kExchange, "--expect", "plain:3003=TEST/Informational/TESTSERVER/test", "--",
                    PAGERFWD_PROGRAM, "test", "engineer"});
    EXPECT_EQ(0, run.exit_code) << run.out << run.err;
}

TEST_F(TestPage, LeavesATraceWhenAsked) {
    const ProgramRun run =
        Simulated(std::string(kModem) + kTap, {}, {"--trace", "test", "duty phone"});
    EXPECT_EQ(0, run.exit_code) << run.out << run.err;
    EXPECT_THAT(test_support::TraceEntries(),
                AllOf(Contains("*** START PAGING ***"), Contains("PAGER TEST invoked!"),
                      Contains("Message transfered!"), Contains("*** END PAGING ***")));
}

// --- Pages that don't.

TEST_F(TestPage, WithoutALineIsResult5) {
    const ProgramRun run = Page("[[line]]\nport = \"COM 2\"\n");
    EXPECT_EQ(5, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("no line"));
}

TEST_F(TestPage, ToABusyCentreIsResult6) {
    const ProgramRun run = Page(std::string(kModem) + kTap + "calls = \"busy\"\n");
    EXPECT_EQ(6, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("dialling failed"));
}

TEST_F(TestPage, ToANumberOfNobodyIsResult6) {
    EXPECT_EQ(6, Page(kModem).exit_code);
}

TEST_F(TestPage, OverADeadTelephoneLineIsResult6) {
    EXPECT_EQ(6, Page(std::string(kModem) + "dial_tone = false\n" + kTap).exit_code);
}

TEST_F(TestPage, ThatTheCentreRefusesIsResult7) {
    const ProgramRun run = Page(std::string(kModem) + kTap + "answer = 512\n");
    EXPECT_EQ(7, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("didn't take the page"));
}

TEST_F(TestPage, OverAModemThatIsSwitchedOffIsResult8) {
    const ProgramRun run = Page(std::string(kModem) + "powered = false\n" + kTap);
    EXPECT_EQ(8, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("the modem didn't answer"));
}

TEST_F(TestPage, SaysInJsonWhatBecameOfIt) {
    const ProgramRun run =
        Simulated(std::string(kModem) + kTap, {}, {"test", "duty phone", "--json"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out, AllOf(::testing::StartsWith("{\n  \"pager\": \"duty phone\",\n"),
                               HasSubstr("\"sent\": true"), HasSubstr("\"result\": 0")));
    const ProgramRun failed = Simulated(kModem, {}, {"test", "duty phone", "--json"});
    EXPECT_EQ(6, failed.exit_code);
    EXPECT_THAT(failed.out, AllOf(HasSubstr("\"sent\": false"), HasSubstr("\"result\": 6")));
}

// --- Hours, through the library and the clock.

TEST_F(TestPage, MayLeaveInTheHoursOfTheSite) {
    const auto in_hours = [](const char* instant, const char* hours) {
        return Simulated(kModem, {"--start", instant}, {"in-hours", hours}).exit_code;
    };
    EXPECT_EQ(0, in_hours("2001-01-08 08:00:00", "office"));  // a Monday
    EXPECT_EQ(1, in_hours("2001-01-08 07:59:59", "office"));
    EXPECT_EQ(0, in_hours("2001-01-12 17:59:59", "office"));  // a Friday
    EXPECT_EQ(1, in_hours("2001-01-12 18:00:00", "office"));
    EXPECT_EQ(0, in_hours("2001-01-13 14:30:00", "office"));  // a Saturday
    EXPECT_EQ(1, in_hours("2001-01-13 12:30:00", "office"));
    EXPECT_EQ(1, in_hours("2001-01-14 12:00:00", "office"));  // a Sunday
    EXPECT_EQ(0, in_hours("2001-01-14 23:59:59", "always"));
    EXPECT_EQ(2, in_hours("2001-01-14 12:00:00", "nonesuch"));
}

}  // namespace
