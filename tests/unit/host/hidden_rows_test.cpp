// A pending page whose row is replaced survives the death of the process in between.
#include "host/store/hidden_rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/tables/events.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/host_test.h"
#include "tests/unit/host/table_client.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kDuty = "WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \"duty\"";

class HiddenRows : public HostTest {
 protected:
    ~HiddenRows() override { EXPECT_THAT(faults, IsEmpty()); }

    OpenTable Events() const { return {database, "AlarmFwd_PagerEvents"}; }

    void AddEvent(int32_t alarm, const char* pager, int32_t state, int32_t retries = 0) const {
        ASSERT_EQ(0, Events().Insert({{"AlmLogID", alarm},
                                      {"AlmGroup", "ops"},
                                      {"PagerDescr", pager},
                                      {"PagerState", state},
                                      {"PagerRetries", retries}}));
    }

    std::vector<std::string> Pagers() const { return Events().ReadAll("PagerDescr"); }

    // All rows of the table, in sight or not.
    int64_t RowCount() const {
        Connection connection(database);
        Statement statement(connection, "SELECT count(*) FROM AlarmFwd_PagerEvents");
        statement.Step();
        return statement.Number(0);
    }

    // Another process that has deleted the event of alarm 7 and pager "duty", and still runs.
    struct Deleter {
        explicit Deleter(const std::string& database)
            : process({STORE_PROCESS, database, "delete-event"}) {
            EXPECT_EQ("deleted", process.ReadLine());
        }
        ChildProcess process;
    };
};

TEST_F(HiddenRows, AreOutOfSightForEveryProcess) {
    AddEvent(7, "duty", 2);
    AddEvent(7, "night", 2);
    const Deleter deleter(database);
    EXPECT_THAT(Pagers(), ElementsAre("night"));
    EXPECT_EQ(0, Events().Delete(kDuty));
    EXPECT_EQ(0, Events().Set(kDuty, {{"PagerState", 3}}));
    EXPECT_EQ(0, Events().Delete("WHERE AlarmFwd_PagerEvents.PagerState <> 2"));
}

TEST_F(HiddenRows, ComeBackToTheirPlaceWhenTheirProcessIsKilled) {
    AddEvent(7, "first", 2);
    AddEvent(7, "duty", 2, 4);
    AddEvent(7, "last", 2);
    Deleter deleter(database);
    EXPECT_THAT(Pagers(), ElementsAre("first", "last"));
    deleter.process.Kill();
    EXPECT_THAT(Pagers(), ElementsAre("first", "duty", "last"));
    EXPECT_THAT(Events().ReadAll("PagerRetries"), ElementsAre("0", "4", "0"));
}

TEST_F(HiddenRows, ComeBackWhenTheirProcessEnds) {
    AddEvent(7, "duty", 2);
    Deleter deleter(database);
    EXPECT_EQ(0, deleter.process.Finish());
    EXPECT_THAT(Pagers(), ElementsAre("duty"));
}

TEST_F(HiddenRows, ComeBackForGood) {
    AddEvent(7, "duty", 2);
    Deleter deleter(database);
    deleter.process.Kill();
    EXPECT_THAT(Pagers(), ElementsAre("duty"));
    EXPECT_EQ(1, Events().Set(kDuty, {{"PagerState", 3}}));
    EXPECT_EQ(1, Events().Delete(kDuty));
    EXPECT_EQ(0, RowCount());
}

TEST_F(HiddenRows, AreReplacedByAnInsertOfTheirKey) {
    AddEvent(7, "duty", 2, 1);
    ASSERT_EQ(1, Events().Delete(kDuty));
    AddEvent(7, "duty", 2, 2);
    EXPECT_THAT(Events().ReadAll("PagerRetries"), ElementsAre("2"));
    EXPECT_EQ(1, RowCount());
}

TEST_F(HiddenRows, AreReplacedByAnInsertInAnyState) {
    AddEvent(7, "duty", 2);
    ASSERT_EQ(1, Events().Delete(kDuty));
    AddEvent(7, "duty", 4);
    EXPECT_EQ(1, RowCount());
}

TEST_F(HiddenRows, AreLeftAloneByAnInsertOfAnotherKey) {
    AddEvent(7, "duty", 2);
    const Deleter deleter(database);
    AddEvent(8, "duty", 2);
    AddEvent(7, "Duty", 2);
    ASSERT_EQ(0, Events().Insert({{"AlmLogID", 7}, {"AlmGroup", "ops/1"}, {"PagerDescr", "duty"}}));
    ASSERT_EQ(0, Events().Insert({{"AlmLogID", 7}, {"PagerDescr", "duty"}}));  // no whole key
    EXPECT_EQ(5, RowCount());
}

TEST_F(HiddenRows, AreDeletedForGoodWithTheirAlarm) {
    AddEvent(7, "duty", 2);
    AddEvent(7, "night", 2);
    AddEvent(8, "duty", 2);
    Deleter deleter(database);
    EXPECT_EQ(1, Events().Delete("WHERE AlarmFwd_PagerEvents.AlmLogID  = 7"));
    deleter.process.Kill();
    EXPECT_THAT(Events().ReadAll("AlmLogID"), ElementsAre("8"));
    EXPECT_EQ(1, RowCount());
}

TEST_F(HiddenRows, AreNotThoseOfAnAcknowledgedAlarm) {
    OpenTable(database, "AlarmLog").Insert({{"alarmlogID", 7}, {"pagerstate", 1}});
    AddEvent(7, "duty", 2);
    Deleter deleter(database);
    EXPECT_EQ(0, RowCount());
    deleter.process.Kill();
    EXPECT_THAT(Pagers(), IsEmpty());
}

TEST_F(HiddenRows, AreThoseOfAnAlarmInAnyOtherState) {
    OpenTable alarms(database, "AlarmLog");
    ASSERT_EQ(0, alarms.Insert({{"alarmlogID", 7}, {"pagerstate", 0}}));
    ASSERT_EQ(0, alarms.Insert({{"alarmlogID", 8}, {"pagerstate", 1}}));
    AddEvent(7, "duty", 2);
    for (const int32_t state : {0, 2, 3, 4, 11}) {
        EXPECT_EQ(1, alarms.Set("WHERE alarmlogID = 7", {{"pagerstate", state}})) << state;
        Deleter deleter(database);
        EXPECT_EQ(1, RowCount()) << state;
        deleter.process.Kill();
        EXPECT_THAT(Pagers(), ElementsAre("duty")) << state;
    }
}

TEST_F(HiddenRows, AreOnlyThoseInStateTwo) {
    for (const int32_t state : {0, 1, 3, 4, 22}) {
        AddEvent(7, "duty", state);
        EXPECT_EQ(1, Events().Delete(kDuty)) << state;
        EXPECT_EQ(0, RowCount()) << state;
    }
}

TEST_F(HiddenRows, OfOneKeyAreHiddenAndReplacedTogether) {
    AddEvent(7, "duty", 2);
    AddEvent(7, "duty", 3);
    AddEvent(7, "duty", 2);
    EXPECT_EQ(3, Events().Delete(kDuty));
    EXPECT_EQ(2, RowCount());
    AddEvent(7, "duty", 2);
    EXPECT_EQ(1, RowCount());
}

TEST_F(HiddenRows, OfALivingProcessStayHiddenWhenAnotherDies) {
    AddEvent(7, "duty", 2);
    AddEvent(7, "night", 2);
    Deleter dying(database);
    ASSERT_EQ(
        1, Events().Delete("WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \"night\""));
    dying.process.Kill();
    EXPECT_THAT(Pagers(), ElementsAre("duty"));
}

// --- What an engine would take up.

class PagesOutOfSight : public HiddenRows {
 protected:
    PagesOutOfSight() {
        OpenTable(database, "AlarmLog").Insert({{"alarmlogID", 7}, {"pagerstate", 2}});
        OpenTable(database, "AlarmLog").Insert({{"alarmlogID", 8}, {"pagerstate", 1}});
        OpenTable(database, "AlarmFwd_PagerSetting").Insert({{"description", "duty"}});
    }

    int64_t Count() const {
        Connection connection(database);
        return CountPendingPages(connection);
    }
};

TEST_F(PagesOutOfSight, HaveAnAlarmThatIsPagedAndAPagerThatIsKnown) {
    EXPECT_EQ(0, Count());
    AddEvent(7, "duty", 2);
    EXPECT_EQ(1, Count());
    AddEvent(7, "duty", 3);    // off limit
    AddEvent(8, "duty", 2);    // acknowledged
    AddEvent(9, "duty", 2);    // no alarm
    AddEvent(7, "nobody", 2);  // no pager
    EXPECT_EQ(1, Count());
}

TEST_F(PagesOutOfSight, AreInHandUntilTheyAreDroppedToo) {
    const auto in_hand = [this] {
        Connection connection(database);
        return HasPagesInHand(connection);
    };
    AddEvent(7, "duty", 4);    // done
    AddEvent(9, "duty", 2);    // no alarm
    AddEvent(7, "nobody", 2);  // no pager
    EXPECT_FALSE(in_hand());
    AddEvent(8, "duty", 2);  // acknowledged
    EXPECT_TRUE(in_hand());
    EXPECT_EQ(
        1, Events().Delete("WHERE AlmGroup = \"ops\" AND AlmLogID = 8 AND PagerDescr = \"duty\""));
    EXPECT_FALSE(in_hand()) << "as an engine does at its start";
}

TEST_F(PagesOutOfSight, AreCountedWhenTheyAreHiddenToo) {
    AddEvent(7, "duty", 2);
    const Deleter deleter(database);
    EXPECT_EQ(1, Count());
}

}  // namespace
}  // namespace host
