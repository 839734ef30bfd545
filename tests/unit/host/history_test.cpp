// What has become of every page.
#include "host/pages/history.h"
#include "host/store/tables/history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/schema.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// --- The rules, on changes alone. Instants in minutes.

constexpr int64_t kDelay = 45;

struct Change {
    int minute;
    const char* change;
    const char* state;
    int64_t tries;
};

PageStory Tell(const std::vector<Change>& changes, PageEnd removed = PageEnd::kDropped) {
    std::vector<PageChange> all;
    for (const Change& change : changes) {
        all.push_back({time_t{change.minute} * 60, change.change, change.state, change.tries});
    }
    return TellStory(all, kDelay, removed);
}

// The row that a page has while it is rewritten.
Change TakenOut(int minute) {
    return {minute, kTakenOut, "2", 0};
}

TEST(Story, OfAPageThatIsQueued) {
    const PageStory story = Tell({{10, kWritten, "2", 0}});
    EXPECT_EQ(PageEnd::kPending, story.end);
    EXPECT_EQ(10 * 60, story.queued);
    EXPECT_EQ(10 * 60, story.due);
    EXPECT_EQ(0, story.ended);
    EXPECT_EQ(0, story.tries);
}

TEST(Story, OfAFirstFailure) {
    const PageStory story = Tell({{10, kWritten, "2", 0}, TakenOut(11), {11, kWritten, "2", 0}});
    EXPECT_EQ(15 * 60, story.due);  // from the old due time on
    EXPECT_EQ(10 * 60, story.queued);
    EXPECT_EQ(0, story.tries);
}

TEST(Story, OfATryThatCounts) {
    const PageStory story = Tell({{10, kWritten, "2", 0}, TakenOut(11), {11, kWritten, "2", 1}});
    EXPECT_EQ((10 + 45) * 60, story.due);
    EXPECT_EQ(1, story.tries);
}

TEST(Story, OfFailuresThatAlternate) {
    const PageStory story = Tell({{10, kWritten, "2", 0},
                                  {11, kWritten, "2", 0},
                                  {16, kWritten, "2", 1},
                                  {61, kWritten, "2", 1},
                                  {66, kWritten, "2", 2}});
    EXPECT_EQ((10 + 5 + 45 + 5 + 45) * 60, story.due);
    EXPECT_EQ(2, story.tries);
}

TEST(Story, OfARestart) {
    const PageStory story = Tell({{10, kWritten, "2", 0},
                                  {11, kWritten, "2", 1},
                                  {20, kEngineStarts, "", 0},
                                  TakenOut(20),
                                  {20, kWritten, "2", 1}});
    EXPECT_EQ(20 * 60, story.due);
    EXPECT_EQ(10 * 60, story.queued);
    EXPECT_EQ(1, story.tries);
}

TEST(Story, OfARestartOfAnotherLine) {
    const std::vector<PageChange> changes = {
        {600, kWritten, "2", 0, 1, "north"},
        {1200, kEngineStarts, "", 0, 2, "south"},
        {1260, kWritten, "2", 0, 3, "north"},
    };
    EXPECT_EQ(15 * 60, TellStory(changes, kDelay, PageEnd::kDropped).due);
    EXPECT_EQ("north", TellStory(changes, kDelay, PageEnd::kDropped).line);
}

TEST(Story, OfAPageThatIsMoved) {
    const std::vector<Change> changes = {
        {10, kWritten, "2", 0}, {11, kWritten, "2", 1}, {30, kMoved, "2", 1}};
    EXPECT_EQ(PageEnd::kPending, Tell(changes).end);
    EXPECT_EQ(30 * 60, Tell(changes).due);
    EXPECT_EQ(0, Tell(changes).tries);
    std::vector<Change> then = changes;
    then.push_back({32, kWritten, "2", 0});
    EXPECT_EQ(32 * 60, Tell(then).due);
    then.push_back({33, kWritten, "2", 0});
    EXPECT_EQ(37 * 60, Tell(then).due);
    EXPECT_EQ(10 * 60, Tell(then).queued);
}

TEST(Story, OfAPageThatIsGivenUpByHand) {
    EXPECT_EQ(PageEnd::kByHand, Tell({{10, kWritten, "2", 1}, {12, kCancelled, "3", 1}}).end);
    const PageStory never_queued = Tell({{12, kCancelled, "3", 0}});
    EXPECT_EQ(PageEnd::kByHand, never_queued.end);
    EXPECT_EQ(12 * 60, never_queued.queued);
}

TEST(Story, GoesOnBehindARestart) {
    EXPECT_EQ(25 * 60, Tell({{10, kWritten, "2", 1},
                             {20, kEngineStarts, "", 0},
                             {20, kWritten, "2", 1},
                             {21, kWritten, "2", 1}})
                           .due);
}

TEST(Story, OfADeathWhileTheRowWasRewritten) {
    const PageStory story = Tell({{10, kWritten, "2", 0},
                                  {11, kTakenOut, "2", 0},
                                  {20, kEngineStarts, "", 0},
                                  {20, kBroughtBack, "2", 0},
                                  {20, kTakenOut, "2", 0},
                                  {21, kWritten, "2", 0}});
    EXPECT_EQ(PageEnd::kPending, story.end);
    EXPECT_EQ(21 * 60, story.due);
}

TEST(Story, OfAPageThatIsDone) {
    const PageStory story = Tell({{10, kWritten, "2", 0},
                                  {11, kWritten, "2", 0},
                                  {16, kWritten, "4", 0},
                                  {70, kRemoved, "4", 0}});
    EXPECT_EQ(PageEnd::kDone, story.end);
    EXPECT_EQ(16 * 60, story.ended);
    EXPECT_EQ(1, story.tries);  // the library doesn't count the one that was confirmed
}

TEST(Story, OfAPageThatIsGivenUp) {
    const PageStory story =
        Tell({{10, kWritten, "2", 5}, {11, kWritten, "3", 6}, {70, kRemoved, "3", 6}});
    EXPECT_EQ(PageEnd::kOffLimit, story.end);
    EXPECT_EQ(11 * 60, story.ended);
    EXPECT_EQ(6, story.tries);
    EXPECT_EQ(PageEnd::kOffLimit, Tell({{10, kWritten, "2", 0}, {12, kChanged, "3", 0}}).end);
}

TEST(Story, OfAPageWhoseAlarmIsAcknowledged) {
    const std::vector<Change> changes = {{10, kWritten, "2", 1}, {12, kRemoved, "2", 1}};
    EXPECT_EQ(PageEnd::kAcknowledged, Tell(changes, PageEnd::kAcknowledged).end);
    EXPECT_EQ(12 * 60, Tell(changes, PageEnd::kAcknowledged).ended);
    EXPECT_EQ(1, Tell(changes, PageEnd::kAcknowledged).tries);
    EXPECT_EQ(PageEnd::kAcknowledged, Tell({{10, kWritten, "2", 0}, {12, kWritten, "1", 0}}).end);
}

TEST(Story, OfAPageThatIsOnTheLineWhenItsAlarmIsAcknowledged) {
    std::vector<Change> changes = {
        {10, kWritten, "2", 0}, {12, kRemoved, "2", 0}, {12, kWritten, "2", 1}};
    EXPECT_EQ(PageEnd::kPending, Tell(changes, PageEnd::kAcknowledged).end);
    EXPECT_EQ(10 * 60, Tell(changes, PageEnd::kAcknowledged).queued);
    changes.push_back({13, kRemoved, "2", 1});
    EXPECT_EQ(PageEnd::kAcknowledged, Tell(changes, PageEnd::kAcknowledged).end);
    EXPECT_EQ(13 * 60, Tell(changes, PageEnd::kAcknowledged).ended);
    EXPECT_EQ(10 * 60, Tell(changes, PageEnd::kAcknowledged).queued);
}

TEST(Story, OfAPageWhoseAlarmHasGone) {
    EXPECT_EQ(PageEnd::kDropped, Tell({{10, kWritten, "2", 1}, {12, kRemoved, "2", 1}}).end);
}

TEST(Story, OfAnEndedPageOutlivesTheAcknowledgement) {
    EXPECT_EQ(PageEnd::kDone,
              Tell({{10, kWritten, "2", 0}, {11, kWritten, "4", 0}, {12, kRemoved, "4", 0}},
                   PageEnd::kAcknowledged)
                  .end);
}

TEST(Story, BeginsAgainWhenThePageIsQueuedAgain) {
    const PageStory story =
        Tell({{10, kWritten, "2", 0}, {11, kWritten, "4", 0}, {30, kWritten, "2", 0}});
    EXPECT_EQ(PageEnd::kPending, story.end);
    EXPECT_EQ(30 * 60, story.queued);
    EXPECT_EQ(30 * 60, story.due);
    EXPECT_EQ(0, story.ended);
    EXPECT_EQ(0, story.tries);
}

// --- In the tables.

class TheHistory : public ServiceTest {
 protected:
    static void Later(int minutes) {
        pagersim::VirtualClock::Set(std::time(nullptr) + time_t{minutes} * 60);
    }

    // "7 duty"
    static std::vector<std::string> Names(const std::vector<PageStory>& stories) {
        std::vector<std::string> names;
        for (const PageStory& story : stories) {
            names.push_back(story.alarm + " " + story.pager);
        }
        return names;
    }
};

TEST_F(TheHistory, HasPendingPagesByAlarmInTheOrderOfQueueing) {
    WriteEvent(10, "duty", 2);
    WriteEvent(9, "night", 2);
    WriteEvent(9, "duty", 2);
    WriteEvent(9, "over", 3);
    EXPECT_THAT(Names(PendingPages(connection)), ElementsAre("9 night", "9 duty", "10 duty"));
}

TEST_F(TheHistory, HasThePagersRules) {
    AddPager("duty", 2, 30);
    WriteEvent(7, "duty", 2);
    WriteEvent(7, "unknown", 2);
    RewriteEvent(7, "duty", 2, 1);
    RewriteEvent(7, "unknown", 2, 1);
    const std::vector<PageStory> pages = PendingPages(connection);
    ASSERT_EQ(2U, pages.size());
    EXPECT_EQ(2, pages[0].retries);
    EXPECT_EQ(kNow + 30 * 60, pages[0].due);
    EXPECT_EQ(5, pages[1].retries);
    EXPECT_EQ(kNow + 45 * 60, pages[1].due);
}

TEST_F(TheHistory, KnowsWhereEnginesStarted) {
    AddPager("duty");
    NoteEngineStart(connection);
    WriteEvent(7, "duty", 2);
    Later(1);
    RewriteEvent(7, "duty", 2, 1);
    Later(1);
    NoteEngineStart(connection);
    RewriteEvent(7, "duty", 2, 1);
    Later(1);
    WriteEvent(8, "duty", 2);
    const std::vector<PageStory> pages = PendingPages(connection);
    ASSERT_EQ(2U, pages.size());
    EXPECT_EQ(kNow, pages[0].queued);
    EXPECT_EQ(kNow + 120, pages[0].due);
    EXPECT_EQ(kNow + 180, pages[1].due);
}

TEST_F(TheHistory, TellsAcknowledgedFromDropped) {
    AddAlarm("7", "2");
    AcknowledgeAlarm(connection, 7, kNow);
    for (const int32_t alarm : {7, 8}) {
        WriteEvent(alarm, "duty", 2);
        OpenTable(database, "AlarmFwd_PagerEvents")
            .Delete("WHERE AlarmFwd_PagerEvents.AlmLogID  = " + std::to_string(alarm));
    }
    const std::vector<PageStory> pages = EndedPages(connection, 10);
    ASSERT_EQ(2U, pages.size());
    EXPECT_EQ(PageEnd::kAcknowledged, pages[0].end);
    EXPECT_EQ(PageEnd::kDropped, pages[1].end);
}

TEST_F(TheHistory, HasTheLastThatHaveEnded) {
    for (const int32_t alarm : {7, 8, 9}) {
        WriteEvent(alarm, "duty", 2);
    }
    RewriteEvent(9, "duty", 4, 0);
    RewriteEvent(7, "duty", 3, 6);
    EXPECT_THAT(Names(EndedPages(connection, 10)), ElementsAre("9 duty", "7 duty"));
    EXPECT_THAT(Names(EndedPages(connection, 1)), ElementsAre("7 duty"));
    EXPECT_THAT(EndedPages(connection, 0), IsEmpty());
}

TEST_F(TheHistory, HasEveryPageOfAnAlarm) {
    WriteEvent(7, "duty", 2);
    WriteEvent(8, "duty", 2);
    WriteEvent(7, "night", 2);
    RewriteEvent(7, "duty", 4, 0);
    EXPECT_THAT(Names(PagesOf(connection, "7")), ElementsAre("7 duty", "7 night"));
}

// --- Forgetting.

TEST_F(TheHistory, ForgetsPagesThatEndedLongAgo) {
    WriteEvent(7, "duty", 2);
    WriteEvent(8, "duty", 2);
    WriteEvent(9, "duty", 2);
    RewriteEvent(7, "duty", 4, 0);  // long ago
    Later(60);
    RewriteEvent(8, "duty", 4, 0);  // not so long ago; 9 is still pending
    const time_t before = kNow + 60;
    EXPECT_EQ(3, ForgetHistory(connection, before));
    EXPECT_THAT(PagesOf(connection, "7"), IsEmpty());
    const std::vector<PageStory> ended = EndedPages(connection, 10);
    ASSERT_THAT(Names(ended), ElementsAre("8 duty"));
    EXPECT_EQ(kNow, ended[0].queued);  // its story is whole
    EXPECT_THAT(Names(PendingPages(connection)), ElementsAre("9 duty"));
    EXPECT_EQ(kNow, PendingPages(connection)[0].due);
    EXPECT_EQ(0, ForgetHistory(connection, before));
}

TEST_F(TheHistory, KeepsTheStartsThatExplainPendingPages) {
    NoteEngineStart(connection);
    WriteEvent(7, "duty", 2);
    Later(10);
    NoteEngineStart(connection);
    RewriteEvent(7, "duty", 2, 0);
    Later(60);
    ForgetHistory(connection, kNow + 60 * 60);
    EXPECT_EQ(kNow + 10 * 60, PendingPages(connection).at(0).due);
    EXPECT_THAT(Rows("at FROM Host_History WHERE alarm = ''"),
                ElementsAre(std::to_string(kNow + 600)));
}

TEST_F(TheHistory, ForgetsDeliveriesWithIt) {
    AddDelivery("5", 0, "duty", "-1");
    AddDelivery("6", 0, "duty", "-1");
    AddDelivery("7", 0, "duty", "1");
    AddDelivery("8", 0, "duty", "1");
    AddDelivery("9", 0, "duty");
    AddAlarm("5", "3", "ops", kNow + 1);
    AddAlarm("6", "3", "ops", kNow);
    WriteEvent(8, "duty", 2);
    ForgetHistory(connection, kNow + 1);
    EXPECT_THAT(Rows("alarm FROM Host_Deliveries ORDER BY alarm"), ElementsAre("5", "8", "9"));
}

}  // namespace
}  // namespace host
