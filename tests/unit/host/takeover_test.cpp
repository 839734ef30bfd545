// What becomes of the pages of a node that is gone.
#include "host/pages/takeover.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/pages/history.h"
#include "host/pages/page_owner.h"
#include "host/pages/page_words.h"
#include "host/store/line_view.h"
#include "host/store/tables/events.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr const char* kOnItsLine =
    "node \"north\" is gone; this page was on its line, and may have "
    "been sent";

class AGoneNode : public ServiceTest {
 protected:
    AGoneNode() {
        Execute("INSERT INTO AlarmFwd_COMProperties (Description, node) VALUES ('N', 'north')");
        for (const char* pager : {"duty", "night", "tech"}) {
            AddPager(pager, 2, 10);
        }
        AddAlarm("7", "2");
        north = TakeLease(connection, "north", "a process", std::chrono::seconds(0)).value();
        EXPECT_TRUE(ClaimLine(connection, "N", "north"));
        AddDelivery("7", 0, "duty");
        AddDelivery("7", 1, "night");
        AddDelivery("7", 2, "tech");
        // Of three pages two are with its library, and the third is still to be handed over.
        for (size_t place = 0; place < 3; ++place) {
            GiveToLine(connection, At(place), "N");
        }
        HandOver(0);
        HandOver(1);
    }
    ~AGoneNode() override { SetLineView({}); }

    Delivery At(size_t place) { return DeliveriesOf(connection, "7").at(place); }
    void HandOver(size_t place) {
        const Delivery delivery = At(place);
        SetLineView(LineView{"N"});
        WriteEvent(7, delivery.pager.c_str(), 2, 0);
        SetLineView({});
        NoteAnswer(connection, delivery, kQueued);
    }
    TakenOver Take() { return TakeOver(connection, "north", north.term).value(); }
    std::vector<std::string> Notes() {
        return Rows("pager || ': ' || note FROM Host_History WHERE note <> '' ORDER BY row_id");
    }
    std::vector<std::string> States() {
        std::vector<std::string> states;
        for (const PageStory& page : PendingPages(connection)) {
            states.push_back(page.pager + " " + host::StateOf(page));
        }
        return states;
    }
    void Ask() {
        WriteTransaction transaction(connection);
        WriteSetting(connection, "unknown_outcome", "ask");
        transaction.Commit();
    }

    Tenure north;
};

TEST_F(AGoneNode, LeavesItsPagesToOthers) {
    EXPECT_EQ(3, Take().pages);
    EXPECT_THAT(CountByLine(connection), IsEmpty());
    EXPECT_THAT(States(), ElementsAre("duty waiting", "night waiting", "tech waiting"));
    EXPECT_TRUE(GiveToLine(connection, At(0), "S"));
}

TEST_F(AGoneNode, IsTakenOverOnce) {
    Take();
    EXPECT_EQ(std::nullopt, TakeOver(connection, "north", north.term));
}

TEST_F(AGoneNode, MayNotWriteAnyMore) {
    Take();
    Tenure line = north;
    line.line = "N";
    Connection writer(database);
    writer.WriteAs(line);
    EXPECT_THROW(SetPageOnLine(writer, "N", {"7", "ops", "night"}), NotOurs);
    EXPECT_EQ("", NodeOfLine(connection, "N"));
}

TEST_F(AGoneNode, HasThePageNamedThatMayHaveLeft) {
    SetPageOnLine(connection, "N", {"7", "ops", "night"});
    const TakenOver taken = Take();
    ASSERT_EQ(1U, taken.may_have_left.size());
    EXPECT_EQ("night", taken.may_have_left[0].pager);
    EXPECT_THAT(Notes(),
                ElementsAre(std::string("night: ") + kOnItsLine, "duty: node \"north\" is gone"));
    EXPECT_THAT(States(), ElementsAre("duty waiting", "night waiting", "tech waiting"));
}

TEST_F(AGoneNode, HasNoPageNamedOfAnotherAlarm) {
    SetPageOnLine(connection, "N", {"8", "ops", "night"});
    EXPECT_THAT(Take().may_have_left, IsEmpty());
}

// Two local times of one hour in autumn: the trace doesn't tell which alarm it was.
TEST_F(AGoneNode, HasThePageNamedAlsoWhereItsAlarmIsntKnown) {
    SetPageOnLine(connection, "N", {"", "ops", "night"});
    EXPECT_EQ(1U, Take().may_have_left.size());
}

// It was never with the library.
TEST_F(AGoneNode, CannotHaveSentWhatItHasNotHandedOver) {
    SetPageOnLine(connection, "N", {"", "ops", "tech"});
    EXPECT_THAT(Take().may_have_left, IsEmpty());
}

TEST_F(AGoneNode, LeavesAPageWithUnknownOutcomeToTheOperatorWhereTheSiteAsks) {
    Ask();
    SetPageOnLine(connection, "N", {"7", "ops", "night"});
    Take();
    EXPECT_THAT(States(), ElementsAre("duty waiting", "night outcome unknown", "tech waiting"));
    EXPECT_FALSE(GiveToLine(connection, At(1), "S"));
    EXPECT_TRUE(GiveToLine(connection, At(0), "S"));
}

TEST_F(AGoneNode, HasItsPageSentAgainOnRequest) {
    Ask();
    SetPageOnLine(connection, "N", {"7", "ops", "night"});
    Take();
    const PageKey night{"7", "ops", "night"};
    EXPECT_TRUE(SendAgain(connection, night, "not on the pager (me)"));
    EXPECT_FALSE(SendAgain(connection, night, "again")) << "nobody asks any more";
    EXPECT_THAT(States(), ElementsAre("duty waiting", "night waiting", "tech waiting"));
    EXPECT_TRUE(GiveToLine(connection, At(1), "S"));
    EXPECT_FALSE(WasEverQueued(connection, At(1))) << "or no library would be called for it";
}

TEST_F(AGoneNode, HasItsPageCountedAsSentOnRequest) {
    Ask();
    SetPageOnLine(connection, "N", {"7", "ops", "night"});
    Take();
    const PageKey night{"7", "ops", "night"};
    EXPECT_FALSE(CountAsSent(connection, {"7", "ops", "duty"}, "no"));
    EXPECT_TRUE(CountAsSent(connection, night, "on the pager (me)"));
    EXPECT_THAT(States(), ElementsAre("duty waiting", "tech waiting"));
    EXPECT_EQ("2", StateOf("7")) << "others are still owed";
    const std::vector<PageStory> ended = EndedPages(connection, 9);
    ASSERT_EQ(1U, ended.size());
    EXPECT_EQ(PageEnd::kDone, ended[0].end);
    EXPECT_EQ("on the pager (me)", ended[0].note);
}

TEST_F(AGoneNode, EndsItsAlarmWhereItsLastPageIsCountedAsSent) {
    Ask();
    Execute("DELETE FROM Host_Deliveries WHERE pager <> 'night'");
    Execute("DELETE FROM AlarmFwd_PagerEvents WHERE PagerDescr <> 'night'");
    SetPageOnLine(connection, "N", {"7", "ops", "night"});
    Take();
    EXPECT_TRUE(CountAsSent(connection, {"7", "ops", "night"}, "seen"));
    EXPECT_EQ("4", StateOf("7"));
}

// --- What becomes of pages that need more than another line.

TEST_F(AGoneNode, HasItsTriesCounted) {
    Execute("UPDATE AlarmFwd_PagerEvents SET PagerRetries = '2' WHERE PagerDescr = 'night'");
    Take();
    EXPECT_EQ(0, At(0).tries);
    EXPECT_EQ(2, At(1).tries);
    EXPECT_THAT(Rows("change || ' ' || tries || ' ' || line FROM Host_History"
                     " WHERE pager = 'night' ORDER BY row_id DESC LIMIT 1"),
                ElementsAre("moved 2 N"));
}

TEST_F(AGoneNode, HasAPageGivenUpThatAllLinesHaveTriedTooOften) {
    Execute("UPDATE Host_Deliveries SET tries = 4");
    Execute("UPDATE AlarmFwd_PagerEvents SET PagerRetries = '2' WHERE PagerDescr = 'night'");
    const TakenOver taken = Take();
    EXPECT_EQ(2, taken.pages);
    EXPECT_EQ(1, taken.given_up);
    EXPECT_THAT(States(), ElementsAre("duty waiting", "tech waiting"));
}

TEST_F(AGoneNode, LeavesNoPageOfAnAlarmThatIsAcknowledged) {
    Execute("UPDATE AlarmLog SET alarmack = '1', pagerstate = '1'");
    EXPECT_EQ(1, Take().pages) << "that was still to be handed over, and is closed at its turn";
    EXPECT_THAT(Rows("change || ' ' || pager FROM Host_History WHERE note <> '' ORDER BY row_id"),
                ElementsAre("removed duty", "removed night"));
    EXPECT_EQ(kQueued, At(0).answer);
    EXPECT_THAT(Rows("row_id FROM AlarmFwd_PagerEvents"), IsEmpty());
}

TEST_F(AGoneNode, LeavesPagesOfAnotherProgramToo) {
    Execute("DELETE FROM Host_Deliveries WHERE place < 2");
    EXPECT_EQ(3, Take().pages);
    EXPECT_THAT(Rows("place || ' ' || pager || line FROM Host_Deliveries WHERE answer IS NULL"
                     " ORDER BY place"),
                ElementsAre("2 tech", "3 duty", "4 night"));
    EXPECT_FALSE(WasEverQueued(connection, At(1)));
}

// Of two rows of one page the library knows both; it is owed once.
TEST_F(AGoneNode, LeavesAPageThatStandsTwiceOnce) {
    Execute(
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState, line)"
        " SELECT AlmLogID, AlmGroup, PagerDescr, PagerState, line FROM AlarmFwd_PagerEvents");
    EXPECT_EQ(3, Take().pages);
    EXPECT_THAT(States(), ElementsAre("duty waiting", "night waiting", "tech waiting"));
}

TEST_F(AGoneNode, LeavesThePagesOfAllItsLinesAndOfNoOther) {
    AddAlarm("8", "2");
    AddAlarm("9", "2");
    for (const char* line : {"N2", "S"}) {
        EXPECT_TRUE(ClaimLine(connection, line, *line == 'S' ? "south" : "north"));
    }
    AddDelivery("8", 0, "duty");
    AddDelivery("9", 0, "duty");
    GiveToLine(connection, DeliveriesOf(connection, "8").at(0), "N2");
    GiveToLine(connection, DeliveriesOf(connection, "9").at(0), "S");
    EXPECT_EQ(4, Take().pages);
    EXPECT_THAT(CountByLine(connection), ElementsAre(Pair("S", 1)));
}

TEST_F(AGoneNode, CanBeForgotten) {
    EXPECT_EQ(3, RemoveNode(connection, "north", north.term)->pages);
    EXPECT_EQ(std::nullopt, FindNode(connection, "north"));
    EXPECT_THAT(CountByLine(connection), IsEmpty());
}

TEST_F(AGoneNode, IsNotTakenOverWhileItLives) {
    RenewLease(connection, north, std::chrono::hours(1));
    EXPECT_EQ(std::nullopt, TakeOver(connection, "north", north.term));
    EXPECT_EQ(std::nullopt, RemoveNode(connection, "north", north.term));
    EXPECT_THAT(CountByLine(connection), ElementsAre(Pair("N", 3)));
}

}  // namespace
}  // namespace host
