// New alarms, taken up.
#include "host/node/intake.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/another_program.h"
#include "tests/unit/host/intake_fixture.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using AnIntake = IntakeTest;

TEST_F(AnIntake, HandsAnAlarmToEachPagerOfItsRoutesOnce) {
    AddAlarm("7");
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to a", "7 to c"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 1", "c 1"));
    EXPECT_EQ("2", StateOf("7"));
    Run();
    EXPECT_EQ(3U, calls.size());
    EXPECT_THAT(said.str(), HasSubstr("<6>alarm 7 (ops) to \"b\": queued\n"));
}

TEST_F(AnIntake, TakesAlarmsInTheirOrder) {
    AddAlarm("7");
    AddAlarm("8", "");
    AddAlarm("9", "2");
    AddAlarm("10", "4");
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to a", "7 to c", "8 to b", "8 to a", "8 to c"));
}

TEST_F(AnIntake, MendsWhatAnotherProgramHasWritten) {
    Execute("INSERT INTO Host_Routes VALUES (3, 'J\xFC*', '2')");
    Route(3, {"c"});
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, alarm_group, severity, server, details) VALUES"
        " ('7', 'J\xC3\xBC/1', 'Major', 'a\rb', '2 \xE2\x80\x93 3')");
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to c"));
    EXPECT_THAT(Rows("severity || '|' || alarm_group || '|' || server || '|' || details"
                     " FROM AlarmLog"),
                ElementsAre("2|J\xFC/1|a b|2 - 3"));
}

TEST_F(AnIntake, PagesNobodyForAnAlarmThatWasAcknowledgedWhileItWasNew) {
    AddAlarm("7");
    AcknowledgeAlarm(connection, 7, kNow);
    Execute(
        "INSERT INTO AlarmLog (alarmlogID, pagerstate, alarmack, alarm_group)"
        " VALUES ('8', '0', '1', 'ops')");
    Run();
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_EQ("1", StateOf("7"));
    EXPECT_EQ("1", StateOf("8"));
}

TEST_F(AnIntake, TellsOfAnAlarmThatNoRouteTakes) {
    AddAlarm("7", "0", "elsewhere");
    Run();
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_THAT(Noted(), IsEmpty());
    EXPECT_THAT(said.str(),
                HasSubstr("<4>warning: alarm 7 (elsewhere): no route leads to a pager"));
    EXPECT_EQ("3", StateOf("7"));
    EXPECT_THAT(NewAlarms(connection), IsEmpty());
    EXPECT_THAT(OpenAlarms(connection), IsEmpty());
}

TEST_F(AnIntake, RefusesNumbersThatTwoAlarmsHave) {
    AddAlarm("7");
    AddAlarm("7");
    Run();
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog"), ElementsAre("3", "3"));
    EXPECT_THAT(said.str(), HasSubstr("<3>error: alarm 7 (ops): its number can't be used"));
}

TEST_F(AnIntake, RefusesWhatIsNoNumberOfTheLibrary) {
    for (const char* number : {"", "x", "7x", " 7", "07", "+7", "7.0", "2147483648", "-2147483649",
                               "99999999999999999999"}) {
        AddAlarm(number);
        Run();
        EXPECT_EQ("3", StateOf(number)) << number;
    }
    EXPECT_THAT(calls, IsEmpty());
    AddAlarm("2147483647");
    AddAlarm("-2147483648");
    Run();
    EXPECT_EQ(6U, calls.size());
}

TEST_F(AnIntake, SetsAsideAnAlarmThatIsTooLargeAndSaysItOnce) {
    AddAlarm("6");
    AddAlarm("7");
    AddAlarm("8");
    WriteAsAnother(database,
                   "UPDATE AlarmLog SET details = hex(zeroblob(600000)) WHERE alarmlogID = '7'");
    Run();
    Run();
    EXPECT_THAT(calls, ElementsAre("6 to b", "6 to a", "6 to c", "8 to b", "8 to a", "8 to c"));
    EXPECT_EQ("2", StateOf("8"));
    const size_t at = said.str().find("row 2 of the alarm log is set aside: ");
    EXPECT_NE(std::string::npos, at) << said.str();
    EXPECT_EQ(std::string::npos, said.str().find("row 2 of", at + 1));
}

// Its texts can be read, but the row can't be written.
TEST_F(AnIntake, SetsAsideAnAlarmThatCantBeTakenUp) {
    AddAlarm("7");
    AddAlarm("8");
    WriteAsAnother(database,
                   "UPDATE AlarmLog SET alarmnote = hex(zeroblob(600000)) WHERE alarmlogID = '7'");
    Run();
    EXPECT_THAT(calls, ElementsAre("8 to b", "8 to a", "8 to c"));
    EXPECT_THAT(said.str(), HasSubstr("row 1 of the alarm log is set aside: "));
    EXPECT_TRUE(intake->IsDone(connection));
    AddAlarm("9");
    EXPECT_FALSE(intake->IsDone(connection));
}

// Another program may begin its numbers anew, or ask for an alarm's pages once more.
TEST_F(AnIntake, PagesForANumberThatWasUsedBefore) {
    AddAlarm("7");
    Run();
    for (const char* pager : {"a", "b", "c"}) {
        RewriteEvent(7, pager, 4, 0);
    }
    Execute("DELETE FROM AlarmLog");
    AddAlarm("7");
    calls.clear();
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to a", "7 to c"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 1", "c 1"));
}

}  // namespace
}  // namespace host
