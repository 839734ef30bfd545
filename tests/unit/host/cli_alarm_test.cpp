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

TEST_F(CliAlarm, IsWrittenInTheNearestLettersAndNeverRefused) {
    const ProgramRun run = Run({"alarm", "raise", "--group", "\u0141/1", "--server", "\u6771",
                                "2 \u2013 3 \u00B0C\r\nnow"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_EQ("L/1", List()[0]["group"]);
    EXPECT_EQ("?", List()[0]["server"]);
    EXPECT_EQ("2 - 3 \u00B0C  now", List()[0]["details"]);
    EXPECT_THAT(run.err,
                AllOf(HasSubstr("pagerfwd: warning: the group is written \"L/1\": latin1, the "
                                "encoding of this site, lacks some of its characters\n"),
                      HasSubstr("warning: the server is written \"?\""),
                      HasSubstr("warning: the text is written \"2 - 3 \u00B0C  now\"")));
}

TEST_F(CliAlarm, IsRefusedWithoutAText) {
    for (const char* text : {"", "  ", "\r\n"}) {
        const ProgramRun run = Run({"alarm", "raise", text});
        EXPECT_EQ(2, run.exit_code);
        EXPECT_THAT(run.err, HasSubstr("the text is empty"));
    }
    EXPECT_THAT(List(), IsEmpty());
}

// --- What is warned of.

TEST_F(CliAlarm, WarnsThatNobodyWillBePaged) {
    const ProgramRun run = Run({"alarm", "raise", "--group", "A/\x1b", "--severity", "minor", "x"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(run.out, ::testing::MatchesRegex("[0-9]+\n"));
    EXPECT_THAT(run.err,
                EndsWith("pagerfwd: warning: no engine is running for this database: nobody is "
                         "paged until one is started\n"
                         "pagerfwd: warning: no route leads from group \"A/ \", severity minor, to "
                         "a pager: nobody is paged\n"));
}

TEST_F(CliAlarm, WarnsOfNothingWhereAllIsWell) {
    ChildProcess engine({STORE_PROCESS, "site.db", "engine"});
    engine.ReadLine();
    Execute(
        "INSERT INTO Host_Routes VALUES (1, 'A*', '2'); INSERT INTO Host_RoutePagers VALUES"
        " (1, 0, 'duty'); INSERT INTO AlarmFwd_PagerSetting (description, pgtype) VALUES"
        " ('duty', '2')");
    EXPECT_EQ("", Run({"alarm", "raise", "--group", "A/1", "--severity", "major", "--server", "s",
                       std::string(70, 'x')})
                      .err);
    // "A/Major/s/" and the text.
    EXPECT_EQ(
        "pagerfwd: warning: pager \"duty\" gets only the first 80 of 81 characters of the page\n",
        Run({"alarm", "raise", "--group", "A/1", "--severity", "major", "--server", "s",
             std::string(71, 'x')})
            .err);
}

// --- The rest.

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
        "ALARM  RAISED               SEVERITY  GROUP    SERVER  STATE        TEXT\n"
        "7      2001-01-08 10:00:00  major     plant/1  pumps   being paged  Pump 3\n"
        "8      -                    critical  x                done         \n",
        Run({"alarm", "list"}).out);
}

TEST_F(CliAlarm, IsListedWithTheKindsOfOffLimit) {
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, pagerstate, severity, server, details, alarm_group)"
        " VALUES ('7', '3', '2', 's', 'x', 'g')");
    EXPECT_THAT(Run({"alarm", "list"}).out, HasSubstr("no route"));
    EXPECT_EQ("off limit", List()[0]["state"]);
    EXPECT_EQ("no route", List()[0]["outcome"]);
}

TEST_F(CliAlarm, IsListedInColumnsThatFitATerminal) {
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, severity, server, details, alarm_group) VALUES"
        " ('7', '2', 's', 'x', printf('%.65536c', 'g'))");
    const std::string list = Run({"alarm", "list"}).out;
    EXPECT_THAT(list, HasSubstr(std::string(39, 'g') + "\u2026  s"));
    EXPECT_LT(list.size(), 400U);
    EXPECT_EQ(65536U, List()[0]["group"].get<std::string>().size());
    const std::string log = Run({"log", "7"}).out;
    EXPECT_THAT(log, HasSubstr(std::string(39, 'g') + "\u2026, from s: x"));
}

TEST_F(CliAlarm, IsListedAsItWillBePaged) {
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, severity, server, details, alarm_group) VALUES"
        " ('7', 'Minor', 's', 'J\xC3\xBCrgen' || char(13), 'g')");
    EXPECT_EQ("minor", List()[0]["severity"]);
    EXPECT_EQ("J\u00FCrgen ", List()[0]["details"]);
}

TEST_F(CliAlarm, ListSaysThatThereIsNone) {
    EXPECT_EQ("no alarms\n", Run({"alarm", "list"}).out);
    EXPECT_THAT(List(), IsEmpty());
}

TEST_F(CliAlarm, NeverSteersTheTerminal) {
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, severity, server, details, alarm_group) VALUES"
        " (char(27) || '[1', char(27) || '[2', char(27) || '[3', char(27,10) || '[4',"
        " char(155) || '[5')");
    const ProgramRun run = Run({"alarm", "list"});
    // Texts have blanks in their place, as pages will.
    EXPECT_THAT(run.out, AllOf(HasSubstr("\\x1b[1"), HasSubstr(" [3"), HasSubstr("  [4"),
                               Not(HasSubstr("\x1b"))));
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

// --- What completion asks for.

TEST_F(CliAlarm, NamesTheOpenAndTheLastOnes) {
    const std::string open = Raise({"x"});
    const std::string over = Raise({"y"});
    Run({"alarm", "ack", over});
    EXPECT_EQ(open + "\n", Run({"names", "open-alarms"}).out);
    EXPECT_EQ(open + "\n" + over + "\n", Run({"names", "alarms"}).out);
    EXPECT_THAT(Run({"names", "severities"}).out, HasSubstr("critical\nmajor\n"));
    EXPECT_EQ(2, Run({"names", "others"}).exit_code);
}

// --- Its story.

TEST_F(CliAlarm, IsToldLineByLine) {
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, severity, server, details, alarm_group, pagerstate,"
        " alarmack, timestamp, acktime, alarmnote) VALUES"
        " ('978948000', '2', 'pumps', 'Pump 3', 'plant/1', '1', '1', '978948000', '978948060',"
        " 'acknowledged by maria')");
    EXPECT_EQ(
        "alarm 978948000, plant/1, from pumps: Pump 3\n"
        "2001-01-08 10:00:00  raised\n"
        "2001-01-08 10:01:00  acknowledged (by maria)\n",
        Run({"log", "978948000"}).out);
}

}  // namespace
