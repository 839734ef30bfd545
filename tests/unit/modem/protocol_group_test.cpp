// Which dial command a protocol uses.

#include "modem/protocol_group.h"

#include <gtest/gtest.h>

#include <string>

namespace {

ModemSet SomeModem() {
    ModemSet modem;
    modem.dialPrefix = "ATDT0,5550100";
    modem.sms1Number = "ATDT0,5550101";
    modem.sms2Number = "ATDT0,5550102";
    return modem;
}

struct DialCase {
    const char* what;
    unsigned char protocol;
    const char* number;
    const char* command;
};

class DialCommandOf : public ::testing::TestWithParam<DialCase> {};

TEST_P(DialCommandOf, IsTheProtocolsThenTheNumber) {
    const DialCase& c = GetParam();
    EXPECT_EQ(DialCommand(SomeModem(), c.protocol, c.number), c.command) << c.what;
}

const DialCase kCases[] = {
    {"signal pager", 0, "", "ATDT0,5550100"},
    {"numeric pager", 1, "77", "ATDT0,555010077"},
    {"alphanumeric pager", 2, "77", "ATDT0,555010077"},
    {"NTT pager", 3, "77;", "ATDT0,555010077;"},
    {"first SMS service", 4, "", "ATDT0,5550101"},
    {"first SMS service, with a number", 4, "9", "ATDT0,55501019"},
    {"second SMS service", 5, "", "ATDT0,5550102"},
    {"no known protocol: nothing of its own", 6, "77", "77"},
    {"the highest code", 255, "", ""},
};

INSTANTIATE_TEST_SUITE_P(Protocols, DialCommandOf, ::testing::ValuesIn(kCases));

TEST(DialCommandSize, IsWhatTheTableHolds) {
    ModemSet modem;
    modem.dialPrefix = CString('1', 64 * 1024);
    EXPECT_EQ(64 * 1024 + 3, DialCommand(modem, kSignalPager, "234").GetLength());
}

TEST(DialCommandText, IsNeverAFormat) {
    ModemSet modem;
    modem.dialPrefix = "ATDT%s%n";
    EXPECT_EQ(DialCommand(modem, kSignalPager, "%d"), "ATDT%s%n%d");
}

}  // namespace
