// Pending pages, as somebody looks for them.
#include "host/pages/pending.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Pending : public ServiceTest {
 protected:
    static PendingWanted Some(size_t count) {
        PendingWanted wanted;
        wanted.count = count;
        return wanted;
    }
    // "7 duty"
    std::vector<std::string> Find(const PendingWanted& wanted) {
        found = FindPending(connection, wanted);
        std::vector<std::string> pages;
        for (const PageStory& page : found.pages) {
            pages.push_back(page.alarm + " " + page.pager);
        }
        return pages;
    }
    void TwoAlarms() {
        AddAlarm("9", "2", "ops", kNow + 100);
        AddAlarm("10", "2", "ops", kNow + 200);
        WriteEvent(9, "duty", 2);
        WriteEvent(9, "night", 2);
        AddDelivery("10", 0, "duty");
        AddDelivery("10", 1, "night");
    }

    PendingFound found;
};

TEST_F(Pending, AreNone) {
    EXPECT_THAT(Find(Some(10)), IsEmpty());
    EXPECT_EQ(0U, found.all);
    EXPECT_EQ("", found.next);
}

TEST_F(Pending, AreToldPieceByPiece) {
    TwoAlarms();
    PendingWanted wanted = Some(3);
    EXPECT_THAT(Find(wanted), ElementsAre("9 duty", "9 night", "10 duty"));
    EXPECT_EQ(4U, found.all);
    wanted.after = found.next;
    EXPECT_THAT(Find(wanted), ElementsAre("10 night"));
    EXPECT_EQ(4U, found.all);
    EXPECT_EQ("", found.next);
}

TEST_F(Pending, GoOnWhereTheyWereWhenPagesHaveEndedMeanwhile) {
    TwoAlarms();
    PendingWanted wanted = Some(2);
    Find(wanted);
    wanted.after = found.next;
    EXPECT_EQ(1, DeleteEvent(9, "duty"));
    EXPECT_EQ(1, DeleteEvent(9, "night"));
    EXPECT_THAT(Find(wanted), ElementsAre("10 duty", "10 night"));
}

TEST_F(Pending, BeginAtTheFirstWhereverNobodyKnowsTheWay) {
    TwoAlarms();
    PendingWanted wanted = Some(1);
    for (const char* nonsense : {"", "x", "..", ".1.1", "-5"}) {
        wanted.after = nonsense;
        EXPECT_THAT(Find(wanted), ElementsAre("9 duty")) << nonsense;
    }
}

TEST_F(Pending, OfAnAlarmComeTogetherWhereThatIsWanted) {
    TwoAlarms();
    PendingWanted wanted = Some(1);
    wanted.whole_alarms = true;
    EXPECT_THAT(Find(wanted), ElementsAre("9 duty", "9 night"));
    EXPECT_NE("", found.next);
    wanted.after = "10";
    EXPECT_THAT(Find(wanted), ElementsAre("10 duty", "10 night"));
    EXPECT_EQ("", found.next);
}

TEST_F(Pending, AreThoseOfAPager) {
    TwoAlarms();
    PendingWanted wanted = Some(10);
    wanted.pager = "night";
    EXPECT_THAT(Find(wanted), ElementsAre("9 night", "10 night"));
    EXPECT_EQ(2U, found.all);
}

TEST_F(Pending, AreThoseOfAState) {
    TwoAlarms();
    PendingWanted wanted = Some(10);
    wanted.state = "waiting";
    EXPECT_THAT(Find(wanted), ElementsAre("10 duty", "10 night"));
    wanted.state = "pending";
    EXPECT_THAT(Find(wanted), ElementsAre("9 duty", "9 night"));
    wanted.state = "outcome unknown";
    EXPECT_THAT(Find(wanted), IsEmpty());
}

TEST_F(Pending, AreThoseOfGroups) {
    TwoAlarms();
    PendingWanted wanted = Some(10);
    wanted.group = [](const std::string& group) { return group == "plant"; };
    EXPECT_THAT(Find(wanted), IsEmpty());
}

TEST_F(Pending, AreThoseOfATime) {
    TwoAlarms();
    PendingWanted wanted = Some(10);
    wanted.since = kNow + 101;
    EXPECT_THAT(Find(wanted), ElementsAre("10 duty", "10 night"));
    wanted.since = kNow + 100;
    wanted.until = kNow + 199;
    EXPECT_THAT(Find(wanted), ElementsAre("9 duty", "9 night"));
}

}  // namespace
}  // namespace host
