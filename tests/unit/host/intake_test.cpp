// New alarms, taken up, given to a line, and handed over to a library that is made up.
#include "host/node/intake.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>

#include "host/line/hand_over.h"
#include "host/pages/page_owner.h"
#include "tests/unit/host/another_program.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct ProcessDied {};

class AnIntake : public ServiceTest {
 protected:
    AnIntake() {
        Execute("INSERT INTO Host_Routes VALUES (1, 'ops', ''), (2, 'o*', '')");
        Route(1, {"b", "a"});
        Route(2, {"a", "c"});
        for (const char* pager : {"a", "b", "c"}) {
            AddPager(pager);
        }
    }

    void Route(int64_t number, const std::vector<std::string>& pagers) {
        int64_t place = 0;
        for (const std::string& pager : pagers) {
            Statement(connection, "INSERT INTO Host_RoutePagers VALUES (?, ?, ?)")
                .Bind(number)
                .Bind(place++)
                .Bind(pager)
                .Run();
        }
    }

    // The library: what it is called with, "7 to b", and the row that it writes when it says yes.
    int32_t Forward(const Alarm& alarm, const Delivery& delivery) {
        EXPECT_EQ("2", StateOf(alarm.number));
        calls.push_back(delivery.alarm + " to " + delivery.pager);
        on_the_line.pager = delivery.pager.substr(0, kTracedTextKept);
        on_the_line.alarm = delivery.group.substr(0, kTracedTextKept);
        if (forwarded) {
            forwarded(alarm, delivery);
        }
        if (dies_before_call == calls.size()) {
            throw ProcessDied();
        }
        const int32_t answer = answers.count(delivery.pager) != 0 ? answers[delivery.pager] : 1;
        if (answer == 1) {
            WriteEvent(std::stoi(alarm.number), delivery.pager.c_str(), 2, 0,
                       delivery.group.c_str());
        }
        if (dies_after_call == calls.size()) {
            throw ProcessDied();
        }
        return answer;
    }

    void Run() {
        intake->Run(connection);
        for (const Delivery& delivery : OpenDeliveries(connection)) {
            GiveToLine(connection, delivery, "north");
        }
        size_t before = 0;
        do {
            before = calls.size();
            hand_over->Run(connection);
            hand_over->Saw(on_the_line);
        } while (calls.size() > before);
    }

    // The process that comes next.
    void Restart() {
        dies_before_call = dies_after_call = 0;
        calls.clear();
        Make();
        Run();
    }
    void Make() {
        intake.emplace(Encoding::kLatin1, log);
        hand_over.emplace(
            "north", Encoding::kLatin1,
            [this](const Alarm& alarm, const Delivery& delivery) {
                return Forward(alarm, delivery);
            },
            log);
    }

    // "b 1": the pagers of alarm 7 and the answers noted, "b -" where there is none yet.
    std::vector<std::string> Noted(const std::string& alarm = "7") {
        return Rows("pager || ' ' || coalesce(answer, '-') FROM Host_Deliveries WHERE alarm = '" +
                    alarm + "' ORDER BY place");
    }

    std::optional<Intake> intake;
    std::optional<HandOver> hand_over;
    TracedPage on_the_line;  // the page that was handed over last
    std::vector<std::string> calls;
    std::function<void(const Alarm&, const Delivery&)> forwarded;
    std::map<std::string, int32_t> answers;
    size_t dies_before_call = 0;
    size_t dies_after_call = 0;

    void SetUp() override { Make(); }
};

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

// Numbers are texts in the table, and 10 would stand before 9 there.
TEST_F(AnIntake, HandsOverByNumberAndWithinAnAlarmByPlace) {
    AddAlarm("10");
    AddAlarm("9");
    Run();
    EXPECT_THAT(calls, ElementsAre("9 to b", "9 to a", "9 to c", "10 to b", "10 to a", "10 to c"));
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
        " ('7', 'J\xC3\xBC/1', 'Major', 'a' || char(13) || 'b', '2 \xE2\x80\x93 3')");
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to c"));
    EXPECT_THAT(Rows("severity || '|' || alarm_group || '|' || server || '|' || details"
                     " FROM AlarmLog"),
                ElementsAre("2|J\xFC/1|a b|2 - 3"));
}

// --- Processes that die.

TEST_F(AnIntake, GoesOnAfterADeathBeforeTheCall) {
    AddAlarm("7");
    dies_before_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a -", "c -"));
    Restart();
    EXPECT_THAT(calls, ElementsAre("7 to a", "7 to c"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 1", "c 1"));
}

TEST_F(AnIntake, CallsNotAgainAfterADeathBetweenAnswerAndNote) {
    AddAlarm("7");
    dies_after_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a -", "c -"));
    Restart();
    EXPECT_THAT(calls, ElementsAre("7 to c"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a 3", "c 1"));
}

TEST_F(AnIntake, CallsNotAgainWhenThePageHasEndedBeforeTheNote) {
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

TEST_F(AnIntake, StopsAtAnAcknowledgementBeforeAPagersTurn) {
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

TEST_F(AnIntake, StopsAtAStateOfOneThatAnotherProgramHasWritten) {
    AddAlarm("7");
    dies_before_call = 2;
    EXPECT_THROW(Run(), ProcessDied);
    Execute("UPDATE AlarmLog SET pagerstate = '1'");
    Run();
    EXPECT_EQ(2U, calls.size());
    EXPECT_EQ("1", StateOf("7"));
}

// --- Answers.

TEST_F(AnIntake, TellsOfAPagerThatIsUnknownAndGoesOn) {
    Execute("DELETE FROM AlarmFwd_PagerSetting WHERE description = 'a'");
    answers["a"] = -1;
    AddAlarm("7");
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to a", "7 to c"));
    EXPECT_THAT(Noted(), ElementsAre("b 1", "a -1", "c 1"));
    EXPECT_THAT(said.str(), HasSubstr("<3>error: alarm 7 (ops) to \"a\": there is no such pager"));
    EXPECT_EQ("2", StateOf("7"));
}

TEST_F(AnIntake, GivesUpAnAlarmThatWentToNobody) {
    Execute("DELETE FROM AlarmFwd_PagerSetting");
    answers = {{"a", -1}, {"b", -1}, {"c", -1}};
    AddAlarm("7");
    Run();
    EXPECT_EQ(3U, calls.size());
    EXPECT_EQ("3", StateOf("7"));
}

TEST_F(AnIntake, TriesAgainAfterTenSecondsWhatTheLibraryCouldNotRead) {
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

TEST_F(AnIntake, TriesAgainWhenTheLibraryDoesNotSeeTheAlarm) {
    answers["b"] = 0;
    AddAlarm("7");
    Run();
    EXPECT_THAT(Noted(), ElementsAre("b -", "a 1", "c 1"));
}

TEST_F(AnIntake, HandsOverTheOthersWhileOneWaits) {
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
TEST_F(AnIntake, HandsOverTheNextPageWhenTheOneBeforeIsOnTheLine) {
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

TEST_F(AnIntake, HandsOverNothingThatBelongsToAnotherLine) {
    AddAlarm("7");
    intake->Run(connection);
    GiveToLine(connection, OpenDeliveries(connection).at(1), "south");
    Run();
    EXPECT_THAT(calls, ElementsAre("7 to b", "7 to c"));
}

TEST_F(AnIntake, HandsOverSevereAlarmsFirstAndOldOnesBeforeNew) {
    AddAlarm("7");
    AddAlarm("8");
    AddAlarm("9");
    Execute("UPDATE AlarmLog SET severity = '3' WHERE alarmlogID = '7'");
    Execute("UPDATE AlarmLog SET severity = '5' WHERE alarmlogID = '8'");
    Run();
    EXPECT_THAT(calls, ElementsAre("9 to b", "9 to a", "9 to c", "7 to b", "7 to a", "7 to c",
                                   "8 to b", "8 to a", "8 to c"));
}

TEST_F(AnIntake, LeavesAnAlarmThatHasGone) {
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

TEST_F(AnIntake, KeepsTheEndOfAnAlarmWhoseLastPagerIsUnknown) {
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

TEST_F(AnIntake, PagesAgainForAnAlarmWhoseOtherPagesHaveEnded) {
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
TEST_F(AnIntake, MendsTheStateThatAFoldHasWrittenMeanwhile) {
    AddAlarm("7");
    Execute(
        "CREATE TRIGGER Fold AFTER INSERT ON AlarmFwd_PagerEvents WHEN NEW.PagerDescr = 'c'"
        " BEGIN UPDATE AlarmLog SET pagerstate = '4'; END");
    Run();
    EXPECT_EQ("2", StateOf("7"));
}

// --- Routes and numbers.

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

TEST_F(AnIntake, HandsTextsOverAsTheyAre) {
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

TEST_F(AnIntake, HandsOverWhatIsBesideADeliveryThatIsTooLarge) {
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
TEST_F(AnIntake, SaysOnceThatADeliveryHasAnAlarmThatIsTooLarge) {
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
TEST_F(AnIntake, RefusesADeliveryOfWhatIsNoNumber) {
    AddAlarm("seven", "2");
    AddAlarm("8");
    AddDelivery("seven", 0, "a");
    Run();
    EXPECT_THAT(Noted("seven"), ElementsAre("a 0"));
    EXPECT_THAT(calls, ElementsAre("8 to b", "8 to a", "8 to c"));
}

// A line feed would begin a line of the library's trace.
TEST_F(AnIntake, HandsOverNoControlCharacters) {
    Route(2, {});
    Execute("DELETE FROM Host_RoutePagers");
    Route(2, {"a"});
    AddAlarm("7", "0", "ops\n10:00:00\tMessage transfered!");
    std::string group;
    forwarded = [&group](const Alarm& alarm, const Delivery& delivery) {
        group = delivery.group + "|" + alarm.server;
    };
    Execute("UPDATE AlarmLog SET server = 'a' || char(10, 13, 27, 127) || 'b'");
    Run();
    EXPECT_EQ("ops 10:00:00 Message transfered!|a    b", group);
    Restart();
    EXPECT_THAT(calls, IsEmpty());  // it knows the event again
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
