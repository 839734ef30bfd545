// Alarms that monitoring raises, raises again and withdraws; people who acknowledge.
#include "host/alarms/raising.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/alarms/incoming.h"
#include "host/node/intake.h"
#include "host/pages/alarm_story.h"
#include "host/pages/history.h"
#include "host/pages/page_words.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/sends.h"
#include "host/store/tables/states.h"
#include "host/store/tables/trail.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Raising : public ServiceTest {
 protected:
    Raised RaiseNow(const std::string& text, const std::string& key = "disk", time_t now = kNow,
                    KeyUse use = KeyUse::kAgainAndAgain) {
        WriteTransaction transaction(connection);
        Raised raised = Raise(connection, {"ops/1", "2", "web1", text, "icinga", key}, now, use);
        transaction.Commit();
        return raised;
    }
    std::optional<std::string> WithdrawNow(const std::string& key = "disk",
                                           time_t now = kNow + 60) {
        WriteTransaction transaction(connection);
        auto number = WithdrawBy(connection, AlarmKey{"icinga", key}, {"icinga", now});
        transaction.Commit();
        return number;
    }
    Acknowledged AcknowledgeNow(const std::string& number, const Doer& doer) {
        WriteTransaction transaction(connection);
        const Acknowledged how = AcknowledgeBy(connection, std::stoll(number), doer);
        transaction.Commit();
        return how;
    }
    std::vector<std::string> Story(const std::string& number) {
        std::vector<std::string> story;
        for (const StoryLine& line : TellAlarm(connection, *FindAlarm(connection, number))) {
            story.push_back((line.pager.empty() ? "" : line.pager + ": ") + line.what +
                            (line.more.empty() ? "" : " (" + line.more + ")"));
        }
        return story;
    }
    void PageWasSent(const std::string& alarm, const std::string& pager) {
        Send send;
        send.at = kNow + 30;
        send.alarm = alarm;
        send.pager = pager;
        send.outcome = TracedPage::Outcome::kSent;
        RecordSend(connection, send);
    }
    void PageResolved() { Execute("INSERT INTO Host_Settings VALUES ('page resolved', '1')"); }
};

TEST_F(Raising, OfAKeyThatIsOpenCountsAndRenewsTheText) {
    const Raised first = RaiseNow("90 % full");
    const Raised again = RaiseNow("95 % full", "disk", kNow + 10);
    EXPECT_TRUE(first.is_new);
    EXPECT_FALSE(again.is_new);
    EXPECT_EQ(first.number, again.number);
    const std::optional<Alarm> alarm = FindAlarm(connection, first.number);
    ASSERT_TRUE(alarm);
    EXPECT_EQ("95 % full", alarm->details);
    EXPECT_EQ(2, alarm->times_raised);
    EXPECT_EQ(kNow + 10, alarm->raised_last);
    EXPECT_EQ(kNow, alarm->raised);
    EXPECT_THAT(Rows("count(*) || '' FROM AlarmLog"), ElementsAre("1"));
}

TEST_F(Raising, WithoutAKeyIsAlwaysNew) {
    EXPECT_NE(RaiseNow("x", "").number, RaiseNow("x", "").number);
    EXPECT_EQ(std::nullopt, WithdrawNow(""));
}

TEST_F(Raising, OfAnotherKeyOrSourceIsAnotherAlarm) {
    RaiseNow("x");
    EXPECT_TRUE(RaiseNow("x", "Disk").is_new);
    WriteTransaction transaction(connection);
    EXPECT_TRUE(Raise(connection, {"ops/1", "2", "", "x", "nagios", "disk"}, kNow).is_new);
    transaction.Commit();
}

TEST_F(Raising, TwiceAtOnceIsRefusedByTheDatabase) {
    RaiseNow("x");
    WriteTransaction transaction(connection);
    EXPECT_THROW(host::AddAlarm(connection, {"ops/1", "2", "", "x", "icinga", "disk"}, kNow),
                 StoreError);
}

TEST_F(Raising, AgainPagesNobodyTwice) {
    AddPager("duty");
    Execute("INSERT INTO Host_Routes VALUES (1, '*', '')");
    Execute("INSERT INTO Host_RoutePagers VALUES (1, 0, 'duty')");
    Intake intake(Encoding::kLatin1, log);
    const std::string number = RaiseNow("x").number;
    intake.Run(connection);
    RaiseNow("y");
    intake.Run(connection);
    EXPECT_EQ(1U, DeliveriesOf(connection, number).size());
    AcknowledgeNow(number, {"maria", kNow + 20});
    RaiseNow("z");
    intake.Run(connection);
    EXPECT_EQ("1", StateOf(number)) << "acknowledged until it is withdrawn";
    EXPECT_EQ(1U, DeliveriesOf(connection, number).size());
}

TEST_F(Raising, AfterTheWithdrawalIsNew) {
    const std::string number = RaiseNow("x").number;
    EXPECT_EQ(number, WithdrawNow());
    EXPECT_EQ(std::nullopt, WithdrawNow());
    const Raised next = RaiseNow("x", "disk", kNow + 120);
    EXPECT_TRUE(next.is_new);
    EXPECT_NE(number, next.number);
    EXPECT_EQ("1", StateOf(number));
    EXPECT_EQ("0", StateOf(next.number));
}

TEST_F(Raising, OfAKeyThatIsUsedOnceIsNeverNewAgain) {
    const std::string number = RaiseNow("x", "a1", kNow, KeyUse::kOnce).number;
    WithdrawNow("a1");
    const Raised late = RaiseNow("late", "a1", kNow + 90, KeyUse::kOnce);
    EXPECT_FALSE(late.is_new);
    EXPECT_EQ(number, late.number);
    EXPECT_EQ("x", FindAlarm(connection, number)->details) << "it is over";
}

// --- What is over.

TEST_F(Raising, AndWithdrawingEndsThePagesAsResolved) {
    const std::string number = RaiseNow("x").number;
    WriteEvent(std::stoi(number), "duty", 2, 0, "ops/1");
    WithdrawNow();
    // So the library does, of an alarm that needs no paging.
    OpenTable(database, "AlarmFwd_PagerEvents")
        .Delete("WHERE AlarmFwd_PagerEvents.AlmLogID  = " + number);
    ASSERT_EQ(1U, PagesOf(connection, number).size());
    EXPECT_EQ(PageEnd::kResolved, PagesOf(connection, number)[0].end);
    EXPECT_STREQ("resolved", host::StateOf(PagesOf(connection, number)[0]));
    EXPECT_EQ("resolved", host::StateOf(*FindAlarm(connection, number)));
    EXPECT_THAT(Story(number),
                ElementsAre("raised", "duty: queued", "duty: taken out: the alarm is resolved",
                            "resolved (by icinga)"));
}

TEST_F(Raising, AndWithdrawingLeavesAnAcknowledgementAsItIs) {
    const std::string number = RaiseNow("x").number;
    WriteEvent(std::stoi(number), "duty", 2, 0, "ops/1");
    EXPECT_EQ(Acknowledged::kNow, AcknowledgeNow(number, {"maria", kNow + 20, "on my way"}));
    OpenTable(database, "AlarmFwd_PagerEvents")
        .Delete("WHERE AlarmFwd_PagerEvents.AlmLogID  = " + number);
    WithdrawNow();
    EXPECT_EQ(PageEnd::kAcknowledged, PagesOf(connection, number)[0].end);
    const std::vector<std::string> story = Story(number);
    EXPECT_THAT(story, ::testing::Contains("acknowledged (by maria: on my way)"));
    EXPECT_EQ("resolved (by icinga)", story.back());
}

TEST_F(Raising, AndWithdrawingByNumberNeedsNoKey) {
    const std::string number = RaiseNow("x", "").number;
    WriteTransaction transaction(connection);
    EXPECT_EQ(Withdrawn::kNow, WithdrawBy(connection, number, {"maria", kNow}));
    EXPECT_EQ(Withdrawn::kBefore, WithdrawBy(connection, number, {"maria", kNow}));
    EXPECT_EQ(Withdrawn::kUnknown, WithdrawBy(connection, "12", {"maria", kNow}));
    transaction.Commit();
}

TEST_F(Raising, TellsNobodyOfTheEndUnlessTheSiteSaysSo) {
    const std::string number = RaiseNow("x").number;
    PageWasSent(number, "duty");
    WithdrawNow();
    EXPECT_THAT(Rows("count(*) || '' FROM AlarmLog"), ElementsAre("1"));
}

TEST_F(Raising, TellsThoseOfTheEndWhoHadAPage) {
    PageResolved();
    const std::string number = RaiseNow("Disk full").number;
    PageWasSent(number, "duty");
    PageWasSent(number, "duty");
    PageWasSent(number, "boss");
    WithdrawNow();
    EXPECT_THAT(Rows("details || ', ' || AlarmLog.severity || ', ' || pagerstate || ', ' || pager"
                     " FROM AlarmLog JOIN Host_Deliveries ON alarm = alarmlogID ORDER BY pager"),
                ElementsAre("resolved: Disk full, 4, 2, boss", "resolved: Disk full, 4, 2, duty"));
    EXPECT_THAT(NewAlarms(connection), IsEmpty()) << "no route is asked";
}

TEST_F(Raising, TellsTheEndOnce) {
    PageResolved();
    const std::string number = RaiseNow("x").number;
    PageWasSent(number, "duty");
    WithdrawNow();
    const std::string last =
        Rows("alarmlogID FROM AlarmLog WHERE last_word_of = '" + number + "'").at(0);
    EndLastWords(connection, kNow + 90);
    EXPECT_EQ("2", StateOf(last));
    PageWasSent(last, "duty");
    EndLastWords(connection, kNow + 90);
    EXPECT_EQ("1", StateOf(last));
}

// --- Who did it.

TEST_F(Raising, LeavesATrailOfWhoDidWhat) {
    const std::string number = RaiseNow("x").number;
    AcknowledgeNow(number, {"maria", kNow + 20, "on my way"});
    AcknowledgeNow(number, {"eve", kNow + 30});
    WithdrawNow();
    const std::vector<TrailEntry> trail = TrailOf(connection, number);
    ASSERT_EQ(2U, trail.size());
    EXPECT_EQ("maria", trail[0].who);
    EXPECT_EQ("acknowledged", trail[0].what);
    EXPECT_EQ("on my way", trail[0].note);
    EXPECT_EQ(kNow + 20, trail[0].at);
    EXPECT_EQ("icinga", trail[1].who);
    EXPECT_EQ("withdrawn", trail[1].what);
    ForgetHistory(connection, kNow + 40);
    EXPECT_EQ(1U, TrailOf(connection, number).size());
}

// --- What an alarm has to be.

struct Refused {
    const char* because;
    IncomingAlarm alarm;
    const char* field;
};

IncomingAlarm With(std::string IncomingAlarm::*field, const std::string& text) {
    IncomingAlarm alarm;
    alarm.text = "x";
    alarm.key = "k";
    alarm.*field = text;
    return alarm;
}

TEST(Incoming, IsRefusedWithTheFieldThatIsWrong) {
    const std::vector<Refused> cases = {
        {"it says nothing", With(&IncomingAlarm::text, ""), "text"},
        {"it says only blanks", With(&IncomingAlarm::text, " \r\n"), "text"},
        {"the text is endless", With(&IncomingAlarm::text, std::string(kLongestText + 1, 'x')),
         "text"},
        {"the group is endless", With(&IncomingAlarm::group, std::string(kLongestText + 1, 'x')),
         "group"},
        {"the server is endless", With(&IncomingAlarm::server, std::string(kLongestText + 1, 'x')),
         "server"},
        {"the severity is none", With(&IncomingAlarm::severity, "bad"), "severity"},
        {"the key is endless", With(&IncomingAlarm::key, std::string(kLongestKey + 1, 'x')), "key"},
        {"the key has a control character", With(&IncomingAlarm::key, "a\x1b"), "key"},
        {"the source is endless",
         With(&IncomingAlarm::source, std::string(kLongestSource + 1, 'x')), "source"},
    };
    for (const Refused& refused : cases) {
        try {
            Checked(refused.alarm, Encoding::kLatin1);
            ADD_FAILURE() << refused.because;
        } catch (const BadField& error) {
            EXPECT_EQ(refused.field, error.Field()) << refused.because;
            EXPECT_STRNE("", error.what());
        }
    }
}

TEST(Incoming, HasTheLongestKeyThatThereIs) {
    IncomingAlarm alarm = With(&IncomingAlarm::key, std::string(kLongestKey, 'k'));
    alarm.source = std::string(kLongestSource, 's');
    const NewAlarm checked = Checked(alarm, Encoding::kLatin1);
    EXPECT_EQ(alarm.key, checked.key);
    EXPECT_EQ(alarm.source, checked.source);
    EXPECT_EQ("1", checked.severity);
    EXPECT_EQ("ALARM/000", checked.group);
}

TEST(Incoming, NeedsAKeyToBeToldByOne) {
    EXPECT_THROW(CheckedKey("icinga", ""), BadField);
    EXPECT_EQ("disk", CheckedKey("icinga", "disk").key);
    IncomingAlarm alarm;
    alarm.text = "x";
    alarm.source = "icinga";
    EXPECT_THROW(Checked(alarm, Encoding::kLatin1), BadField);
}

}  // namespace
}  // namespace host
