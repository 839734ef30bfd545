// pagerfwd line test, as far as no modem is needed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class CliLineCall : public CliFixture {
 protected:
    CliLineCall() { MakeSite(); }

    // What an engine does that serves the line.
    static void Answer(const std::string& cells) {
        host::Connection engine_does("site.db");
        while (!host::Statement(engine_does, "SELECT 1 FROM Host_TestPages").Step()) {
            usleep(1000);
        }
        engine_does.Execute("UPDATE Host_TestPages SET " + cells);
    }
};

TEST_F(CliLineCall, DialsNumbersOnly) {
    for (const char* number : {"duty", "", "5550101;", "1\rATZ", "\x1b[2J1"}) {
        const ProgramRun run = Run({"line", "test", "COM 1", number});
        EXPECT_EQ(2, run.exit_code) << number;
        EXPECT_EQ("", run.out);
        EXPECT_THAT(run.err, HasSubstr("is no number that a modem could dial"));
        EXPECT_THAT(run.err, Not(HasSubstr("\x1b")));
    }
}

TEST_F(CliLineCall, NeedsALineOfTheSite) {
    const ProgramRun run = Run({"line", "test", "south", "5550101"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, AllOf(HasSubstr("no line \"south\""), HasSubstr("\"COM 1\"")));
    EXPECT_EQ(2, Run({"line", "test", "COM 1"}).exit_code);
}

TEST_F(CliLineCall, NeedsAModem) {
    Execute("UPDATE AlarmFwd_COMProperties SET \"Select\" = '0'");
    const ProgramRun run = Run({"line", "test", "COM 1", "5550101"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, HasSubstr("line \"COM 1\" has no modem"));
}

TEST_F(CliLineCall, IsLeftToARunningEngine) {
    ChildProcess engine({STORE_PROCESS, "site.db", "engine"});
    ASSERT_EQ("taken", engine.ReadLine());
    Execute("INSERT INTO Host_Lines (line, doing) VALUES ('COM 1', 'page to duty: dial')");
    ChildProcess test(
        {PAGERFWD_PROGRAM, "--database", "site.db", "line", "test", "COM 1", "0,5550101"});
    EXPECT_EQ("test call over line \"COM 1\": ATDT0,5550101, by the running engine ...",
              test.ReadLine());
    EXPECT_EQ("waiting: the line is busy (page to duty: dial)", test.ReadLine());
    Answer("answer = 0, said = 'CONNECT 1200'");
    EXPECT_EQ("connected, and hung up: CONNECT 1200", test.ReadLine());
    EXPECT_EQ(0, test.Finish());
    host::Connection database("site.db");
    EXPECT_FALSE(host::Statement(database, "SELECT 1 FROM Host_TestPages").Step());
}

TEST_F(CliLineCall, SaysInJsonWhatBecameOfIt) {
    ChildProcess engine({STORE_PROCESS, "site.db", "engine"});
    ASSERT_EQ("taken", engine.ReadLine());
    ChildProcess test(
        {PAGERFWD_PROGRAM, "--database", "site.db", "line", "test", "COM 1", "1", "--json"});
    Answer("answer = 6, said = 'BUSY' || char(27)");
    std::string json;
    for (std::string line = test.ReadLine(); !line.empty(); line = test.ReadLine()) {
        json += line;
    }
    EXPECT_EQ(6, test.Finish());
    const nlohmann::json told = nlohmann::json::parse(json);
    EXPECT_EQ("COM 1", told["line"]);
    EXPECT_EQ("1", told["number"]);
    EXPECT_EQ(false, told["connected"]);
    EXPECT_EQ(6, told["result"]);
    EXPECT_EQ("BUSY\x1b", told["said"]);
    EXPECT_NE("", told["remedy"]);
}

TEST_F(CliLineCall, SaysThatAnAnswerIsNotKnown) {
    ChildProcess engine({STORE_PROCESS, "site.db", "engine"});
    ASSERT_EQ("taken", engine.ReadLine());
    ChildProcess test({PAGERFWD_PROGRAM, "--database", "site.db", "line", "test", "COM 1", "1"});
    Answer("answer = 99");
    EXPECT_EQ(3, test.Finish());
}

}  // namespace
