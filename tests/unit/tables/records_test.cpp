// What records are made of: copies of texts, numbers of cells, and giving records back.
#include <gtest/gtest.h>

#include "tables/record_columns.h"
#include "tests/unit/tables/records.h"

namespace {

TEST(CopyOfAText, IsItsOwnAndWhole) {
    std::string text = "COM 1";
    const OwnedText copy(CopyText(text.c_str()));
    text = "COM 2";
    EXPECT_STREQ("COM 1", copy.get());
}

TEST(CopyOfAText, OfNoTextIsNone) {
    EXPECT_EQ(nullptr, CopyText(nullptr));
}

TEST(CopyOfAText, OfTheEmptyTextIsEmpty) {
    const OwnedText copy(CopyText(""));
    EXPECT_STREQ("", copy.get());
}

TEST(NumberOfACell, IsWhatItsStartSays) {
    const struct {
        const char* cell;
        int32_t expected;
    } cases[] = {
        {"0", 0},
        {"7", 7},
        {"-7", -7},
        {"+7", 7},
        {"  7", 7},
        {"007", 7},
        {"7 retries", 7},
        {"7.9", 7},
        {"", 0},
        {"x7", 0},
        {"- 7", 0},
        {nullptr, 0},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483647 - 1},
        {"2147483648", 2147483647},
        {"4294967295", 2147483647},
        {"-2147483649", -2147483647 - 1},
        {"99999999999999999999999", 2147483647},
        {"-99999999999999999999999", -2147483647 - 1},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(each.expected, ToInteger(each.cell)) << Text(each.cell);
    }
}

TEST(GivingARecordBack, IsAllowedForNull) {
    CDB_ComPorts::FreeComPort(nullptr);
    CDB_PagerSettings::FreePager(nullptr);
    CDB_PagerFwdEvents::FreePagerFwdEvent(nullptr);
    CDB_AlarmLog::FreeAlarmLogEntry(nullptr);
    CDB_AlarmLog::FreeAlarmLogFwdInfo(nullptr);
}

// The leak checker of the sanitizer build tells whether all of it is freed.
TEST(GivingARecordBack, IsAllowedWithNullTexts) {
    CDB_ComPorts::FreeComPort(new DBComPort());
    auto* const port = new DBComPort();
    port->modem = new DBComPortModem();
    CDB_ComPorts::FreeComPort(port);
    CDB_PagerSettings::FreePager(new Pager());
    CDB_PagerFwdEvents::FreePagerFwdEvent(new PagerFwdEvent());
    CDB_AlarmLog::FreeAlarmLogEntry(new AlarmLogEntry());
    CDB_AlarmLog::FreeAlarmLogFwdInfo(new AlarmLogFwdInfo());
}

TEST(GivingARecordBack, FreesTextsThatTheCallerMade) {
    auto* const pager = new Pager();
    pager->description = CopyText("anna");
    pager->timeModel = CopyText("office");
    CDB_PagerSettings::FreePager(pager);
}

}  // namespace
