// Which ports the handler finds, on simulated lines.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "tests/unit/modem/handler_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using namespace std::chrono_literals;

class Exploration : public HandlerTest {
 protected:
    pagersim::ScriptedLine& AddLine(int com) { return lines.emplace_back(com); }

    // Of the usable ports, in table order.
    static std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const ComPort* port : CCOMHdl::COMPortTable) {
            if (port == nullptr) {
                break;
            }
            names.emplace_back(port->name);
        }
        return names;
    }

    std::deque<pagersim::ScriptedLine> lines;
};

TEST_F(Exploration, FindsAPortWithADeviceAndARow) {
    AddLine(1);
    AddPort("COM 1", {{"Baud", "9600"}, {"Flow", "Hardware"}});
    MakeHandler();
    ASSERT_THAT(Names(), ElementsAre("COM 1"));
    const ComPort& port = *CCOMHdl::COMPortTable[0];
    EXPECT_EQ(port.baud, "9600");
    EXPECT_EQ(port.flow, "Hardware");
    EXPECT_TRUE(port.isModem);
    EXPECT_FALSE(port.inUse);
    EXPECT_EQ(port.sms1Parity, "Even");
    EXPECT_EQ(port.modemSet->dialPrefix, "ATDT0,5550110");
    EXPECT_EQ(port.modemSet->sms1Number, "ATDT0,5550111");
    EXPECT_EQ(port.modemSet->sms2Number, "ATDT0,5550112");
}

TEST_F(Exploration, PacksThePorts) {
    AddLine(2);
    AddLine(5);
    AddLine(9);
    AddPort("COM 9");
    AddPort("COM 5");
    AddPort("COM 2");
    MakeHandler();
    EXPECT_THAT(Names(), ElementsAre("COM 2", "COM 5", "COM 9"));
}

TEST_F(Exploration, LeavesOutADeviceWithoutARow) {
    AddLine(1);
    AddLine(3);
    AddPort("COM 3");
    MakeHandler();
    EXPECT_THAT(Names(), ElementsAre("COM 3"));
    EXPECT_EQ(1, lines[0].Opens());
    EXPECT_EQ(1, lines[0].Closes());
}

TEST_F(Exploration, LeavesOutARowWithoutADevice) {
    AddLine(3);
    AddPort("COM 1");
    AddPort("COM 3");
    MakeHandler();
    EXPECT_THAT(Names(), ElementsAre("COM 3"));
    EXPECT_THAT(store.CallsWith("\"COM 1\""), IsEmpty()) << "not even looked up";
}

TEST_F(Exploration, LooksForOneBlankInTheDescription) {
    AddLine(1);
    AddPort("COM1");
    AddPort("COM  1");
    MakeHandler();
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(Exploration, ProbesNinePortsAndNoMore) {
    for (int com = 1; com <= 9; ++com) {
        AddLine(com);
        AddPort("COM " + std::to_string(com));
    }
    AddPort("COM 10");
    AddPort("COM 0");
    MakeHandler();
    EXPECT_THAT(Names(), ElementsAre("COM 1", "COM 2", "COM 3", "COM 4", "COM 5", "COM 6", "COM 7",
                                     "COM 8", "COM 9"));
    EXPECT_THAT(store.CallsWith("COM 10"), IsEmpty());
    EXPECT_THAT(store.CallsWith("COM 0"), IsEmpty());
}

TEST_F(Exploration, OpensEachPortOnceAndClosesIt) {
    AddLine(1);
    AddLine(2);
    AddPort("COM 1");
    AddPort("COM 2");
    MakeHandler();
    for (const pagersim::ScriptedLine& line : lines) {
        EXPECT_EQ(1, line.Opens());
        EXPECT_EQ(1, line.Closes());
        EXPECT_EQ("", line.Heard());
    }
}

TEST_F(Exploration, KeepsTheHandleOfTheProbe) {
    AddLine(1);
    AddLine(2);
    AddPort("COM 1");
    AddPort("COM 2");
    MakeHandler();
    const HANDLE first = CCOMHdl::COMPortTable[0]->handle;
    const HANDLE second = CCOMHdl::COMPortTable[1]->handle;
    EXPECT_NE(INVALID_HANDLE_VALUE, first);
    EXPECT_NE(nullptr, first);
    EXPECT_NE(first, second);
    EXPECT_EQ(reinterpret_cast<unsigned long>(second), handler->GetCOMPortId("COM 2"));
}

TEST_F(Exploration, TakesNoTime) {
    for (int com = 1; com <= 9; ++com) {
        AddLine(com);
        AddPort("COM " + std::to_string(com));
    }
    MakeHandler();
    EXPECT_GT(1000ms, pagersim::VirtualClock::Now());
}

TEST_F(Exploration, SeesAPortThatComesLaterOnlyWhenMadeAnew) {
    AddPort("COM 1");
    MakeHandler();
    AddLine(1);
    EXPECT_THAT(Names(), IsEmpty());
    MakeHandler();
    EXPECT_THAT(Names(), ElementsAre("COM 1"));
}

TEST_F(Exploration, ASecondTimeLeavesNothingOfTheFirst) {
    AddLine(1);
    AddLine(2);
    AddPort("COM 1");
    AddPort("COM 2");
    MakeHandler();
    lines[0].PlugOut();
    const CCOMHdl second(test_support::MemoryStore::kDatabase);
    EXPECT_THAT(Names(), ElementsAre("COM 2"));
}

TEST_F(Exploration, KeepsMessagesWholeWhateverTheRowRestricts) {
    AddLine(1);
    AddPort("COM 1", {{"SMS1Restrict", "1"}, {"SMS2Restrict", "1"}});
    MakeHandler();
    ASSERT_THAT(Names(), SizeIs(1));
    EXPECT_EQ(CCOMHdl::COMPortTable[0]->modemSet->sms1Cut80, "");
    EXPECT_EQ(CCOMHdl::COMPortTable[0]->modemSet->sms2Cut80, "");
}

TEST_F(Exploration, FindsAPortWithoutAModem) {
    AddLine(1);
    AddPort("COM 1", {{"Select", "0"}});
    MakeHandler();
    ASSERT_THAT(Names(), SizeIs(1));
    EXPECT_FALSE(CCOMHdl::COMPortTable[0]->isModem);
}

TEST_F(Exploration, WithoutADatabaseFindsNothing) {
    AddLine(1);
    AddPort("COM 1");
    handler = std::make_unique<CCOMHdl>("no such database");
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(1, lines[0].Closes());
}

}  // namespace
