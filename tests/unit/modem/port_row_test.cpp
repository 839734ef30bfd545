// From a table row to a usable port.

#include "modem/port_row.h"

#include <gtest/gtest.h>

#include <memory>

#include "tables/com_ports.h"

namespace {

class PortRow : public ::testing::Test {
 protected:
    // The row's texts point to literals: nothing here frees or writes them.
    static char* Text(const char* text) { return const_cast<char*>(text); }

    PortRow() {
        modem.init = Text("init");
        modem.reset = Text("reset");
        modem.pagerDial = Text("dial");
        modem.pagerActivity = Text("prompt");
        modem.sms1Dial = Text("number1");
        modem.sms1Protocol = Text("protocol1");
        modem.sms2Dial = Text("number2");
        modem.sms2Protocol = Text("protocol2");
        modem.sms1Restrict = Text("1");
        modem.sms2Restrict = Text("1");
        row.description = Text("COM 4");
        row.baud = Text("baud");
        row.pagerData = Text("data");
        row.pagerParity = Text("parity");
        row.pagerStop = Text("stop");
        row.flow = Text("flow");
        row.select = true;
        row.modem = &modem;
        row.sms1Parity = Text("parity1");
        row.sms1Stop = Text("stop1");
        row.sms1Data = Text("data1");
        row.sms2Parity = Text("parity2");
        row.sms2Stop = Text("stop2");
        row.sms2Data = Text("data2");
    }

    // The port and its modem strings, which the port itself does not free.
    const ComPort& Make() {
        port = MakeComPort(row);
        set.reset(port->modemSet);
        return *port;
    }

    DBComPortModem modem{};
    DBComPort row{};
    std::unique_ptr<ComPort> port;
    std::unique_ptr<ModemSet> set;
};

TEST_F(PortRow, GivesThePortItsSettings) {
    const ComPort& made = Make();
    EXPECT_EQ(made.name, "COM 4");
    EXPECT_EQ(made.baud, "baud");
    EXPECT_EQ(made.pagerData, "data");
    EXPECT_EQ(made.pagerParity, "parity");
    EXPECT_EQ(made.pagerStop, "stop");
    EXPECT_EQ(made.flow, "flow");
    EXPECT_TRUE(made.isModem);
    EXPECT_EQ(made.sms1Parity, "parity1");
    EXPECT_EQ(made.sms1Stop, "stop1");
    EXPECT_EQ(made.sms1Data, "data1");
    EXPECT_EQ(made.sms2Parity, "parity2");
    EXPECT_EQ(made.sms2Stop, "stop2");
    EXPECT_EQ(made.sms2Data, "data2");
    EXPECT_FALSE(made.inUse);
    EXPECT_EQ(nullptr, made.handle);
}

TEST_F(PortRow, GivesTheModemItsStrings) {
    const ModemSet& made = *Make().modemSet;
    EXPECT_EQ(made.init, "init");
    EXPECT_EQ(made.reset, "reset");
    EXPECT_EQ(made.dialPrefix, "dial");
    EXPECT_EQ(made.activityPrompt, "prompt");
    EXPECT_EQ(made.sms1Number, "number1");
    EXPECT_EQ(made.sms1Protocol, "protocol1");
    EXPECT_EQ(made.sms2Number, "number2");
    EXPECT_EQ(made.sms2Protocol, "protocol2");
}

TEST_F(PortRow, KeepsItsRestrictionsToItself) {
    EXPECT_EQ(Make().modemSet->sms1Cut80, "");
    EXPECT_EQ(Make().modemSet->sms2Cut80, "");
}

TEST_F(PortRow, WithoutAModemStillHasModemStrings) {
    row.select = false;
    EXPECT_FALSE(Make().isModem);
    EXPECT_EQ(Make().modemSet->init, "init");
}

TEST_F(PortRow, WithMissingColumnsGivesEmptyTexts) {
    modem = DBComPortModem{};
    row = DBComPort{};
    row.description = Text("COM 4");
    row.modem = &modem;
    const ComPort& made = Make();
    EXPECT_EQ(made.baud, "");
    EXPECT_EQ(made.sms2Data, "");
    EXPECT_EQ(made.modemSet->dialPrefix, "");
}

}  // namespace
