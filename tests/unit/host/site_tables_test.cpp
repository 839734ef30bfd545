// A site in the tables, as the library reads it there.
#include "host/site/site_tables.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/time_models.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/site/site_file.h"
#include "tests/unit/host/host_test.h"
#include "tests/unit/host/table_client.h"

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SiteTables : public HostTest {
 protected:
    void Import(const std::string& text) const {
        const ReadSite read = ParseSite(text);
        ASSERT_THAT(read.findings.All(), IsEmpty());
        Lease lease(database);
        StoreSite(lease.Database(), read.site);
    }

    std::string Cell(const char* table, const char* key, const char* name,
                     const char* column) const {
        const std::vector<std::string> cells = OpenTable(database, table).Read(column, key, name);
        return cells.size() == 1 ? cells[0] : std::to_string(cells.size()) + " rows";
    }
    std::string Port(const char* column) const {
        return Cell("AlarmFwd_COMProperties", "Description", "COM 1", column);
    }
    std::string Pager(const char* column, const char* name = "duty") const {
        return Cell("AlarmFwd_PagerSetting", "description", name, column);
    }
};

TEST_F(SiteTables, HoldAPort) {
    Import(R"([[port]]
name = "COM 1"
baud = 19200
flow = "xon/xoff"
init = "ATE0"
reset = "ATZ1"
[port.pager]
dial = "ATDT0,"
prompt = "?"
parity = "odd"
[port.sms1]
dial = "ATDT1"
[port.sms2]
dial = "ATDT2"
stop = 2
)");
    const std::pair<const char*, const char*> cells[] = {
        {"Baud", "19200"},      {"Flow", "XON/XOFF"},  {"Select", "1"},
        {"Init", "ATE0"},       {"Reset", "ATZ1"},     {"PagerData", "8"},
        {"PagerParity", "Odd"}, {"PagerStop", "1"},    {"PagerDial", "ATDT0,"},
        {"PagerActivity", "?"}, {"SMS1Data", "7"},     {"SMS1Parity", "Even"},
        {"SMS1Stop", "1"},      {"SMS1Dial", "ATDT1"}, {"SMS1Protocol", "TAP"},
        {"SMS1Restrict", ""},   {"SMS2Data", "8"},     {"SMS2Parity", "None"},
        {"SMS2Stop", "2"},      {"SMS2Dial", "ATDT2"}, {"SMS2Protocol", "UCP"},
        {"SMS2Restrict", ""},
    };
    for (const auto& [column, cell] : cells) {
        EXPECT_EQ(cell, Port(column)) << column;
    }
}

TEST_F(SiteTables, HoldTheDeviceOfAPort) {
    Import(
        "[[port]]\nname = \"north\"\ndevice = \"/dev/serial/by-id/usb-x\"\n"
        "[[port]]\nname = \"COM 1\"\n");
    Lease lease(database);
    Statement devices(lease.Database(),
                      "SELECT group_concat(Description || '=' || device) FROM"
                      " (SELECT * FROM AlarmFwd_COMProperties ORDER BY row_id)");
    devices.Step();
    EXPECT_EQ("north=/dev/serial/by-id/usb-x,COM 1=", devices.Text(0));
}

TEST_F(SiteTables, HoldAPortWithoutAModem) {
    Import("[[port]]\nname = \"COM 1\"\nmodem = false\n");
    EXPECT_EQ("0", Port("Select"));
    EXPECT_EQ("None", Port("Flow"));
}

TEST_F(SiteTables, HoldAPager) {
    Import(
        "[[pager]]\ndescription = \"duty\"\nowner = \"Anna\"\nport = \"COM 1\"\n"
        "type = \"numeric\"\nnumber = \"1@2\"\nretries = 3\ndelay = 15\nhours = \"office\"\n");
    EXPECT_EQ("Anna", Pager("owner"));
    EXPECT_EQ("COM 1", Pager("comport"));
    EXPECT_EQ("1", Pager("pgtype"));
    EXPECT_EQ("1@2", Pager("pgnumber"));
    EXPECT_EQ("3", Pager("numretries"));
    EXPECT_EQ("15", Pager("retrydelay"));
    EXPECT_EQ("office", Pager("timemodel"));
}

TEST_F(SiteTables, HaveANumberForEachType) {
    const std::pair<const char*, const char*> types[] = {{"signal", "0"},       {"numeric", "1"},
                                                         {"alphanumeric", "2"}, {"ntt", "3"},
                                                         {"sms1", "4"},         {"sms2", "5"}};
    for (const auto& [word, code] : types) {
        Import("[[pager]]\ndescription = \"duty\"\ntype = \"" + std::string(word) +
               "\"\nnumber = \"1\"\n");
        EXPECT_EQ(code, Pager("pgtype")) << word;
    }
}

// The library takes the first 168 cells of the row by their place.
TEST_F(SiteTables, HoldTheHoursInTheirPlaces) {
    Import("[[hours]]\nname = \"office\"\nmon = \"0-1\"\ntue = \"8-10\"\nsun = \"23-24\"\n");
    const OpenTable hours(database, "AlarmFwd_TMSetting");
    DBAsciiRowSet rows = nullptr;
    ASSERT_EQ(
        1, DBAsciiAccessGetAllEntriesByCondition(hours.handle, "AlarmFwd_TMSetting", "description",
                                                 &rows, 0, "office", 'r', nullptr, 'n', 0, 0));
    std::vector<int> allowed;
    for (int hour = 0; hour < 168; ++hour) {
        if (rows[0][hour][0] == '1') {
            allowed.push_back(hour);
        } else {
            EXPECT_STREQ("0", rows[0][hour]);
        }
    }
    EXPECT_STREQ("office", rows[0][168]);
    DBAsciiAccessFree(rows);
    EXPECT_THAT(allowed, ElementsAre(0, 24 + 8, 24 + 9, 167));
}

TEST_F(SiteTables, AlwaysHaveTheHoursOfAPagerThatNamesNone) {
    Import("[[pager]]\ndescription = \"duty\"\ntype = \"sms1\"\nnumber = \"1\"\n");
    EXPECT_EQ("always", Pager("timemodel"));
    for (const char* hour : {"mon_00", "wed_13", "sun_23"}) {
        EXPECT_EQ("1", Cell("AlarmFwd_TMSetting", "description", "always", hour));
    }
}

TEST_F(SiteTables, LeaveAlwaysToTheFileThatSaysIt) {
    Import("[[hours]]\nname = \"always\"\nmon = \"8-9\"\n");
    EXPECT_EQ("0", Cell("AlarmFwd_TMSetting", "description", "always", "sun_23"));
}

TEST_F(SiteTables, HoldTextsInTheEncodingOfTheLines) {
    Import("[[pager]]\ndescription = \"J\xC3\xBCrgen\"\ntype = \"ntt\"\nnumber = \"1\"\n");
    EXPECT_EQ("1", Pager("pgnumber", "J\xFCrgen"));
    Lease lease(database);
    EXPECT_EQ(Encoding::kLatin1, EncodingOf(lease.Database()));

    Import(
        "encoding = \"shift_jis\"\n"
        "[[pager]]\ndescription = \"\xEF\xBD\xB1\xC2\xA5\"\ntype = \"ntt\"\nnumber = \"1\"\n");
    EXPECT_EQ("1", Pager("pgnumber", "\xB1\\"));
    EXPECT_EQ(Encoding::kShiftJis, EncodingOf(lease.Database()));
}

TEST_F(SiteTables, ReplaceTheSiteButNotTheAlarms) {
    Import(
        "[[port]]\nname = \"COM 1\"\n[[pager]]\ndescription = \"old\"\ntype = \"ntt\"\n"
        "number = \"1\"\n[[hours]]\nname = \"old\"\n");
    ASSERT_EQ(0, OpenTable(database, "AlarmLog").Insert({{"alarmlogID", 7}}));
    ASSERT_EQ(0, OpenTable(database, "AlarmFwd_PagerEvents").Insert({{"AlmLogID", 7}}));
    Import(
        "[[port]]\nname = \"COM 2\"\n[[pager]]\ndescription = \"new\"\ntype = \"ntt\"\n"
        "number = \"1\"\n[[hours]]\nname = \"new\"\n");
    Lease lease(database);
    EXPECT_THAT(PagerNames(lease.Database()), ElementsAre("new"));
    EXPECT_THAT(TimeModelNames(lease.Database()), ElementsAre("new", "always"));
    EXPECT_EQ("0 rows", Port("Baud"));
    EXPECT_THAT(OpenTable(database, "AlarmLog").ReadAll("alarmlogID"), ElementsAre("7"));
    EXPECT_THAT(OpenTable(database, "AlarmFwd_PagerEvents").ReadAll("AlmLogID"), ElementsAre("7"));
}

TEST_F(SiteTables, KeepTheOldSiteWhenTheNewOneCanNotBeStored) {
    Import("[[pager]]\ndescription = \"old\"\ntype = \"ntt\"\nnumber = \"1\"\n");
    Lease lease(database);
    lease.Database().Execute(
        "CREATE TRIGGER full BEFORE INSERT ON AlarmFwd_TMSetting"
        " BEGIN SELECT RAISE(ABORT, 'the disk is full'); END");
    const ReadSite read =
        ParseSite("[[pager]]\ndescription = \"new\"\ntype = \"ntt\"\nnumber = \"1\"\n");
    EXPECT_THROW(StoreSite(lease.Database(), read.site), StoreError);
    EXPECT_THAT(PagerNames(lease.Database()), ElementsAre("old"));
}

TEST_F(SiteTables, GiveAPagerBack) {
    Import(
        "[[pager]]\ndescription = \"duty\"\nport = \"COM 3\"\ntype = \"sms2\"\n"
        "number = \"1\"\nhours = \"office\"\n");
    Lease lease(database);
    const std::vector<PagerRow> pagers = FindPagers(lease.Database(), "duty");
    ASSERT_EQ(1U, pagers.size());
    EXPECT_EQ("duty", pagers[0].description);
    EXPECT_EQ("COM 3", pagers[0].port);
    EXPECT_EQ("5", pagers[0].type);
    EXPECT_EQ("1", pagers[0].number);
    EXPECT_EQ("office", pagers[0].timeModel);
    EXPECT_THAT(FindPagers(lease.Database(), "Duty"), IsEmpty());
}

}  // namespace
}  // namespace host
