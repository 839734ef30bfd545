// What the operator hears of the ends of pages.
#include "host/node/page_ends.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "host/pages/page_owner.h"
#include "host/store/tables/sends.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using Outcome = TracedPage::Outcome;

class Ends : public ServiceTest {
 protected:
    Ends() {
        AddPager("duty");
        AddAlarm("7", "2");
        WriteEvent(7, "duty", 2);
        ends.emplace(engine, Encoding::kLatin1, log);
    }

    void Sent(Outcome outcome) {
        Send send;
        send.at = kNow;
        send.alarm = "7";
        send.pager = "duty";
        send.outcome = outcome;
        RecordSend(connection, send);
    }
    // What a look tells.
    std::string Look() {
        said.str("");
        ends->Mark();
        ends->Look();
        return said.str();
    }

    Connection engine{database};
    OperatorLog log{said, true};
    std::optional<PageEnds> ends;
};

TEST_F(Ends, AreNotToldOfAPageThatGoesOn) {
    RewriteEvent(7, "duty", 2, 1);
    EXPECT_EQ("", Look());
    EXPECT_THAT(ends->Counts(), IsEmpty());
}

TEST_F(Ends, TellOnceOfAPageThatIsGivenUp) {
    Sent(Outcome::kNotSent);
    RewriteEvent(7, "duty", 3, 6);
    EXPECT_EQ(
        "<3>error: page of alarm 7 to \"duty\": given up: its tries are used up, and none got "
        "through\n",
        Look());
    EXPECT_EQ("", Look());
    EXPECT_THAT(ends->Counts(), ElementsAre(Pair("undelivered", 1)));
}

TEST_F(Ends, TellOfAPageThatNobodyAcknowledged) {
    Sent(Outcome::kSent);
    Sent(Outcome::kNotSent);
    RewriteEvent(7, "duty", 3, 6);
    EXPECT_EQ(
        "<4>warning: page of alarm 7 to \"duty\": ended: it was sent, and nobody acknowledged\n",
        Look());
    EXPECT_THAT(ends->Counts(), ElementsAre(Pair("unacknowledged", 1)));
}

TEST_F(Ends, TellOfAPageThatIsDone) {
    Sent(Outcome::kSent);
    RewriteEvent(7, "duty", 4, 0);
    EXPECT_EQ("<6>page of alarm 7 to \"duty\": done\n", Look());
}

TEST_F(Ends, TellWhoAcknowledgedAndWhatEndedByIt) {
    AcknowledgeAlarm(connection, 7, kNow, "maria");
    OpenTable(database, kEvents).Delete("WHERE AlarmFwd_PagerEvents.AlmLogID  = 7");
    EXPECT_EQ(
        "<6>alarm 7 (ops): acknowledged by maria\n"
        "<6>page of alarm 7 to \"duty\": taken out: the alarm was acknowledged\n",
        Look());
    EXPECT_EQ("", Look());
}

TEST_F(Ends, TellOfAnAcknowledgementByAnotherProgram) {
    Execute("UPDATE AlarmLog SET alarmack = '1'");
    EXPECT_EQ("<6>alarm 7 (ops): acknowledged by another program\n", Look());
}

TEST_F(Ends, AreNotToldOfWhatWasBeforeTheEngine) {
    RewriteEvent(7, "duty", 3, 6);
    AcknowledgeAlarm(connection, 7, kNow, "maria");
    ends.emplace(engine, Encoding::kLatin1, log);
    EXPECT_EQ("", Look());
}

// The trace is read between mark and look: what ends behind the mark isn't in it yet.
TEST_F(Ends, WaitForTheTraceBehindTheMark) {
    ends->Mark();
    Sent(Outcome::kSent);
    RewriteEvent(7, "duty", 4, 0);
    ends->Look();
    EXPECT_EQ("", said.str());
    EXPECT_EQ("<6>page of alarm 7 to \"duty\": done\n", Look());
}

// An earlier page under the same key has nothing to do with it.
TEST_F(Ends, CountOnlySendingsOfThisPage) {
    Sent(Outcome::kSent);
    RewriteEvent(7, "duty", 4, 0);
    Look();
    sleep(60);
    DeleteEvent(7, "duty");
    WriteEvent(7, "duty", 2);
    RewriteEvent(7, "duty", 3, 6);
    EXPECT_EQ("<3>error: page of alarm 7 to \"duty\": given up: its tries are used up\n", Look());
}

TEST_F(Ends, TellTheWordOfWhoGaveAPageUp) {
    GiveUpPage(connection, {"7", "ops", "duty"}, kCancelled, "a drill");
    EXPECT_THAT(Look(), ::testing::HasSubstr(": a drill\n"));
}

// Pages that wait for a line wait for who tells, too.
TEST_F(Ends, AreToldInPortionsWhereManyComeAtOnce) {
    Execute(
        "WITH RECURSIVE numbers(n) AS (SELECT 1001 UNION ALL SELECT n + 1 FROM numbers"
        " WHERE n < 1600) INSERT INTO Host_History (at, change, alarm, alarm_group, pager, state,"
        " tries) SELECT 978948000, change, n, 'ops', 'duty', '2', '0' FROM numbers"
        " CROSS JOIN (SELECT 'written' AS change UNION SELECT 'cancelled') AS changes"
        " ORDER BY n, change DESC");
    const auto lines = [](const std::string& text) {
        return std::count(text.begin(), text.end(), '\n');
    };
    EXPECT_EQ(500, lines(Look()));
    EXPECT_TRUE(ends->HaveMark());
    EXPECT_EQ(100, lines(Look()));
    EXPECT_FALSE(ends->HaveMark());
}

TEST_F(Ends, AreToldAtOnceAtTheVeryEnd) {
    RewriteEvent(7, "duty", 3, 6);
    ends->Mark();
    EXPECT_TRUE(ends->LookAtAll());
    EXPECT_FALSE(ends->LookAtAll());
}

// --- Of two nodes one tells, and the other goes on behind it.

TEST_F(Ends, AreToldByWhoGoesOnForOneThatIsGone) {
    const int64_t told = ends->Seen();
    RewriteEvent(7, "duty", 3, 6);
    ends->Skip();  // while the other lived
    ends->GoOnBehind(told);
    EXPECT_NE("", Look());
    EXPECT_EQ("", Look()) << "once";
}

TEST_F(Ends, AreNotToldAgainThatTheOneThatIsGoneHasTold) {
    RewriteEvent(7, "duty", 3, 6);
    EXPECT_NE("", Look());
    const int64_t told = ends->Seen();
    PageEnds next(engine, Encoding::kLatin1, log);
    next.GoOnBehind(told);
    next.Mark();
    EXPECT_FALSE(next.Look());
}

TEST_F(Ends, AreNotToldOfAllThatEverWasWhereNobodyHasToldAny) {
    RewriteEvent(7, "duty", 3, 6);
    ends->Skip();
    ends->GoOnBehind(0);
    EXPECT_EQ("", Look());
}

}  // namespace
}  // namespace host
