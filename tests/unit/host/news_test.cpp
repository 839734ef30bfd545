// What is said to the notices, and when it is over.
#include "host/node/news.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/store/tables/alarm_keys.h"
#include "host/store/tables/sends.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Shows what it is told.
class KeepingRunner : public CommandRunner {
 public:
    std::string Start(const std::vector<std::string>&, const std::string& input,
                      std::time_t) override {
        const auto event = nlohmann::json::parse(input);
        told.push_back((event["over"].get<bool>() ? "over: " : "") +
                       event["kind"].get<std::string>() + ": " + event["text"].get<std::string>());
        about.clear();
        for (const char* object : {"alarm", "pager", "line", "node"}) {
            about += event.contains(object) ? event[object].get<std::string>() + " " : "- ";
        }
        return {};
    }
    std::optional<std::string> Look(std::time_t) override { return ""; }

    std::vector<std::string> told;
    std::string about;  // the latest: alarm, pager, line and node
};

class SomeNews : public ServiceTest {
 protected:
    SomeNews() {
        notices.SetCommand({"tell"});
        Execute(
            "INSERT INTO AlarmFwd_COMProperties (Description, \"Select\", SMS1Dial)"
            " VALUES ('north', '1', 'ATDT1');"
            "INSERT INTO Host_Lines (line, health, pid) VALUES ('north', 'well', 7);"
            "INSERT INTO AlarmFwd_PagerSetting (description, pgtype) VALUES ('duty', '4')");
        Pass(1);
    }
    // What was told in the meantime.
    std::vector<std::string> Pass(std::time_t seconds) {
        for (; seconds > 0; --seconds) {
            news.Look(connection, ++now);
            notices.Look(now);
        }
        return std::exchange(runner.told, {});
    }
    // The same, without a look at the site.
    std::vector<std::string> Told(std::time_t seconds) {
        for (; seconds > 0; --seconds) {
            notices.Look(++now);
        }
        return std::exchange(runner.told, {});
    }
    void SetLine(const std::string& what) { Execute("UPDATE Host_Lines SET " + what); }
    void SetAlarm(const std::string& what) { Execute("UPDATE AlarmLog SET " + what); }

    PageStory EndedPage(PageEnd end, Reached reached) const {
        PageStory page;
        page.alarm = "1";
        page.group = "ops";
        page.pager = "duty";
        page.end = end;
        page.reached = reached;
        return page;
    }

    std::time_t now = kNow;
    KeepingRunner& runner = *new KeepingRunner;  // owned by the notices
    Notices notices{{"alpha", "site.db"}, log, std::unique_ptr<CommandRunner>(&runner)};
    News news{Encoding::kLatin1, notices};
};

TEST_F(SomeNews, AreALineThatIsSickAndBack) {
    SetLine("health = 'sick', reason = 'its modem doesn''t answer'");
    EXPECT_THAT(Pass(60),
                ElementsAre("line-sick: line \"north\" is sick: its modem doesn't answer"));
    EXPECT_EQ("- - north - ", runner.about);
    SetLine("health = 'well'");
    EXPECT_THAT(Pass(60), ElementsAre("over: line-sick: line \"north\" is back"));
    EXPECT_EQ("- - north - ", runner.about);
}

TEST_F(SomeNews, AreALineThatFellSickJustBeforeTheEnd) {
    SetLine("health = 'sick', reason = 'its modem doesn''t answer'");
    news.LookLast(connection, ++now);
    notices.Look(now);
    EXPECT_THAT(runner.told,
                ElementsAre("line-sick: line \"north\" is sick: its modem doesn't answer"));
}

TEST_F(SomeNews, AreNotWhatWasSoBefore) {
    SetLine("health = 'sick'");
    AddAlarm("1", "3");
    News later{Encoding::kLatin1, notices};
    for (int second = 0; second < 60; ++second) {
        later.Look(connection, ++now);
        notices.Look(now);
    }
    EXPECT_THAT(runner.told, IsEmpty());
    SetLine("health = 'well'");
    later.Look(connection, now += 10);
    notices.Look(now);
    EXPECT_THAT(runner.told, ElementsAre("over: line-sick: line \"north\" is back"));
}

TEST_F(SomeNews, AreAPageThatWasGivenUp) {
    AddAlarm("1", "2");
    for (const auto& [end, reached] : {std::pair{PageEnd::kOffLimit, Reached::kSent},
                                       {PageEnd::kOffLimit, Reached::kDialled},
                                       {PageEnd::kDone, Reached::kSent},
                                       {PageEnd::kByHand, Reached::kNothing},
                                       {PageEnd::kAcknowledged, Reached::kNothing},
                                       {PageEnd::kOffLimit, Reached::kUnknown}}) {
        news.PageEnded(EndedPage(end, reached), now);
    }
    EXPECT_THAT(Pass(10), IsEmpty());
    news.PageEnded(EndedPage(PageEnd::kOffLimit, Reached::kNothing), now);
    EXPECT_THAT(Pass(10), ElementsAre("page-given-up: page of alarm 1 (ops) to \"duty\": given up, "
                                      "none of its tries got through"));
    EXPECT_EQ("1 duty - - ", runner.about);
    SetAlarm("alarmack = '1'");
    EXPECT_THAT(Pass(10), ElementsAre("over: page-given-up: alarm 1, whose page to \"duty\" was "
                                      "given up, was acknowledged"));
    EXPECT_EQ("1 duty - - ", runner.about);
    EXPECT_THAT(Pass(10), IsEmpty());
}

TEST_F(SomeNews, AreAnAlarmThatNobodyGot) {
    AddAlarm("1", "2");
    AddAlarm("2", "2");
    WriteEvent(1, "duty", 2);
    RewriteEvent(1, "duty", 3, 5);
    Execute("UPDATE AlarmLog SET pagerstate = '3'");
    EXPECT_THAT(
        Pass(60),
        ElementsAre("alarm-unheard: alarm 1 (ops) reached nobody: no page of it got through",
                    "alarm-unheard: alarm 2 (ops) reached nobody: it led to no pager"));
    SetAlarm("alarmack = '1' WHERE alarmlogID = '1'");
    SetAlarm("pagerstate = '2' WHERE alarmlogID = '2'");
    EXPECT_EQ("2 - - - ", runner.about);
    EXPECT_THAT(Pass(60), ElementsAre("over: alarm-unheard: alarm 1 (ops) was acknowledged",
                                      "over: alarm-unheard: alarm 2 (ops) is being paged again"));
}

TEST_F(SomeNews, AreTheSameAlarmAgainWhereNobodyGotItAgain) {
    AddAlarm("2", "3");
    Pass(60);
    SetAlarm("pagerstate = '2' WHERE alarmlogID = '2'");
    Pass(60);
    SetAlarm("pagerstate = '3' WHERE alarmlogID = '2'");
    EXPECT_THAT(Pass(4000),
                ElementsAre("alarm-unheard: alarm 2 (ops) reached nobody: it led to no pager"));
}

TEST_F(SomeNews, AreLookedForEveryFewSeconds) {
    Pass(20);
    news.Look(connection, now);
    SetLine("health = 'sick', reason = 'its modem doesn''t answer'");
    news.Look(connection, now + 1);
    notices.Look(now + 1);
    EXPECT_THAT(runner.told, IsEmpty());
}

TEST_F(SomeNews, AreNotAnAlarmThatSomebodyGot) {
    AddAlarm("1", "2");
    WriteEvent(1, "duty", 2);
    RewriteEvent(1, "duty", 3, 5);
    Execute(
        "UPDATE AlarmLog SET pagerstate = '3';"
        "INSERT INTO Host_Sends (at, seconds, alarm, pager, port, outcome, result, reason)"
        " VALUES (" +
        std::to_string(now) + ", 30, '1', 'duty', 'north', 'sent', 0, '')");
    AddAlarm("2", "2");
    WriteEvent(2, "duty", 2);
    RewriteEvent(2, "duty", 4, 5);
    Execute("UPDATE AlarmLog SET pagerstate = '4' WHERE alarmlogID = '2'");
    EXPECT_THAT(Pass(60), IsEmpty());
}

TEST_F(SomeNews, AreAPagerWhosePagesNoLineCanHave) {
    AddAlarm("1", "2");
    Execute(
        "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since)"
        " VALUES ('1', 0, 'ops', 'duty', 0)");
    EXPECT_THAT(Pass(60), IsEmpty());
    SetLine("paused = 1");
    EXPECT_THAT(Pass(25), IsEmpty()) << "it may pass";
    EXPECT_THAT(Pass(20),
                ElementsAre("pager-without-line: pages to \"duty\" wait: no line can have them"));
    EXPECT_EQ("- duty - - ", runner.about);
    EXPECT_THAT(Pass(60), IsEmpty()) << "told once";
    SetLine("paused = 0");
    EXPECT_THAT(Pass(10),
                ElementsAre("over: pager-without-line: no page to \"duty\" waits for want "
                            "of a line any more"));
    EXPECT_EQ("- duty - - ", runner.about);
}

TEST_F(SomeNews, AreANodeThatIsGoneAndWhatMayHaveLeftIt) {
    TakenOver taken;
    taken.pages = 2;
    taken.may_have_left = {{"7", "ops", "duty"}};
    news.NodeIsGone("beta", taken, true, now);
    EXPECT_THAT(Told(1), ElementsAre("node-gone: node \"beta\" is gone; 2 page(s) of its lines "
                                     "wait for others"));
    EXPECT_EQ("- - - beta ", runner.about);
    EXPECT_THAT(Told(1),
                ElementsAre("outcome-unknown: page of alarm 7 to \"duty\": may have been sent "
                            "when its node died; pagerfwd page resend, or done"));
    EXPECT_EQ("7 duty - - ", runner.about);
    EXPECT_THAT(Pass(60),
                ElementsAre("over: node-gone: node \"beta\" was removed",
                            "over: outcome-unknown: page of alarm 7 to \"duty\": somebody has "
                            "said what it came to"));
    EXPECT_EQ("7 duty - - ", runner.about);
}

TEST_F(SomeNews, AreADatabaseThatDoesNotWork) {
    news.DatabaseWorked("site.db: locked", now);
    news.DatabaseWorked("", now + 10);
    news.DatabaseWorked("site.db: locked", now + 20);
    news.DatabaseWorked("site.db: locked", now + 49);
    EXPECT_THAT(Pass(1), IsEmpty());
    news.DatabaseWorked("site.db: gone", now + 50);
    news.DatabaseWorked("site.db: gone", now + 51);
    EXPECT_THAT(Pass(3), ElementsAre("database-away: no page can leave: site.db: gone"));
    news.DatabaseWorked("", now + 60);
    news.DatabaseWorked("", now + 61);
    EXPECT_THAT(Pass(3), ElementsAre("over: database-away: the database works again"));
}

TEST_F(SomeNews, AreADiskThatIsFull) {
    news.DiskIs(false, "site.db", now);
    news.DiskIs(true, "site.db", now);
    news.DiskIs(true, "site.db", now);
    EXPECT_THAT(Pass(3), ElementsAre("disk-full: the disk of site.db is full"));
    news.DiskIs(false, "site.db", now);
    EXPECT_THAT(Pass(3), ElementsAre("over: disk-full: the disk of site.db has room again"));
}

// --- What became of alarms with a key.

class Answers : public SomeNews {
 protected:
    Answers() {
        news.TellAnswers(true);
        AddAlarm("7", "2");
        SetAlarm("alarm_source = 'icinga', alarm_key = 'web1!disk'");
        Pass(10);
    }
    void RecordSent() {
        Send send;
        send.at = now;
        send.alarm = "7";
        send.pager = "duty";
        send.outcome = TracedPage::Outcome::kSent;
        RecordSend(connection, send);
    }
};

TEST_F(Answers, TellWhoHasAcknowledgedOnce) {
    AcknowledgeAlarm(connection, 7, now, "maria");
    EXPECT_THAT(Pass(10), ElementsAre("acknowledged: alarm 7 (ops) was acknowledged by maria"));
    EXPECT_THAT(Pass(10), IsEmpty());
}

TEST_F(Answers, TellThatTheFirstPageGotThrough) {
    RecordSent();
    EXPECT_THAT(Pass(10), ElementsAre("delivered: alarm 7 (ops) got through to \"duty\""));
    RecordSent();
    EXPECT_THAT(Pass(10), IsEmpty());
}

TEST_F(Answers, AreOnlyForWhoAsks) {
    news.TellAnswers(false);
    RecordSent();
    AcknowledgeAlarm(connection, 7, now, "maria");
    EXPECT_THAT(Pass(10), IsEmpty());
}

TEST_F(Answers, AreOfAlarmsWithAKeyAlone) {
    SetAlarm("alarm_key = ''");
    RecordSent();
    AcknowledgeAlarm(connection, 7, now, "maria");
    EXPECT_THAT(Pass(10), IsEmpty());
}

TEST_F(Answers, AreNotToldAgainAfterAStart) {
    RecordSent();
    AcknowledgeAlarm(connection, 7, now, "maria");
    Pass(10);
    News next(Encoding::kLatin1, notices);
    next.TellAnswers(true);
    next.Look(connection, now += 10);
    RecordSent();
    next.Look(connection, now += 10);
    notices.Look(now);
    EXPECT_THAT(runner.told, IsEmpty());
}

TEST_F(Answers, TellNothingOfWhatMonitoringHasEndedItself) {
    {
        WriteTransaction transaction(connection);
        Withdraw(connection, "7", now);
        transaction.Commit();
    }
    EXPECT_THAT(Pass(10), IsEmpty());
}

}  // namespace
}  // namespace host
