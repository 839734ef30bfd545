// Test calls, on simulated lines under the virtual clock.
#include "host/line/test_call.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>

#include <string>

#include "host/files/descriptor.h"
#include "sim/testing.h"

namespace host {
namespace {

using pagersim::Milliseconds;

SiteLine North() {
    SiteLine line;
    line.name = "north";
    line.device = "/dev/ttyS0";
    line.modem = true;
    line.baud = 1200;
    line.init = "AT&F";
    line.reset = "ATZ";
    line.pager_dial = "ATX3DP0,";
    return line;
}

class ACall : public ::testing::Test {
 protected:
    static TestCall Make(int stop = -1) {
        return MakeTestCall("/dev/ttyS0", North(), "0,5550101", stop);
    }
    // To the modem's answer to the number.
    pagersim::ScriptedLine& Dialled() {
        return line.Hears("ATV1\r")
            .Says("OK\r\n")
            .Hears("AT&FV1\r")
            .Says("OK\r\n")
            .Hears("ATX3DP0,5550101\r");
    }
    void HangsUpAndIsReset() { line.Hears("ATH\r").Says("OK\r\n").Hears("ATZ\r").Says("OK\r\n"); }

    const pagersim::VirtualClock clock;
    pagersim::ScriptedLine line{1};
};

TEST_F(ACall, IsEndedWhenItIsAnswered) {
    Dialled().Says("\r\nCONNECT 1200\r\n", Milliseconds(20000));
    line.Hears("+++").Says("OK\r\n", Milliseconds(1000));
    HangsUpAndIsReset();
    const TestCall call = Make();
    EXPECT_EQ(kConnected, call.result);
    EXPECT_EQ("CONNECT 1200", call.said);
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ(1, line.Closes());
}

TEST_F(ACall, SaysWhatCameInsteadOfAnAnswer) {
    Dialled().Says("\r\nBUSY\r\n", Milliseconds(5000));
    HangsUpAndIsReset();
    const TestCall call = Make();
    EXPECT_EQ(kNotConnected, call.result);
    EXPECT_EQ("BUSY", call.said);
    EXPECT_EQ("", line.Verdict()) << "no +++, which would be part of the next command";
}

TEST_F(ACall, IsGivenUpWhereNobodyAnswers) {
    Dialled();
    line.Hears("\r").Says("NO CARRIER\r\n");
    HangsUpAndIsReset();
    const TestCall call = Make();
    EXPECT_EQ(kNotConnected, call.result);
    EXPECT_EQ("nobody answered", call.said);
    EXPECT_EQ("", line.Verdict());
    EXPECT_GT(Milliseconds(130000), pagersim::VirtualClock::Now());
}

TEST_F(ACall, IsGivenUpWhenItIsToStop) {
    Dialled();
    line.Hears("\r").Says("NO CARRIER\r\n");
    HangsUpAndIsReset();
    const Descriptor stop(eventfd(1, EFD_CLOEXEC));
    EXPECT_EQ(kNotConnected, Make(stop.Number()).result);
    EXPECT_EQ("", line.Verdict());
    EXPECT_GT(Milliseconds(10000), pagersim::VirtualClock::Now());
}

TEST_F(ACall, IsHungUpByDtrWhereTheModemHearsNoEscape) {
    Dialled().Says("\r\nCONNECT\r\n");
    line.Hears("+++").Hears("ATH\r");
    line.Hears("ATH\r").Says("OK\r\n").Hears("ATZ\r").Says("OK\r\n");
    EXPECT_EQ(kConnected, Make().result);
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ACall, IsToldWhereTheModemDoesNotSayThatItHungUp) {
    Dialled().Says("\r\nCONNECT\r\n");
    line.Hears("+++").Hears("ATH\r").Hears("ATH\r").Hears("ATZ\r");
    const TestCall call = Make();
    EXPECT_EQ(kModemFails, call.result);
    EXPECT_EQ("CONNECT, but the modem doesn't say that it has hung up", call.said);
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ACall, NeedsAModem) {
    line.Hears("ATV1\r").Hears("ATV1\r").Hears("ATV1\r");
    const TestCall call = Make();
    EXPECT_EQ(kModemFails, call.result);
    EXPECT_EQ("the modem doesn't answer", call.said);
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ACall, NeedsAnInitCommandThatTheModemTakes) {
    line.Hears("ATV1\r").Says("OK\r\n").Hears("AT&FV1\r").Says("ERROR\r\n");
    EXPECT_EQ("the modem refuses its init command: ERROR", Make().said);
    EXPECT_EQ("", line.Verdict());
}

TEST_F(ACall, NeedsADevice) {
    line.PlugOut();
    const TestCall call = Make();
    EXPECT_EQ(kLineNotOpened, call.result);
    EXPECT_EQ("/dev/ttyS0 can't be opened: No such file or directory", call.said);
}

TEST_F(ACall, DialsNothingButANumber) {
    EXPECT_EQ(kNotConnected, MakeTestCall("/dev/ttyS0", North(), "1\rAT&W", -1).result);
    EXPECT_EQ(0, line.Opens());
}

TEST(ADialString, IsWhatAModemDials) {
    for (const char* number : {"5550101", "0,5550101", "0W(555) 01-01", "+81 3 5550101", "*70,1",
                               "9!1@2", "T1", "#31#1"}) {
        EXPECT_TRUE(IsDialString(number)) << number;
    }
    for (const char* none : {"", ",", "duty", "1;", "1\r", "1\nATZ", "1\"",
                             ("\xC3\xA4"
                              "1"),
                             "=1"}) {
        EXPECT_FALSE(IsDialString(none)) << none;
    }
    EXPECT_TRUE(IsDialString(std::string(60, '1')));
    EXPECT_FALSE(IsDialString(std::string(61, '1')));
}

struct Form {
    const char* pager;
    const char* sms;
    const char* command;
};

TEST(ADialCommand, HasThePortsFormAndTheNumberWhole) {
    for (const Form& form : {Form{"ATDT0,", "", "ATDT555"}, Form{"ATDP0,5550100", "", "ATDP555"},
                             Form{"", "ATX3DT0,5550101", "ATX3DT555"}, Form{"atd0,1", "", "atd555"},
                             Form{"AT DT 0,1", "", "AT DT555"}, Form{"", "", "ATDT555"},
                             Form{"none", "", "ATDT555"}}) {
        SiteLine line;
        line.pager_dial = form.pager;
        line.sms1_dial = form.sms;
        EXPECT_EQ(form.command, DialCommand(line, "555")) << form.pager << form.sms;
    }
}

}  // namespace
}  // namespace host
