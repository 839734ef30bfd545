// The look-ups over the port table, which is filled here by hand.

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/modem/handler_test.h"

namespace {

class PortSettings : public HandlerTest {
 protected:
    PortSettings() { MakeHandler(); }

    // Behind the entries that are there; the handler owns it from now on.
    static ComPort& AddEntry(const char* name) {
        size_t index = 0;
        while (CCOMHdl::COMPortTable[index] != nullptr) {
            ++index;
        }
        auto* port = new ComPort;
        port->name = name;
        port->modemSet = new ModemSet;
        CCOMHdl::COMPortTable[index] = port;
        return *port;
    }

    // Each setting named after itself.
    static ComPort& AddSpeakingEntry(const char* name) {
        ComPort& port = AddEntry(name);
        port.baud = "baud";
        port.pagerData = "data";
        port.pagerParity = "parity";
        port.pagerStop = "stop";
        port.flow = "flow";
        port.sms1Parity = "parity1";
        port.sms1Stop = "stop1";
        port.sms1Data = "data1";
        port.sms2Parity = "parity2";
        port.sms2Stop = "stop2";
        port.sms2Data = "data2";
        ModemSet& modem = *port.modemSet;
        modem.init = "init";
        modem.reset = "reset";
        modem.dialPrefix = "dial";
        modem.activityPrompt = "prompt";
        modem.sms1Number = "number1";
        modem.sms1Protocol = "protocol1";
        modem.sms2Number = "number2";
        modem.sms2Protocol = "protocol2";
        modem.sms1Cut80 = "cut1";
        modem.sms2Cut80 = "cut2";
        return port;
    }

    static HANDLE Handle(uintptr_t value) { return reinterpret_cast<HANDLE>(value); }
};

TEST_F(PortSettings, KeepTheParityBeforeTheDataBits) {
    AddSpeakingEntry("COM 1");
    EXPECT_EQ(handler->GetCOMPortSetting("COM 1"), "baud;parity;data;stop;flow;");
}

TEST_F(PortSettings, OfAModemPortGoOnWithItsModem) {
    AddSpeakingEntry("COM 1").isModem = true;
    EXPECT_EQ(handler->GetCOMPortSetting("COM 1"),
              "baud;parity;data;stop;flow;init;reset;dial;prompt;"
              "protocol1;parity1;data1;stop1;number1;protocol2;parity2;data2;stop2;number2;");
}

TEST_F(PortSettings, ThatAreEmptyKeepTheirPlace) {
    AddEntry("COM 1");
    EXPECT_EQ(handler->GetCOMPortSetting("COM 1"), ";;;;;");
}

TEST_F(PortSettings, AreFoundByTheExactNameOnly) {
    AddSpeakingEntry("COM 1");
    for (const char* name : {"COM 2", "COM1", "com 1", "COM 1 ", "COM", ""}) {
        EXPECT_EQ(handler->GetCOMPortSetting(name), "") << name;
        EXPECT_EQ(~0UL, handler->GetCOMPortId(name)) << name;
    }
}

TEST_F(PortSettings, AreNoneWithoutAPort) {
    EXPECT_EQ(handler->GetCOMPortSetting("COM 1"), "");
    EXPECT_EQ(~0UL, handler->GetCOMPortId("COM 1"));
}

TEST_F(PortSettings, OfTheFirstPortOfANameWin) {
    AddEntry("COM 1").baud = "other";
    AddEntry("COM 2").baud = "first";
    AddEntry("COM 2").baud = "second";
    EXPECT_EQ(handler->GetCOMPortSetting("COM 2").Left(6), "first;");
}

TEST_F(PortSettings, EndAtTheFirstNullEntry) {
    AddEntry("COM 1");
    AddEntry("COM 2").baud = "2400";
    std::swap(CCOMHdl::COMPortTable[1], CCOMHdl::COMPortTable[2]);
    EXPECT_EQ(handler->GetCOMPortSetting("COM 2"), "");
    EXPECT_EQ(~0UL, handler->GetCOMPortId("COM 2"));
    std::swap(CCOMHdl::COMPortTable[1], CCOMHdl::COMPortTable[2]);
}

TEST_F(PortSettings, ReachTheNinthPort) {
    for (const char* name : {"1", "2", "3", "4", "5", "6", "7", "8", "9"}) {
        AddEntry(name).handle = Handle(static_cast<uintptr_t>(name[0]));
    }
    EXPECT_EQ(static_cast<unsigned long>('9'), handler->GetCOMPortId("9"));
    EXPECT_EQ(~0UL, handler->GetCOMPortId("10"));
}

TEST_F(PortSettings, HaveTheHandleAsTheId) {
    AddEntry("COM 1").handle = Handle(0x1234);
    AddEntry("COM 2").handle = Handle(0x5678);
    EXPECT_EQ(0x1234UL, handler->GetCOMPortId("COM 1"));
    EXPECT_EQ(0x5678UL, handler->GetCOMPortId("COM 2"));
}

TEST_F(PortSettings, AreNeverLoadedByName) {
    AddSpeakingEntry("COM 1").isModem = true;
    const CString before = handler->GetCOMPortSetting("COM 1");
    for (const char* name : {"COM 1", "COM 9", "COM", "5", ""}) {
        EXPECT_EQ(handler->LoadCOMPortSetting(name), "") << name;
    }
    EXPECT_EQ(before, handler->GetCOMPortSetting("COM 1"));
}

}  // namespace
