// Cells that are too large to be read.
#include "host/store/large_cells.h"
#include "host/store/tables/history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/pages/backlog.h"
#include "host/pages/history.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/events.h"
#include "tests/unit/host/another_program.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class LargeCells : public ServiceTest {
 protected:
    LargeCells() {
        AddPager("duty");
        AddAlarm("7", "2");
        AddAlarm("8", "2");
        WriteEvent(7, "duty", 2);
        WriteEvent(8, "duty", 2);
    }
    // As another program does, for which nothing is too large.
    void Enlarge(const std::string& table, const std::string& column, const std::string& which) {
        WriteAsAnother(database, "UPDATE " + table + " SET " + column +
                                     " = hex(zeroblob(600000)) WHERE " + which);
    }
    // Whether every question can be asked that a start and a turn of a node ask.
    void ExpectAllToBeRead() {
        EXPECT_NO_THROW({
            NewAlarms(connection);
            OpenAlarms(connection);
            LastAlarms(connection, 20);
            MendTexts(connection);
            MendAlarmStates(connection);
            LookAtBacklog(connection);
            host::PendingPages(connection);
            EndedPages(connection, 20);
            CountPendingPages(connection);
            HasPagesInHand(connection);
            DiscardPages(connection, kNow - 60);
            ForgetHistory(connection, kNow - 60);
        });
    }
};

TEST_F(LargeCells, AreNoneInASiteAsItShouldBe) {
    const std::vector<std::string> before = Rows("pagerstate || alarmlogID FROM AlarmLog");
    EXPECT_THAT(EmptyLargeCells(connection), IsEmpty());
    EXPECT_EQ(before, Rows("pagerstate || alarmlogID FROM AlarmLog"));
    EXPECT_EQ(2, CountPendingPages(connection));
}

TEST_F(LargeCells, StopWhoeverMeetsThem) {
    Enlarge("AlarmLog", "timestamp", "alarmlogID = '8'");
    EXPECT_THROW(DiscardPages(connection, 0), RowTooLarge);
}

TEST_F(LargeCells, OfAnAlarmStopNoOther) {
    for (const char* column : {"alarmlogID", "pagerstate", "timestamp", "alarmack"}) {
        const std::string row = Rows("max(row_id) + 1 FROM AlarmLog").at(0);
        AddAlarm("9");
        Enlarge("AlarmLog", column, "alarmlogID = '9'");
        EXPECT_THAT(EmptyLargeCells(connection), ElementsAre("row " + row + " of AlarmLog"));
        EXPECT_THAT(EmptyLargeCells(connection), IsEmpty()) << "said once";
        EXPECT_THAT(Rows("pagerstate FROM AlarmLog WHERE row_id = " + row), ElementsAre("3"));
        ExpectAllToBeRead();
        EXPECT_EQ(2, CountPendingPages(connection));
        Execute("DELETE FROM AlarmLog WHERE row_id = " + row);
    }
}

TEST_F(LargeCells, InWhatAnAlarmSaysAreLeftAsTheyAre) {
    Enlarge("AlarmLog", "details", "alarmlogID = '7'");
    EXPECT_THAT(EmptyLargeCells(connection), IsEmpty());
    EXPECT_THAT(Rows("pagerstate FROM AlarmLog"), ElementsAre("2", "2"));
    Enlarge("AlarmLog", "timestamp", "alarmlogID = '7'");
    EXPECT_THAT(EmptyLargeCells(connection), SizeIs(1)) << "beside one that is in the way";
}

TEST_F(LargeCells, OfAPageStopNoOther) {
    for (const char* column :
         {"AlmLogID", "AlmGroup", "PagerDescr", "PagerState", "PagerRetries"}) {
        WriteEvent(8, "night", 2);
        Enlarge("AlarmFwd_PagerEvents", column, "PagerDescr = 'night'");
        EXPECT_THAT(EmptyLargeCells(connection), SizeIs(1)) << column;
        EXPECT_THAT(EmptyLargeCells(connection), IsEmpty()) << column;
        ExpectAllToBeRead();
        EXPECT_EQ(2, CountPendingPages(connection)) << column;
        Execute("DELETE FROM AlarmFwd_PagerEvents WHERE PagerState = '3'");
    }
}

TEST_F(LargeCells, OfAPageThatHasEndedChangeNoState) {
    WriteEvent(8, "night", 4);
    Enlarge("AlarmFwd_PagerEvents", "AlmGroup", "PagerDescr = 'night'");
    EXPECT_THAT(EmptyLargeCells(connection), SizeIs(1));
    EXPECT_THAT(Rows("PagerState FROM AlarmFwd_PagerEvents WHERE PagerDescr = 'night'"),
                ElementsAre("4"));
}

// The engine leaves it out, and would wait for it for ever.
TEST_F(LargeCells, OfAPageInHandAreMet) {
    Execute("DELETE FROM AlarmFwd_PagerEvents");
    WriteEvent(8, "duty", 2);
    Enlarge("AlarmFwd_PagerEvents", "PagerRetries", "1");
    EXPECT_THROW(HasPagesInHand(connection), RowTooLarge);
    EmptyLargeCells(connection);
    EXPECT_FALSE(HasPagesInHand(connection));
}

TEST_F(LargeCells, OfADeliveryDropNoOther) {
    AddDelivery("7", 0, "duty");
    for (const char* column : {"alarm", "alarm_group", "pager", "line"}) {
        AddDelivery("8", 1, "night");
        Enlarge("Host_Deliveries", column, "pager = 'night'");
        EXPECT_THAT(EmptyLargeCells(connection), ElementsAre("1 row(s) of Host_Deliveries"))
            << column;
        EXPECT_THAT(EmptyLargeCells(connection), IsEmpty()) << column;
        EXPECT_THAT(Rows("alarm || pager FROM Host_Deliveries"), ElementsAre("7duty")) << column;
        ExpectAllToBeRead();
    }
}

TEST_F(LargeCells, InTheHistoryAreForgotten) {
    WriteAsAnother(database,
                   "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState)"
                   " VALUES ('8', hex(zeroblob(600000)), 'night', '2')");
    EXPECT_THROW(host::PendingPages(connection), RowTooLarge);
    EXPECT_THAT(EmptyLargeCells(connection), SizeIs(1));
    ExpectAllToBeRead();
    EXPECT_THAT(PagesOf(connection, "8"), SizeIs(2));
}

TEST_F(LargeCells, AreRefusedAgainAfterwards) {
    EmptyLargeCells(connection);
    Enlarge("AlarmLog", "details", "alarmlogID = '7'");
    EXPECT_THROW(FindAlarm(connection, "7"), RowTooLarge);
}

}  // namespace
}  // namespace host
