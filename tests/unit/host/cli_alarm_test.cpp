// pagerfwd alarm: raise, acknowledge, list.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <nlohmann/json.hpp>

#include "tests/unit/host/cli_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class CliAlarm : public CliFixture {
 protected:
    CliAlarm() { EXPECT_EQ(0, Run({"init"}).exit_code); }

    // Raises an alarm, and returns its number.
    static std::string Raise(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"alarm", "raise"});
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(0, run.exit_code) << run.err;
        EXPECT_THAT(run.out, EndsWith("\n"));
        return run.out.substr(0, run.out.size() - 1);
    }
    static nlohmann::json List(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), {"alarm", "list", "--json"});
        return nlohmann::json::parse(Run(arguments).out);
    }
};

TEST_F(CliAlarm, IsRaisedUnderTheNumberThatIsPrinted) {
    const std::string first = Raise({"Pump 3 stands still"});
    EXPECT_NEAR(static_cast<double>(std::time(nullptr)), std::stod(first), 60);
    const std::string second =
        Raise({"--group", "plant/017", "--severity", "major", "--server", "pumps", "Pump 4 too"});
    EXPECT_NE(first, second);

    const nlohmann::json list = List();
    ASSERT_EQ(2U, list.size());
    EXPECT_EQ(first, list[0]["alarm"]);
    EXPECT_EQ("critical", list[0]["severity"]);
    EXPECT_EQ("ALARM/000", list[0]["group"]);
    EXPECT_NE("", list[0]["server"]);
    EXPECT_EQ("new", list[0]["state"]);
    EXPECT_EQ("Pump 3 stands still", list[0]["details"]);
    EXPECT_EQ("major", list[1]["severity"]);
    EXPECT_EQ("plant/017", list[1]["group"]);
    EXPECT_EQ("pumps", list[1]["server"]);
}

TEST_F(CliAlarm, RefusesWhatItDoesNotKnow) {
    EXPECT_EQ(2, Run({"alarm"}).exit_code);
    EXPECT_EQ(2, Run({"alarm", "raise"}).exit_code);
    EXPECT_EQ(2, Run({"alarm", "ack"}).exit_code);
    EXPECT_EQ(2, Run({"alarm", "ack", "x"}).exit_code);
    EXPECT_EQ(2, Run({"alarm", "list", "--count", "0"}).exit_code);
    const ProgramRun run = Run({"alarm", "raise", "--severity", "bad", "x"});
    EXPECT_EQ(2, run.exit_code);
    EXPECT_THAT(run.err, AllOf(HasSubstr("no severity \"bad\""), HasSubstr("\"critical\", ")));
    EXPECT_THAT(List(), IsEmpty());
}

TEST_F(CliAlarm, RefusesTextsThatTheSiteCantPage) {
    for (const char* option : {"--group", "--server"}) {
        const ProgramRun run = Run({"alarm", "raise", option, "\u6771", "x"});
        EXPECT_EQ(2, run.exit_code);
        EXPECT_THAT(run.err, AllOf(HasSubstr("U+6771"), HasSubstr("latin1")));
    }
    EXPECT_EQ(2, Run({"alarm", "raise", "\u6771"}).exit_code);
    EXPECT_THAT(List(), IsEmpty());
}

TEST_F(CliAlarm, KeepsTextsInTheEncodingOfTheSite) {
    Execute("INSERT INTO Host_Settings VALUES ('encoding', 'shift_jis')");
    Raise({"--group", "\u8868/1", "--server", "\u6771\u4EAC", "\uFF76\uFF85"});
    EXPECT_THAT(Dump(), ::testing::Contains(HasSubstr("\x95\x5C/1")));
    EXPECT_EQ("\u8868/1", List()[0]["group"]);
    EXPECT_EQ("\u6771\u4EAC", List()[0]["server"]);
    EXPECT_EQ("\uFF76\uFF85", List()[0]["details"]);
}

TEST_F(CliAlarm, IsAcknowledgedOnce) {
    const std::string number = Raise({"x"});
    ProgramRun run = Run({"alarm", "ack", number});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("alarm " + number + ": acknowledged; no further page leaves\n", run.out);
    run = Run({"alarm", "ack", number});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("alarm " + number + ": was acknowledged before\n", run.out);
    EXPECT_EQ("acknowledged", List()[0]["state"]);
}

TEST_F(CliAlarm, IsAcknowledgedThoughAnotherIsUnknown) {
    const std::string number = Raise({"x"});
    const ProgramRun run = Run({"alarm", "ack", "7", number});
    EXPECT_EQ(1, run.exit_code);
    EXPECT_EQ("pagerfwd: there is no alarm 7\n", run.err);
    EXPECT_EQ("acknowledged", List()[0]["state"]);
}

TEST_F(CliAlarm, IsListedAsLongAsItIsOpen) {
    const std::string open = Raise({"x"});
    const std::string over = Raise({"y"});
    Run({"alarm", "ack", over});
    ASSERT_EQ(1U, List({"--open"}).size());
    EXPECT_EQ(open, List({"--open"})[0]["alarm"]);
    EXPECT_EQ(2U, List().size());
    ASSERT_EQ(1U, List({"--count", "1"}).size());
    EXPECT_EQ(over, List({"--count", "1"})[0]["alarm"]);
}

TEST_F(CliAlarm, IsListedAsText) {
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, pagerstate, severity, server, details, alarm_group,"
        " timestamp) VALUES ('7', '2', '2', 'pumps', 'Pump 3', 'plant/1', '978948000'),"
        " ('8', '4', 'odd', '', '', 'x', '')");
    EXPECT_EQ(
        "7  2001-01-08 10:00:00  major  plant/1  pumps  being paged  Pump 3\n"
        "8  -  odd  x    done  \n",
        Run({"alarm", "list"}).out);
}

TEST_F(CliAlarm, NeverSteersTheTerminal) {
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, severity, server, details, alarm_group) VALUES"
        " (char(27) || '[1', char(27) || '[2', char(27) || '[3', char(27,10) || '[4',"
        " char(155) || '[5')");
    const ProgramRun run = Run({"alarm", "list"});
    EXPECT_THAT(run.out, AllOf(HasSubstr("\\x1b[1"), HasSubstr("\\x1b[2"), HasSubstr("  [3"),
                               HasSubstr("\\x1b\\x0a[4"), Not(HasSubstr("\x1b"))));
    EXPECT_THAT(Run({"alarm", "list", "--json"}).out,
                AllOf(HasSubstr("\\u001b[1"), Not(HasSubstr("\x1b"))));
}

TEST_F(CliAlarm, IsListedWithoutAChange) {
    Raise({"x"});
    const std::vector<std::string> before = Dump();
    Run({"alarm", "list"});
    Run({"alarm", "list", "--json", "--open"});
    EXPECT_EQ(before, Dump());
}

TEST_F(CliAlarm, NeedsADatabase) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"raise", "x"}, {"ack", "7"}, {"list"}}) {
        std::vector<std::string> command = {PAGERFWD_PROGRAM, "--database", "none.db", "alarm"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const ProgramRun run = RunProgram(command);
        EXPECT_EQ(3, run.exit_code);
        EXPECT_THAT(run.err, HasSubstr("none.db"));
    }
}

}  // namespace
