// Pages that a line has been given, handed over to its library.
#include "host/line/hand_over.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/pages/page_owner.h"
#include "tests/unit/host/another_program.h"
#include "tests/unit/host/intake_fixture.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using ALine = IntakeTest;

// Numbers are texts in the table, and 10 would stand before 9 there.
TEST_F(ALine, HandsOverByNumberAndWithinAnAlarmByPlace) {
    AddAlarm("10");
    AddAlarm("9");
    Run();
    EXPECT_THAT(calls, ElementsAre("9 to b", "9 to a", "9 to c", "10 to b", "10 to a", "10 to c"));
}

// --- Processes that die.

TEST_F(ALine, GoesOnAfterADeathBeforeTheCall) {
    AddAlarm("7");
    dies_before_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a -", "c -"));
    Restart();
    EXPECT_THAT(calls, ElementsAre("7 to a", "7 to c"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 1", "c 1"));
}

TEST_F(ALine, CallsNotAgainAfterADeathBetweenAnswerAndNote) {
    AddAlarm("7");
    dies_after_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a -", "c -"));
    Restart();
    EXPECT_THAT(calls, ElementsAre("7 to c"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 3", "c 1"));
}

TEST_F(ALine, CallsNotAgainWhenThePageHasEndedBeforeTheNote) {
    AddAlarm("7");
    dies_after_call = 1;
    EXPECT_THROW(Run(), ProcessDied);
    RewriteEvent(7, "b", 4, 0);
    OpenTable(database, "AlarmFwd_PagerEvents")
        .Delete("WHERE AlarmFwd_PagerEvents.PagerState <> 2");
    Restart();
    EXPECT_THAT(calls, ElementsAre("7 to a", "7 to c"));
}

// --- Acknowledgements.

TEST_F(ALine, StopsAtAnAcknowledgementBeforeAPagersTurn) {
    AddAlarm("7");
    dies_before_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    dies_before_call = 0;
    AcknowledgeAlarm(connection, 7, kNow);
    Run();
    EXPECT_EQ(2U, calls.size());
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 2", "c 2"));
    EXPECT_EQ("1", StateOf("7"));
}

TEST_F(ALine, StopsAtAStateOfOneThatAnotherProgramHasWritten) {
    AddAlarm("7");
    dies_before_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    Execute("UPDATE AlarmLog SET pagerstate = '1'");
    Run();
    EXPECT_EQ(2U, calls.size());
    EXPECT_EQ("1", StateOf("7"));
}

// --- Answers.

TEST_F(ALine, TellsOfAPagerThatIsUnknownAndGoesOn) {
    Execute("DELETE FROM AlarmFwd_PagerSetting WHERE description = 'a'");
    answers["a"] = -1;
    AddAlarm("7");
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to a", "7 to c"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a -1", "c 1"));
    EXPECT_THAT(said.str(), HasSubstr("<3>error: alarm 7 (ops) to \"a\": there is no such pager"));
    EXPECT_EQ("2", StateOf("7"));
}

TEST_F(ALine, GivesUpAnAlarmThatWentToNobody) {
    Execute("DELETE FROM AlarmFwd_PagerSetting");
    answers = {{"a", -1}, {"b", -1}, {"c", -1}};
    AddAlarm("7");
    Run();
    EXPECT_EQ(3U, calls.size());
    EXPECT_EQ("3", StateOf("7"));
}

TEST_F(ALine, TriesAgainAfterTenSecondsWhatTheLibraryCouldNotRead) {
    answers["a"] = -1;  // though there is such a pager
    AddAlarm("7");
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to a", "7 to c"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a -", "c 1"));
    pagersim::VirtualClock::Set(kNow + 9);
    Run();
    EXPECT_EQ(3U, calls.size());
    pagersim::VirtualClock::Set(kNow + 10);
    answers.clear();
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to a", "7 to c", "7 to a"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 1", "c 1"));
}

TEST_F(ALine, TriesAgainWhenTheLibraryDoesNotSeeTheAlarm) {
    answers["b"] = 0;
    AddAlarm("7");
    Run();
    EXPECT_THAT(Noted(), ElementsAre("b -", "a 1", "c 1"));
}

TEST_F(ALine, HandsOverTheOthersWhileOneWaits) {
    answers["b"] = -1;
    AddAlarm("7");
    Run();
    answers.clear();
    AddAlarm("8");
    Run();
    EXPECT_THAT(Noted("7"), ElementsAre("b -", "a 1", "c 1"));
    EXPECT_THAT(Noted("8"), ElementsAre("b 1", "a 1", "c 1"));
}

// A pass of the library works on a copy of its queue, and sends what came last first.
TEST_F(ALine, HandsOverTheNextPageWhenTheOneBeforeIsOnTheLine) {
    AddAlarm("7");
    intake->Run(connection);
    for (const Delivery& delivery : OpenDeliveries(connection)) {
        GiveToLine(connection, delivery, "north");
    }
    hand_over->Run(connection);
    hand_over->Run(connection);
    EXPECT_THAT(calls, ElementsAre("7 to b"));
    hand_over->Saw(TracedPage());
    hand_over->Run(connection);
    EXPECT_THAT(calls, ElementsAre("7 to b"));
    hand_over->Saw(on_the_line);
    hand_over->Run(connection);
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to a"));
    RewriteEvent(7, "a", 4, 0);  // it ended, and the trace said nothing
    hand_over->Run(connection);
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to a", "7 to c"));
}

TEST_F(ALine, HandsOverNothingThatBelongsToAnotherLine) {
    AddAlarm("7");
    intake->Run(connection);
    GiveToLine(connection, OpenDeliveries(connection).at(1), "south");
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to c"));
}

TEST_F(ALine, HandsOverSevereAlarmsFirstAndOldOnesBeforeNew) {
    AddAlarm("7");
    AddAlarm("8");
    AddAlarm("9");
    Execute("UPDATE AlarmLog SET severity = '3' WHERE alarmlogID = '7'");
    Execute("UPDATE AlarmLog SET severity = '5' WHERE alarmlogID = '8'");
    Run();
    EXPECT_THAT(calls, ElementsAre("9 to b", "9 to a", "9 to c", "7 to b", "7 to a", "7 to c",
                                   "8 to b", "8 to a", "8 to c"));
}

TEST_F(ALine, LeavesAnAlarmThatHasGone) {
    AddAlarm("7");
    dies_before_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    Execute("DELETE FROM AlarmLog");
    Run();
    EXPECT_EQ(2U, calls.size());
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 0", "c 0"));
    EXPECT_THAT(said.str(), HasSubstr("\"c\": the alarm has gone from the alarm log"));
}

// --- Alarms whose other pages have ended.

TEST_F(ALine, KeepsTheEndOfAnAlarmWhoseLastPagerIsUnknown) {
    Execute("DELETE FROM AlarmFwd_PagerSetting WHERE description IN ('a', 'c')");
    answers = {{"a", -1}, {"c", -1}};
    AddAlarm("7");
    dies_before_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    dies_before_call = 0;
    Execute("UPDATE AlarmLog SET pagerstate = '4'");  // the page to b is done
    Run();
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a -1", "c -1"));
    EXPECT_EQ("4", StateOf("7"));
}

TEST_F(ALine, PagesAgainForAnAlarmWhoseOtherPagesHaveEnded) {
    AddAlarm("7");
    dies_before_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    dies_before_call = 0;
    RewriteEvent(7, "b", 3, 6);
    Execute("UPDATE AlarmLog SET pagerstate = '3'");
    Run();
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 1", "c 1"));
    EXPECT_EQ("2", StateOf("7"));
}

// The fold of a page that ends while the next is being queued says that all have ended.
TEST_F(ALine, MendsTheStateThatAFoldHasWrittenMeanwhile) {
    AddAlarm("7");
    Execute(connection.Can().is_file
                ? "CREATE TRIGGER Fold AFTER INSERT ON AlarmFwd_PagerEvents"
                  " WHEN NEW.PagerDescr = 'c' BEGIN UPDATE AlarmLog SET pagerstate = '4'; END"
                : "CREATE RULE Fold AS ON INSERT TO AlarmFwd_PagerEvents"
                  " WHERE NEW.PagerDescr = 'c' DO ALSO UPDATE AlarmLog SET pagerstate = '4'");
    Run();
    EXPECT_EQ("2", StateOf("7"));
}

TEST_F(ALine, HandsTextsOverAsTheyAre) {
    const std::string pager = "a\"b'%s;--" + std::string(65536, 'x');
    const std::string group = "o\"'%n" + std::string(65536, 'y');
    Route(2, {});
    Execute("DELETE FROM Host_RoutePagers");
    Route(2, {pager});
    AddPager(pager);
    AddAlarm("7", "0", group);
    dies_after_call = 1;
    EXPECT_THROW(Run(), ProcessDied);
    EXPECT_THAT(calls, ElementsAre("7 to " + pager));
    Restart();
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_THAT(Noted(), ElementsAre(pager + " 3"));
    EXPECT_THAT(faults, IsEmpty());
}

// --- Rows that can't be read.

TEST_F(ALine, HandsOverWhatIsBesideADeliveryThatIsTooLarge) {
    answers["b"] = answers["a"] = answers["c"] = -1;
    AddAlarm("7");
    Run();
    answers.clear();
    WriteAsAnother(database,
                   "UPDATE Host_Deliveries SET pager = hex(zeroblob(600000)) WHERE pager = 'b'");
    pagersim::VirtualClock::Set(kNow + 10);
    calls.clear();
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to a", "7 to c"));
    EXPECT_THAT(faults, IsEmpty());
}

// Its alarm grew after it was taken up.
TEST_F(ALine, SaysOnceThatADeliveryHasAnAlarmThatIsTooLarge) {
    answers["b"] = answers["a"] = answers["c"] = -1;
    AddAlarm("7");
    Run();
    WriteAsAnother(database, "UPDATE AlarmLog SET details = hex(zeroblob(600000))");
    pagersim::VirtualClock::Set(kNow + 10);
    calls.clear();
    Run();
    pagersim::VirtualClock::Set(kNow + 20);
    Run();
    EXPECT_THAT(calls, IsEmpty());
    const std::string once = "alarm 7 (ops) to \"b\" can't be handed over: ";
    const size_t at = said.str().find(once);
    EXPECT_NE(std::string::npos, at) << said.str();
    EXPECT_EQ(std::string::npos, said.str().find(once, at + 1));
}

// Another program's: the alarm is there, under what is no number of the library.
TEST_F(ALine, RefusesADeliveryOfWhatIsNoNumber) {
    AddAlarm("seven", "2");
    AddAlarm("8");
    AddDelivery("seven", 0, "a");
    Run();
    EXPECT_THAT(Noted("seven"), ElementsAre("a 0"));
    EXPECT_THAT(calls, ElementsAre("8 to b", "8 to a", "8 to c"));
}

// A line feed would begin a line of the library's trace.
TEST_F(ALine, HandsOverNoControlCharacters) {
    Route(2, {});
    Execute("DELETE FROM Host_RoutePagers");
    Route(2, {"a"});
    AddAlarm("7", "0", "ops\n10:00:00\tMessage transfered!");
    std::string group;
    forwarded = [&group](const Alarm& alarm, const Delivery& delivery) {
        group = delivery.group + "|" + alarm.server;
    };
    Execute("UPDATE AlarmLog SET server = 'a\n\r\x1B\x7F' || 'b'");
    Run();
    EXPECT_EQ("ops 10:00:00 Message transfered!|a    b", group);
    Restart();
    EXPECT_THAT(calls, IsEmpty());  // it knows the event again
}

}  // namespace
}  // namespace host
