// What became of an alarm.
#include "host/pages/alarm_story.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/pages/page_owner.h"
#include "host/pages/page_words.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/sends.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;

class AlarmStory : public ServiceTest {
 protected:
    AlarmStory() {
        AddPager("duty");
        AddAlarm("7", "2");
    }

    // "duty: sent (24 s)", line by line.
    std::vector<std::string> Tell() {
        std::vector<std::string> lines;
        for (const StoryLine& line : TellAlarm(connection, *FindAlarm(connection, "7"))) {
            lines.push_back((line.pager.empty() ? "" : line.pager + ": ") + line.what +
                            (line.more.empty() ? "" : " (" + line.more + ")"));
        }
        return lines;
    }
    void AddSend(TracedPage::Outcome outcome, const char* reason = "", const char* port = "") {
        Send send;
        send.at = kNow;
        send.seconds = 24;
        send.alarm = "7";
        send.pager = "duty";
        send.outcome = outcome;
        send.reason = reason;
        send.port = port;
        RecordSend(connection, send);
    }
};

TEST_F(AlarmStory, BeginsWithItsRaising) {
    EXPECT_THAT(Tell(), ElementsAre("raised"));
}

TEST_F(AlarmStory, TellsEverySendingAndTheEnd) {
    WriteEvent(7, "duty", 2);
    AddSend(TracedPage::Outcome::kNotSent, "busy");
    AddSend(TracedPage::Outcome::kOutsideHours);
    AddSend(TracedPage::Outcome::kSent);
    RewriteEvent(7, "duty", 4, 0);
    EXPECT_THAT(Tell(),
                ElementsAre("raised", "duty: queued", "duty: not sent (24 s: busy)",
                            "duty: outside hours (24 s)", "duty: sent (24 s)", "duty: done"));
}

TEST_F(AlarmStory, TellsFromWhichLineAPageWasTakenAndWhy) {
    AddDelivery("7", 0, "duty");
    WriteEvent(7, "duty", 2);
    AddSend(TracedPage::Outcome::kNotSent, "no modem", "north");
    Execute("UPDATE AlarmFwd_PagerEvents SET line = 'north'");
    TakePage(connection, {"7", "ops", "duty"}, "its modem doesn't answer");
    EXPECT_THAT(Tell(),
                ElementsAre("raised", "duty: queued", "duty: not sent (24 s, north: no modem)",
                            "duty: moved (from north: its modem doesn't answer)"));
}

TEST_F(AlarmStory, TellsWhoWasNeverPaged) {
    PlanDeliveries(connection, *FindAlarm(connection, "7"), {"duty", "nobody", "late"});
    const std::vector<Delivery> deliveries = OpenDeliveries(connection);
    NoteAnswer(connection, deliveries.at(1), kPagerUnknown);
    NoteAnswer(connection, deliveries.at(2), kWasAcknowledged);
    EXPECT_THAT(Tell(), ElementsAre("raised", "duty: waits to be queued",
                                    "nobody: not queued (there is no such pager)",
                                    "late: not queued (the alarm was acknowledged before)"));
}

TEST_F(AlarmStory, TellsTheAcknowledgement) {
    AcknowledgeAlarm(connection, 7, kNow + 60);
    EXPECT_THAT(Tell(), ElementsAre("raised", "acknowledged"));
}

TEST_F(AlarmStory, TellsWhoAcknowledged) {
    AcknowledgeAlarm(connection, 7, kNow + 60, "maria");
    EXPECT_THAT(Tell(), ElementsAre("raised", "acknowledged (by maria)"));
}

TEST_F(AlarmStory, LeavesTheNoteOfAnotherProgramAlone) {
    Execute("UPDATE AlarmLog SET alarmnote = 'see the plan'");
    AcknowledgeAlarm(connection, 7, kNow + 60, "maria");
    EXPECT_THAT(Rows("alarmnote FROM AlarmLog"), ElementsAre("see the plan"));
    EXPECT_THAT(Tell(), ElementsAre("raised", "acknowledged"));
}

TEST_F(AlarmStory, TellsThatNoRouteLedAnywhere) {
    PlanDeliveries(connection, *FindAlarm(connection, "7"), {});
    EXPECT_THAT(Tell(), ElementsAre("raised", "off limit (no route leads to a pager)"));
}

TEST_F(AlarmStory, NamesThePortThatWasUsedAndSaysWhatNothingConfirms) {
    WriteEvent(7, "duty", 2);
    AddSend(TracedPage::Outcome::kDialled, "", "COM 2");
    AddSend(TracedPage::Outcome::kNotSent, "busy", "COM 1");
    EXPECT_THAT(Tell(), ElementsAre("raised", "duty: queued",
                                    "duty: dialled (24 s, COM 2; nothing confirms it)",
                                    "duty: not sent (24 s, COM 1: busy)"));
}

// --- Its state in a word.

class AlarmState : public AlarmStory {
 protected:
    std::string State() { return OutcomeOf(connection, *FindAlarm(connection, "7")); }
    void SetState(const char* state) {
        connection.Execute("UPDATE AlarmLog SET pagerstate = '" + std::string(state) + "'");
    }
};

TEST_F(AlarmState, IsThatOfTheLog) {
    EXPECT_EQ("being paged", State());
    SetState("4");
    EXPECT_EQ("done", State());
    connection.Execute("UPDATE AlarmLog SET alarmack = '1'");
    EXPECT_EQ("acknowledged", State());
}

TEST_F(AlarmState, TellsTheKindsOfOffLimitApart) {
    SetState("3");
    EXPECT_EQ("no route", State());
    WriteEvent(7, "duty", 2);
    AddSend(TracedPage::Outcome::kNotSent, "busy");
    RewriteEvent(7, "duty", 3, 3);
    EXPECT_EQ("undelivered", State());
    for (const char* pager : {"tech", "chief"}) {
        WriteEvent(7, pager, 2);
        RewriteEvent(7, pager, 3, 3);
    }
    EXPECT_EQ("undelivered, off limit", State()) << "each kind once";
    WriteEvent(7, "night", 2);
    RewriteEvent(7, "night", 4, 3);
    EXPECT_EQ("undelivered, off limit", State()) << "one that is done has no part in it";
}

TEST_F(AlarmState, OffLimitWithoutAPageIsNoMoreThanThat) {
    PlanDeliveries(connection, *FindAlarm(connection, "7"), {"nobody"});
    SetState("3");
    EXPECT_EQ("off limit", State());
}

}  // namespace
}  // namespace host
