// How a line is set for a protocol: device name, mode text, settings text, flow control.

#include "modem/line_mode.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// Every setting different from every other.
void Fill(ComPort& port) {
    port.baud = "2400";
    port.pagerParity = "None";
    port.pagerData = "8";
    port.pagerStop = "1";
    port.sms1Parity = "Even";
    port.sms1Data = "7";
    port.sms1Stop = "2";
    port.sms2Parity = "odd";
    port.sms2Data = "6";
    port.sms2Stop = "3";
    port.flow = "Hardware";
}

TEST(DeviceName, HasTheFirstDigitFromOneToNine) {
    EXPECT_EQ(DeviceName("COM 3"), "COM3:");
    EXPECT_EQ(DeviceName("COM 1"), "COM1:");
    EXPECT_EQ(DeviceName("COM 9"), "COM9:");
    EXPECT_EQ(DeviceName("COM 10"), "COM1:");
    EXPECT_EQ(DeviceName("COM 05"), "COM5:");
    EXPECT_EQ(DeviceName("4"), "COM4:");
}

TEST(DeviceName, IsEmptyWithoutSuchADigit) {
    EXPECT_EQ(DeviceName("COM"), "");
    EXPECT_EQ(DeviceName("COM 0"), "");
    EXPECT_EQ(DeviceName(""), "");
}

struct ModeCase {
    unsigned char protocol;
    const char* mode;
    const char* settings;
};

class ModeOf : public ::testing::TestWithParam<ModeCase> {};

TEST_P(ModeOf, HasTheSettingsOfItsGroup) {
    ComPort port;
    Fill(port);
    EXPECT_EQ(ModeText("COM3:", port, GetParam().protocol), GetParam().mode);
    EXPECT_EQ(SettingsText(port, GetParam().protocol), GetParam().settings);
}

const ModeCase kModes[] = {
    {0, "COM3:2400,N,8,1", "2400 / 8 / None / 1 (Hardware)"},
    {1, "COM3:2400,N,8,1", "2400 / 8 / None / 1 (Hardware)"},
    {2, "COM3:2400,N,8,1", "2400 / 8 / None / 1 (Hardware)"},
    {3, "COM3:2400,N,8,1", "2400 / 8 / None / 1 (Hardware)"},
    {4, "COM3:2400,E,7,2", "2400 / 7 / Even / 2 (Hardware)"},
    {5, "COM3:2400,o,6,3", "2400 / 6 / odd / 3 (Hardware)"},
    {6, "COM3:2400,", "2400 /  (Hardware)"},
    {255, "COM3:2400,", "2400 /  (Hardware)"},
};

INSTANTIATE_TEST_SUITE_P(Protocols, ModeOf, ::testing::ValuesIn(kModes));

TEST(ModeText, TakesEmptySettingsAsTheyAre) {
    const ComPort port;
    EXPECT_EQ(ModeText("COM1:", port, kSignalPager), "COM1:,,,");
}

struct FlowCase {
    const char* flow;
    bool ctsDsr;
    bool xonXoff;
};

class FlowControlOf : public ::testing::TestWithParam<FlowCase> {};

TEST_P(FlowControlOf, IsSetByTheFirstLetter) {
    DCB before{};
    before.DCBlength = sizeof before;
    before.BaudRate = 2400;
    before.ByteSize = 8;
    before.fDtrControl = DTR_CONTROL_ENABLE;
    DCB block = before;
    SetFlowControl(block, GetParam().flow);

    EXPECT_EQ(GetParam().ctsDsr, block.fOutxCtsFlow == 1 && block.fOutxDsrFlow == 1);
    EXPECT_EQ(GetParam().xonXoff, block.fOutX == 1 && block.fInX == 1);
    EXPECT_EQ(GetParam().xonXoff ? 17 : 0, block.XonChar);
    EXPECT_EQ(GetParam().xonXoff ? 19 : 0, block.XoffChar);
    EXPECT_EQ(GetParam().xonXoff ? 100 : 0, block.XonLim);
    EXPECT_EQ(GetParam().xonXoff ? 100 : 0, block.XoffLim);

    // Nothing else changes.
    block.fOutxCtsFlow = block.fOutxDsrFlow = block.fOutX = block.fInX = 0;
    block.XonChar = block.XoffChar = 0;
    block.XonLim = block.XoffLim = 0;
    EXPECT_EQ(0, memcmp(&before, &block, sizeof before));
}

const FlowCase kFlows[] = {
    {"None", false, false},    {"", false, false},         {"none", false, false},
    {"No", false, false},      {"Software", false, false}, {"Hardware", true, false},
    {"hardware", true, false}, {"H", true, false},         {"XON/XOFF", false, true},
    {"xon", false, true},
};

INSTANTIATE_TEST_SUITE_P(Words, FlowControlOf, ::testing::ValuesIn(kFlows));

}  // namespace
