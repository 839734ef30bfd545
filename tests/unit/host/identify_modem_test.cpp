// Asking what is at a device, on simulated lines under the virtual clock.
#include "host/devices/identify_modem.h"

#include <gtest/gtest.h>
#include <termios.h>

#include <string>

#include "sim/testing.h"

namespace host {
namespace {

using pagersim::Milliseconds;

class AskingAModem : public ::testing::Test {
 protected:
    static ModemAnswer Ask(int speed = 9600) { return IdentifyModem("/dev/ttyS0", speed); }

    const pagersim::VirtualClock clock;
    pagersim::ScriptedLine line{1};
};

TEST_F(AskingAModem, TellsWhatItSaysOfItself) {
    line.Hears("AT\r").Says("AT\r\r\nOK\r\n");
    line.Hears("ATI\r").Says("ATI\r\r\nMicro 56", Milliseconds(300));
    line.Says("K V1.2\r\n\r\nOK\r\n", Milliseconds(300));
    const ModemAnswer answer = Ask();
    EXPECT_TRUE(answer.is_modem);
    EXPECT_EQ("Micro 56K V1.2", answer.text);
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ(1, line.Closes());
}

TEST_F(AskingAModem, AsksOnceMoreWhereTheFirstOnlySetTheSpeed) {
    line.Hears("AT\r");
    line.Hears("AT\r").Says("OK\r\n");
    line.Hears("ATI\r").Says("ERROR\r\n");
    const ModemAnswer answer = Ask();
    EXPECT_TRUE(answer.is_modem);
    EXPECT_EQ("OK", answer.text);
    EXPECT_EQ("", line.Verdict());
}

TEST_F(AskingAModem, TakesSeveralLinesForOneAnswer) {
    line.Hears("AT\r").Says("OK\r\n");
    line.Hears("ATI\r").Says("Maker\r\nModel\r\nOK\r\n");
    EXPECT_EQ("Maker, Model", Ask().text);
}

TEST_F(AskingAModem, EndsSoonWhereNobodyAnswers) {
    line.Hears("AT\r");
    line.Hears("AT\r");
    const ModemAnswer answer = Ask();
    EXPECT_FALSE(answer.is_modem);
    EXPECT_EQ("no answer", answer.text);
    EXPECT_EQ("", line.Verdict()) << "and nothing more was asked";
    EXPECT_LE(pagersim::VirtualClock::Now(), Milliseconds(3000));
}

TEST_F(AskingAModem, EndsWhereItNeverEnds) {
    line.Hears("AT\r").Says(std::string(100000, 'x'));
    line.HearsAnything(3);
    EXPECT_EQ("no answer", Ask().text);
}

TEST_F(AskingAModem, EndsWhereTheDeviceGoes) {
    line.Hears("AT\r").Vanishes();
    EXPECT_EQ("no answer", Ask().text);
}

TEST_F(AskingAModem, PutsTheSettingsBack) {
    line.Hears("AT\r").Says("OK\r\n");
    line.Hears("ATI\r").Says("OK\r\n");
    const termios before = line.Settings();
    Ask(300);
    EXPECT_EQ(cfgetospeed(&before), [this] {
        const termios after = line.Settings();
        return cfgetospeed(&after);
    }());
    EXPECT_EQ(before.c_cflag, line.Settings().c_cflag);
}

TEST_F(AskingAModem, SaysWhyItCant) {
    line.PlugOut();
    EXPECT_EQ("can't be opened: No such file or directory", Ask().text);
    EXPECT_EQ("is no serial line", IdentifyModem("/dev/null", 9600).text);
}

}  // namespace
}  // namespace host
