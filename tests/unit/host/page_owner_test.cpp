// Whose a page is, and how it changes hands.
#include "host/pages/page_owner.h"
#include "host/store/tables/events.h"
#include "host/store/tables/history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/pages/history.h"
#include "host/store/line_view.h"
#include "host/store/schema.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

const PageKey kDuty = {"7", "ops", "duty"};
const PageKey kNight = {"7", "ops", "night"};

class AnOwner : public ServiceTest {
 protected:
    AnOwner() {
        AddPager("duty", 2, 10);  // three tries on a line
        AddPager("night", 2, 10);
        AddAlarm("7", "2");
        AddDelivery("7", 0, "duty");
        AddDelivery("7", 1, "night");
    }
    ~AnOwner() override { SetLineView({}); }

    Delivery At(size_t place) { return DeliveriesOf(connection, "7").at(place); }

    // The line's library gets its page, and writes it so.
    void HandOver(const char* line, size_t place, int32_t tries = 0) {
        const Delivery delivery = At(place);
        SetLineView(LineView{line});
        WriteEvent(7, delivery.pager.c_str(), 2, tries);
        SetLineView({});
        NoteAnswer(connection, delivery, kQueued);
    }
    void Give(const char* line, size_t place, int32_t tries = 0) {
        EXPECT_TRUE(GiveToLine(connection, At(place), line));
        HandOver(line, place, tries);
    }

    std::vector<std::string> Events() {
        return Rows("PagerDescr || ' ' || line || ' ' || PagerState FROM AlarmFwd_PagerEvents");
    }
    std::vector<std::string> Deliveries() {
        return Rows(
            "pager || ' ' || line || ' ' || coalesce(CAST(answer AS TEXT), '-') FROM "
            "Host_Deliveries"
            " ORDER BY place");
    }
    // The last change of the history.
    std::string LastChange() {
        return Rows(
                   "change || ' ' || pager || ' ' || line || ' ' || state || '/' || tries || ' ' ||"
                   " note FROM Host_History ORDER BY row_id DESC LIMIT 1")
            .at(0);
    }
    PageStory Story() { return PagesOf(connection, "7").at(0); }
};

// --- Given.

TEST_F(AnOwner, IsTheLineThatADeliveryIsGivenTo) {
    EXPECT_EQ("", LineOf(connection, kDuty));
    EXPECT_TRUE(GiveToLine(connection, At(0), "north"));
    EXPECT_EQ("north", LineOf(connection, kDuty));
    HandOver("north", 0);
    EXPECT_EQ("north", LineOf(connection, kDuty));
    EXPECT_THAT(CountByLine(connection), ElementsAre(Pair("north", 1)));
}

TEST_F(AnOwner, IsOnlyOne) {
    const Delivery seen = At(0);
    EXPECT_TRUE(GiveToLine(connection, seen, "north"));
    EXPECT_FALSE(GiveToLine(connection, seen, "south"));
    EXPECT_EQ("north", At(0).line);
    HandOver("north", 0);
    EXPECT_FALSE(GiveToLine(connection, seen, "south"));
}

TEST_F(AnOwner, HasPagesThatItHasStillToHandOver) {
    Give("north", 0);
    EXPECT_TRUE(GiveToLine(connection, At(1), "north"));
    EXPECT_THAT(CountByLine(connection), ElementsAre(Pair("north", 2)));
}

// --- Taken.

TEST_F(AnOwner, LosesAPageThatIsTaken) {
    Give("north", 0, 1);
    EXPECT_EQ(Taken::kFree, TakePage(connection, kDuty, "the modem is silent"));
    EXPECT_THAT(Events(), IsEmpty());
    EXPECT_THAT(Deliveries(), ElementsAre("duty  -", "night  -"));
    EXPECT_EQ("moved duty north 2/1 the modem is silent", LastChange());
    EXPECT_EQ(1, At(0).tries);
    EXPECT_FALSE(WasEverQueued(connection, At(0))) << "the next line is to have it anew";
    EXPECT_EQ("2", StateOf("7"));
    EXPECT_EQ(Taken::kNone, TakePage(connection, kDuty, "again"));
}

TEST_F(AnOwner, LosesAPageThatItHasNotHandedOver) {
    GiveToLine(connection, At(0), "north");
    EXPECT_EQ(Taken::kFree, TakePage(connection, kDuty, "the modem is silent"));
    EXPECT_EQ("", At(0).line);
    EXPECT_THAT(Rows("change FROM Host_History"), IsEmpty());
}

// Its process was killed while the library wrote the row anew.
TEST_F(AnOwner, LosesAPageThatIsHidden) {
    Give("north", 0);
    Execute("UPDATE AlarmFwd_PagerEvents SET hidden_by = 1");
    EXPECT_EQ(Taken::kFree, TakePage(connection, kDuty, "killed"));
    EXPECT_THAT(OpenTable(database, kEvents).ReadAll("PagerDescr"), IsEmpty());
}

TEST_F(AnOwner, LosesAPageThatNoDeliveryTellsOf) {
    WriteEvent(7, "another", 2);
    EXPECT_EQ(Taken::kFree, TakePage(connection, {"7", "ops", "another"}, "it is of no line"));
    EXPECT_THAT(Deliveries(), ElementsAre("duty  -", "night  -", "another  -"));
}

TEST_F(AnOwner, LosesForGoodWhatNeedsNoPaging) {
    Give("north", 0);
    AcknowledgeAlarm(connection, 7, kNow);
    EXPECT_EQ(Taken::kEnded, TakePage(connection, kDuty, "the modem is silent"));
    EXPECT_THAT(Events(), IsEmpty());
    EXPECT_EQ("duty north 1", Deliveries().at(0));
    EXPECT_EQ(PageEnd::kAcknowledged, Story().end);
}

TEST_F(AnOwner, OfAMovedPageIsTheNextLine) {
    Give("north", 0, 2);
    pagersim::VirtualClock::Set(kNow + 600);
    TakePage(connection, kDuty, "the modem is silent");
    EXPECT_EQ(0, Story().tries);
    EXPECT_EQ(kNow + 600, Story().due);
    EXPECT_EQ(PageEnd::kPending, Story().end);
    pagersim::VirtualClock::Set(kNow + 660);
    Give("south", 0);
    EXPECT_EQ("south", Story().line);
    EXPECT_EQ(kNow, Story().queued);
    EXPECT_EQ(kNow + 660, Story().due);
    EXPECT_EQ(0, Story().tries);
}

TEST_F(AnOwner, IsNobodyWhileAMovedPageWaits) {
    Give("north", 0);
    TakePage(connection, kDuty, "the modem is silent");
    const std::vector<PageStory> pending = PendingPages(connection);
    ASSERT_EQ(2U, pending.size());
    EXPECT_TRUE(pending[0].waits);
    EXPECT_EQ("", pending[0].line);
    EXPECT_EQ(kNow, pending[0].queued);
    EXPECT_EQ("night", pending[1].pager);
    EXPECT_EQ(kNow, pending[1].queued) << "since its alarm was raised";
    EXPECT_THAT(EndedPages(connection, 10), IsEmpty());
    EXPECT_EQ(0, ForgetHistory(connection, kNow + 3600));
}

TEST_F(AnOwner, IsNobodyOnceAMovedPageEnds) {
    Give("north", 0);
    TakePage(connection, kDuty, "the modem is silent");
    AcknowledgeAlarm(connection, 7, kNow + 60);
    NoteAnswer(connection, At(0), kWasAcknowledged);
    EXPECT_EQ(PageEnd::kAcknowledged, Story().end);
}

// --- Tries over all lines.

TEST_F(AnOwner, IsFoundUntilAPageWasTriedTwiceAsOftenAsOnOneLine) {
    Give("north", 0, 2);
    EXPECT_EQ(Taken::kFree, TakePage(connection, kDuty, "sick"));
    Give("south", 0, 2);
    EXPECT_EQ(Taken::kFree, TakePage(connection, kDuty, "sick"));
    Give("west", 0, 1);
    EXPECT_THAT(OverspentPages(connection), IsEmpty());
    SetLineView(LineView{"west"});
    RewriteEvent(7, "duty", 2, 2);
    SetLineView({});
    EXPECT_THAT(OverspentPages(connection), ElementsAre(Pair("west", SizeIs(1))));
    EXPECT_EQ(Taken::kGivenUp, TakePage(connection, kDuty, "sick"));
    EXPECT_EQ("changed duty west 3/2 tried twice as often as its pager allows, by several lines",
              LastChange());
    EXPECT_EQ(PageEnd::kOffLimit, Story().end);
    EXPECT_EQ("2", StateOf("7")) << "the other page is still owed";
}

TEST_F(AnOwner, OfAPageOnItsFirstLineIsNotAsked) {
    Give("north", 0, 6);
    EXPECT_THAT(OverspentPages(connection), IsEmpty());
    EXPECT_EQ(Taken::kFree, TakePage(connection, kDuty, "sick"));
}

// --- All of a line.

TEST_F(AnOwner, KeepsOnlyBoundPagesWhenItIsSick) {
    AddPager("bound");
    Execute("UPDATE AlarmFwd_PagerSetting SET comport = 'north' WHERE description = 'bound'");
    AddDelivery("7", 2, "bound");
    Give("north", 0);
    Give("north", 2);
    GiveToLine(connection, At(1), "north");
    const TakenPages taken = TakeUnboundPages(connection, "north", "no dial tone");
    EXPECT_EQ(2, taken.free);
    EXPECT_EQ(0, taken.given_up);
    EXPECT_EQ(1, taken.bound);
    EXPECT_THAT(Events(), ElementsAre("bound north 2"));
    EXPECT_THAT(CountByLine(connection), ElementsAre(Pair("north", 1)));
}

TEST_F(AnOwner, ThatIsSickTellsFreePagesFromThoseThatAreGivenUp) {
    for (const char* line : {"north", "south"}) {
        Give(line, 0, 2);
        TakePage(connection, kDuty, "sick");
    }
    Give("west", 0, 2);
    Give("west", 1);
    const TakenPages taken = TakeUnboundPages(connection, "west", "no dial tone");
    EXPECT_EQ(1, taken.free) << "the other";
    EXPECT_EQ(1, taken.given_up);
    EXPECT_EQ(0, taken.bound);
}

TEST_F(AnOwner, LosesNoPageOfAnotherLine) {
    Give("north", 0);
    Give("south", 1);
    EXPECT_EQ(1, TakeUnboundPages(connection, "north", "sick").free);
    EXPECT_THAT(Events(), ElementsAre("night south 2"));
}

// --- Pages of before there were lines.

TEST_F(AnOwner, AdoptsAPageWithItsTries) {
    WriteEvent(7, "duty", 2, 1);
    ASSERT_EQ(1U, OwnerlessPages(connection).size());
    AdoptPage(connection, kDuty, "north");
    EXPECT_THAT(OwnerlessPages(connection), IsEmpty());
    EXPECT_THAT(Rows("line || PagerRetries FROM AlarmFwd_PagerEvents"), ElementsAre("north1"));
    EXPECT_EQ("north", At(0).line);
    pagersim::VirtualClock::Set(kNow + 60);
    NoteEngineStart(connection, "north");
    SetLineView(LineView{"north"});
    RewriteEvent(7, "duty", 2, 1);
    EXPECT_EQ(kNow + 60, Story().due);
    EXPECT_EQ(1, Story().tries);
}

TEST_F(AnOwner, MakesOnlyItsOwnPagesDueWhenItStarts) {
    Give("north", 0);
    pagersim::VirtualClock::Set(kNow + 60);
    NoteEngineStart(connection, "south");
    SetLineView(LineView{"north"});
    RewriteEvent(7, "duty", 2, 0);
    EXPECT_EQ(kNow + 300, Story().due);
}

// --- Given up and moved by hand.

TEST_F(AnOwner, LosesAPageThatIsGivenUp) {
    Give("north", 0);
    EXPECT_TRUE(GiveUpPage(connection, kDuty, kCancelled, "pump is off (anna)"));
    EXPECT_EQ("cancelled duty north 3/0 pump is off (anna)", LastChange());
    EXPECT_EQ(PageEnd::kByHand, Story().end);
    EXPECT_EQ("pump is off (anna)", Story().note);
    EXPECT_EQ("2", StateOf("7"));
    EXPECT_TRUE(GiveUpPage(connection, kNight, kCancelled, "too"));
    EXPECT_EQ("3", StateOf("7"));
    EXPECT_EQ("night  4", Deliveries().at(1));
    EXPECT_FALSE(GiveUpPage(connection, kNight, kCancelled, "too"));
    EXPECT_THAT(PendingPages(connection), IsEmpty());
}

TEST_F(AnOwner, LeavesTheAlarmAsItsOtherPagesHaveIt) {
    Give("north", 0);
    SetLineView(LineView{"north"});
    RewriteEvent(7, "duty", 4, 0);
    SetLineView({});
    GiveUpPage(connection, kNight, kCancelled, "too");
    EXPECT_EQ("4", StateOf("7"));
}

TEST_F(AnOwner, LeavesAnAcknowledgedAlarmAcknowledged) {
    Give("north", 0);
    AcknowledgeAlarm(connection, 7, kNow);
    GiveUpPage(connection, kDuty, kCancelled, "too");
    EXPECT_EQ("1", StateOf("7"));
}

TEST_F(AnOwner, BecomesTheLineThatSomebodyWants) {
    Give("north", 0, 2);
    TakePage(connection, kDuty, "sick");
    Give("south", 0, 5);
    EXPECT_TRUE(MovePage(connection, kDuty, "west", "nearer (anna)"));
    EXPECT_EQ("west", At(0).line);
    EXPECT_EQ(0, At(0).tries);
    EXPECT_EQ("moved duty south 2/5 nearer (anna)", LastChange());
    EXPECT_TRUE(MovePage(connection, kNight, "west", "nearer (anna)"));
    EXPECT_EQ("west", At(1).line);
    EXPECT_FALSE(MovePage(connection, {"7", "ops", "nobody"}, "west", ""));
}

}  // namespace
}  // namespace host
