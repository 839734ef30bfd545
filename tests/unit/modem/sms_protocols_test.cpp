// The table of the two SMS protocols and the look-ups over it.

#include <gtest/gtest.h>

#include <string>

#include "modem/COMHdl.h"
#include "tests/unit/modem/handler_test.h"

namespace {

class SmsProtocols : public HandlerTest {};

TEST_F(SmsProtocols, AreTwo) {
    MakeHandler();
    SmsProtocol* rows = nullptr;
    ASSERT_EQ(2, CCOMHdl::GetSmsProtocols(&rows));
    ASSERT_EQ(CCOMHdl::SmsTable, rows);
    EXPECT_EQ(1, rows[0].nr);
    EXPECT_EQ(rows[0].name, "TAP");
    EXPECT_EQ(2, rows[1].nr);
    EXPECT_EQ(rows[1].name, "UCP");
    for (const SmsProtocol& row : {rows[0], rows[1]}) {
        EXPECT_EQ(row.parity, "None") << row.name;
        EXPECT_EQ(row.stop, "1") << row.name;
        EXPECT_EQ(row.data, "8") << row.name;
    }
}

TEST_F(SmsProtocols, DialNumbersThatReachNobodyWithoutAnOutsideLine) {
    MakeHandler();
    EXPECT_EQ(CCOMHdl::SmsTable[0].dial, "ATDT5550101");
    EXPECT_EQ(CCOMHdl::SmsTable[1].dial, "ATDT5550102");
}

TEST_F(SmsProtocols, AreFoundByTheirExactName) {
    MakeHandler();
    EXPECT_EQ(&CCOMHdl::SmsTable[0], CCOMHdl::GetSmsProtocol("TAP"));
    EXPECT_EQ(&CCOMHdl::SmsTable[1], CCOMHdl::GetSmsProtocol("UCP"));
    for (const char* name : {"tap", "ucp", "Tap", "TAP ", " TAP", "TA", "TAPP", ""}) {
        EXPECT_EQ(nullptr, CCOMHdl::GetSmsProtocol(name)) << '"' << name << '"';
    }
}

TEST_F(SmsProtocols, AreFilledAgainByEachHandler) {
    MakeHandler();
    CCOMHdl::SmsTable[0].name = "changed";
    CCOMHdl::SmsTable[1].nr = 7;
    MakeHandler();
    EXPECT_EQ(CCOMHdl::SmsTable[0].name, "TAP");
    EXPECT_EQ(2, CCOMHdl::SmsTable[1].nr);
}

}  // namespace
