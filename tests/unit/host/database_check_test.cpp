// Every mistake that `pagerfwd check` finds in a database.
#include "host/site/database_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "tests/unit/host/files.h"
#include "tests/unit/host/host_test.h"

namespace host {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class DatabaseCheck : public HostTest {
 protected:
    DatabaseCheck() {
        Lease lease(database);
        StoreSite(lease.Database(), ParseSite(ReadFile(EXAMPLE_SITE)).site);
    }

    // What is found after this change.
    std::vector<std::string> After(const char* sql) const {
        {
            Connection connection(database);
            connection.Execute(sql);
        }
        Lease lease(database);
        std::vector<std::string> found;
        const ReadBack read = CheckDatabase(lease.Database());
        for (const Finding& finding : read.findings.All()) {
            found.push_back(finding.place + ": " + finding.what + " | " + finding.consequence);
        }
        return found;
    }
};

TEST_F(DatabaseCheck, FindsNothingWrongWithTheExample) {
    EXPECT_THAT(After("SELECT 1"), IsEmpty());
}

TEST_F(DatabaseCheck, TakesCellsAsTheLibraryDoes) {
    EXPECT_THAT(After("UPDATE AlarmFwd_COMProperties SET Flow = 'hard', PagerParity = 'n',"
                      " SMS1Parity = 'E', \"Select\" = '1x';"
                      "UPDATE AlarmFwd_PagerSetting SET comport = 'any'"),
                ElementsAre(HasSubstr("hardware flow control")));
}

TEST_F(DatabaseCheck, TakesAWordWithAnAForAnyPortUnlessAPortIsCalledSo) {
    const auto pager_port = [&] {
        Lease lease(database);
        return ReadSiteBack(lease.Database()).site.pagers.front().port.value;
    };
    After("UPDATE AlarmFwd_PagerSetting SET comport = 'attic'");
    EXPECT_EQ("", pager_port());
    After("UPDATE AlarmFwd_COMProperties SET Description = 'attic', device = '/dev/ttyUSB0'");
    EXPECT_EQ("attic", pager_port());
}

TEST_F(DatabaseCheck, FindsWhatWouldLeaveAPortTaken) {
    EXPECT_THAT(After("UPDATE AlarmFwd_COMProperties SET Baud = '600'"),
                ElementsAre(AllOf(HasSubstr("row 1 of AlarmFwd_COMProperties: port \"COM 1\": 600 "
                                            "is no speed"),
                                  HasSubstr("then stays taken for all others"))));
    EXPECT_THAT(After("UPDATE AlarmFwd_COMProperties SET Baud = '9600 baud'"),
                Contains(AllOf(HasSubstr("Baud is \"9600 baud\", which is no number"),
                               HasSubstr("then stays taken for all others"))));
    EXPECT_THAT(After("UPDATE AlarmFwd_COMProperties SET Baud = '9600', SMS2Parity = 'Mark'"),
                ElementsAre(AllOf(HasSubstr("parity \"Mark\" is refused"),
                                  HasSubstr("then stays taken for all others"))));
}

TEST_F(DatabaseCheck, FindsPagersThatCanNotBeReached) {
    EXPECT_THAT(After("UPDATE AlarmFwd_PagerSetting SET pgtype = '7' WHERE row_id = 1"),
                ElementsAre(HasSubstr("row 1 of AlarmFwd_PagerSetting: pager \"duty phone\": there "
                                      "is no type \"7\"")));
    EXPECT_THAT(After("UPDATE AlarmFwd_PagerSetting SET pgtype = '4', comport = 'COM1'"
                      " WHERE row_id = 1"),
                ElementsAre(HasSubstr("there is no port \"COM1\"")));
    EXPECT_THAT(
        After("UPDATE AlarmFwd_PagerSetting SET comport = 'COM 1', timemodel = 'nights',"
              " pgnumber = 'x' WHERE row_id = 1"),
        ElementsAre(HasSubstr("\"x\" has no digits"), HasSubstr("there are no hours \"nights\"")));
}

TEST_F(DatabaseCheck, FindsADescriptionThatIsThereTwice) {
    EXPECT_THAT(After("UPDATE AlarmFwd_PagerSetting SET description = 'porter' WHERE row_id = 1"),
                Contains(AllOf(HasSubstr("row 5 of AlarmFwd_PagerSetting: pager \"porter\" is "
                                         "there already, in row 1 of AlarmFwd_PagerSetting"),
                               HasSubstr("Neither of the two"))));
}

TEST_F(DatabaseCheck, FindsThatTheHoursOfEveryoneAreMissing) {
    const std::vector<std::string> found =
        After("DELETE FROM AlarmFwd_TMSetting WHERE description = 'always'");
    EXPECT_EQ(6U, found.size());
    EXPECT_THAT(found, Contains(HasSubstr("\"duty phone\": there are no hours \"always\"")));
}

TEST_F(DatabaseCheck, FindsSmsPagersWhoseHoursWouldRetireTheirPages) {
    EXPECT_THAT(After("UPDATE AlarmFwd_PagerSetting SET timemodel = 'office' WHERE row_id = 1"),
                ElementsAre(HasSubstr("it is never sent")));
}

TEST_F(DatabaseCheck, FindsMissingColumns) {
    EXPECT_THAT(After("ALTER TABLE AlarmFwd_PagerSetting DROP COLUMN owner"),
                ElementsAre(HasSubstr("table AlarmFwd_PagerSetting: there is no column owner")));
    EXPECT_THAT(After("ALTER TABLE AlarmFwd_COMProperties DROP COLUMN SMS1Protocol"),
                Contains(AllOf(HasSubstr("there is no protocol \"\""),
                               HasSubstr("without a byte of them being sent"))));
}

TEST_F(DatabaseCheck, FindsThatHoursOrAlarmsCanNotBeRead) {
    EXPECT_THAT(After("ALTER TABLE AlarmLog DROP COLUMN details"),
                ElementsAre(AllOf(HasSubstr("table AlarmLog: there is no column details"),
                                  HasSubstr("without the alarm's text"))));
    EXPECT_THAT(After("ALTER TABLE AlarmFwd_TMSetting DROP COLUMN wed_07"),
                Contains(HasSubstr("table AlarmFwd_TMSetting: the column wed_07 is missing")));
}

TEST_F(DatabaseCheck, SaysHowAPendingPageWouldBeSent) {
    EXPECT_THAT(
        After("INSERT INTO AlarmLog (alarmlogID, pagerstate, details)"
              " VALUES ('7', '2', 'T' || CAST(x'FC' AS TEXT) || 'r offen');"
              "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState)"
              " VALUES ('7', 'OPS/7', 'duty phone', '2'), ('7', 'OPS/7', 'engineer', '2'),"
              " ('7', 'OPS/7', 'manager phone', '4')"),
        ElementsAre("row 1 of AlarmFwd_PagerEvents: alarm 7, pending for pager \"duty phone\": "
                    "seven bits of "
                    "each character reach the service | "
                    "\"T\xC3\xBCr offen\" would be sent as \"T|r offen\"."));
}

TEST_F(DatabaseCheck, SaysThatAPendingPageWouldBeCut) {
    const std::string details(70, 'x');
    const std::string sql =
        "INSERT INTO AlarmLog (alarmlogID, pagerstate, details) VALUES ('7', '2', '" + details +
        "');"
        "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState)"
        " VALUES ('7', 'OPS/7', 'duty phone', '2'), ('7', 'OPS/7', 'engineer', '2')";
    EXPECT_THAT(After(sql.c_str()), ElementsAre(AllOf(HasSubstr("row 2 of AlarmFwd_PagerEvents"),
                                                      HasSubstr("Only the first 80 characters"))));
}

}  // namespace
}  // namespace host
