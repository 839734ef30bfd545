// A site copied into another database.
#include "host/store/copy_site.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/store/tables/deliveries.h"
#include "host/store/tables/history.h"
#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::HasSubstr;

class ACopy : public ServiceTest {
 protected:
    ACopy() { CreateTables(other); }

    // Something in each kind of table: with numbers of their own, without, with NULL.
    void FillSite() {
        AddPager("J\xFCrgen");
        AddAlarm("7", "2");
        AddAlarm("8", "3");
        WriteEvent(7, "J\xFCrgen", 2);
        AddDelivery("7", 0, "J\xFCrgen", "1");
        AddDelivery("8", 0, "night");
        WriteSetting(connection, "encoding", "latin1");
        Execute("DELETE FROM AlarmLog WHERE alarmlogID = '7'");
    }

    std::string Refusal() {
        try {
            CopySite(connection, other);
            return "";
        } catch (const StoreError& error) {
            return error.what();
        }
    }

    Connection other{"other.db", Connection::Mode::kCreate};
};

TEST_F(ACopy, HasEveryRowAsItWas) {
    FillSite();
    int64_t rows = 0;
    for (const CopiedTable& table : CopySite(connection, other)) {
        rows += table.rows;
    }
    EXPECT_EQ(7, rows);  // with the history of the event
    EXPECT_EQ("latin1", ReadSetting(other, "encoding"));
    ASSERT_EQ(1U, LastAlarms(other, 9).size());
    EXPECT_EQ(2, LastAlarms(other, 9).front().row);
    ASSERT_EQ(1U, OpenDeliveries(other).size());
    EXPECT_EQ("night", OpenDeliveries(other).front().pager);
    ASSERT_EQ(1U, PagesInHistory(other, "7").size());
    EXPECT_EQ("J\xFCrgen", PagesInHistory(other, "7").front().pager);
}

TEST_F(ACopy, GoesOnBehindTheLastRow) {
    FillSite();
    CopySite(connection, other);
    const int64_t last = LastChange(other);
    NoteEngineStart(other);
    EXPECT_EQ(last + 1, LastChange(other));
    RaiseAlarm(other, {"ops", "1", "", ""}, kNow);
    EXPECT_EQ(3, LastAlarms(other, 9).back().row);
}

TEST_F(ACopy, IsNotMadeIntoADatabaseWithASite) {
    FillSite();
    WriteSetting(other, "encoding", "latin1");
    EXPECT_THAT(Refusal(), HasSubstr("other.db: holds a site already"));
    EXPECT_TRUE(LastAlarms(other, 9).empty());
}

TEST_F(ACopy, IsNotMadeWhereARowWouldBecomeAnother) {
    FillSite();
    other.Execute(
        "CREATE TRIGGER Meddler AFTER INSERT ON Host_Deliveries"
        " BEGIN UPDATE Host_Deliveries SET tries = 5; END");
    EXPECT_THAT(Refusal(), HasSubstr("other.db: the rows of Host_Deliveries have become others"));
    EXPECT_TRUE(LastAlarms(other, 9).empty());
}

}  // namespace
}  // namespace host
