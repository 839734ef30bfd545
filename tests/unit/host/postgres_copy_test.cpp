// A site that moves from a file to a server, and back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/copy_site.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/history.h"
#include "host/store/tables/trail.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

TEST_F(ServiceTest, ASiteMovesFromAServerToAFileAndBack) {
    AddPager("J\xFCrgen");
    AddAlarm("7", "2");
    AddAlarm("8");
    Execute("DELETE FROM AlarmLog WHERE alarmlogID = '7'");
    WriteEvent(8, "J\xFCrgen", 2);
    AddDelivery("8", 0, "J\xFCrgen", "1");
    AddDelivery("8", 1, "night");
    WriteSetting(connection, "encoding", "latin1");

    Connection file("site.db", Connection::Mode::kCreate);
    CreateTables(file);
    CopySite(connection, file);
    Connection back(NewDatabase());
    CreateTables(back);
    CopySite(file, back);

    EXPECT_EQ("latin1", ReadSetting(back, "encoding"));
    ASSERT_EQ(1U, OpenDeliveries(back).size());
    EXPECT_EQ("night", OpenDeliveries(back).front().pager);
    ASSERT_EQ(1U, PagesInHistory(back, "8").size());
    EXPECT_EQ("J\xFCrgen", PagesInHistory(back, "8").front().pager);
    const int64_t last = LastChange(back);
    NoteEngineStart(back);
    EXPECT_EQ(last + 1, LastChange(back));
    RaiseAlarm(back, {"ops", "1", "", ""}, kNow);
    ASSERT_EQ(2U, LastAlarms(back, 9).size());
    EXPECT_EQ(3, LastAlarms(back, 9).back().row);
}

}  // namespace
}  // namespace host
