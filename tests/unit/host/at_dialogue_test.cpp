// Commands to a modem and its answers, on simulated lines under the virtual clock.
#include "host/devices/at_dialogue.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "host/files/descriptor.h"
#include "sim/testing.h"

namespace host {
namespace {

using pagersim::Milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TalkWithAModem : public ::testing::Test {
 protected:
    static constexpr Milliseconds kSecond{1000};

    AtAnswer Ask(const std::string& command, Milliseconds longest = kSecond) {
        return AtDialogue("/dev/ttyS0", 9600).Ask(command, longest);
    }

    const pagersim::VirtualClock clock;
    pagersim::ScriptedLine line{1};
};

TEST_F(TalkWithAModem, HearsWhatStandsBetweenTheEchoAndTheResult) {
    line.Hears("ATI\r").Says("ATI\r\r\nMaker\r\n\r\nModel\r\n\r\nOK\r\n");
    const AtAnswer answer = Ask("ATI");
    EXPECT_TRUE(answer.IsOk());
    EXPECT_THAT(answer.said, ElementsAre("Maker", "Model"));
    EXPECT_EQ("", line.Verdict());
    EXPECT_EQ(1, line.Closes());
}

class EachResult : public TalkWithAModem, public ::testing::WithParamInterface<const char*> {};

TEST_P(EachResult, EndsTheAnswer) {
    line.Hears("ATDT1\r").Says("\r\n" + std::string(GetParam()) + "\r\n", Milliseconds(20));
    const AtAnswer answer = Ask("ATDT1", 60 * kSecond);
    EXPECT_EQ(GetParam(), answer.result);
    EXPECT_THAT(answer.said, IsEmpty());
    EXPECT_EQ(answer.result == "OK", answer.IsOk());
    EXPECT_EQ(answer.result.substr(0, 7) == "CONNECT", answer.IsConnect());
    EXPECT_GT(kSecond, pagersim::VirtualClock::Now());
}

INSTANTIATE_TEST_SUITE_P(OfAModem, EachResult,
                         ::testing::Values("OK", "ERROR", "BUSY", "NO CARRIER", "NO DIALTONE",
                                           "NO DIAL TONE", "NO ANSWER", "CONNECT",
                                           "CONNECT 33600/ARQ/V34"));

TEST_F(TalkWithAModem, HearsAResultToItsEnd) {
    line.Hears("ATDT1\r").Says("\r\nCONNECT 12");
    line.Says("00\r\nID=", Milliseconds(300));
    EXPECT_EQ("CONNECT 1200", Ask("ATDT1").result);
}

TEST_F(TalkWithAModem, HearsAnAnswerThatComesByteByByte) {
    line.Hears("AT\r");
    for (const char* byte : {"\r", "\n", "O", "K", "\r", "\n"}) {
        line.Says(byte, Milliseconds(50));
    }
    EXPECT_TRUE(Ask("AT").IsOk());
}

TEST_F(TalkWithAModem, TakesALineThatOnlyBeginsLikeAResultForNone) {
    line.Hears("ATI\r").Says("OKI modem\r\nBUSY\r\n");
    const AtAnswer answer = Ask("ATI");
    EXPECT_EQ("BUSY", answer.result);
    EXPECT_THAT(answer.said, ElementsAre("OKI modem"));
}

TEST_F(TalkWithAModem, TakesNothingFromBeforeForAnAnswer) {
    line.Hears("ATH\r").Says("NO CARRIER\r\n").Says("OK\r\n", Milliseconds(40));
    line.Hears("ATZ\r").Says("ERROR\r\n", Milliseconds(40));
    AtDialogue modem("/dev/ttyS0", 9600);
    EXPECT_EQ("NO CARRIER", modem.Ask("ATH", kSecond).result);
    EXPECT_EQ("ERROR", modem.Ask("ATZ", kSecond).result);
}

TEST_F(TalkWithAModem, WaitsSoLongAndNoLonger) {
    line.HearsAnything(3);
    EXPECT_EQ("", Ask("AT", 2 * kSecond).result);
    EXPECT_LE(2 * kSecond, pagersim::VirtualClock::Now());
    EXPECT_GE(2 * kSecond + Milliseconds(100), pagersim::VirtualClock::Now());
}

TEST_F(TalkWithAModem, EscapesBetweenTwoSilences) {
    line.Hears("ATDT1\r").Says("CONNECT 1200\r\n");
    line.Hears("+++").Says("\r\nOK\r\n", Milliseconds(1100));
    AtDialogue modem("/dev/ttyS0", 9600);
    EXPECT_TRUE(modem.Ask("ATDT1", kSecond).IsConnect());
    EXPECT_TRUE(modem.Escape().IsOk());
    EXPECT_LE(2 * kSecond + Milliseconds(200), pagersim::VirtualClock::Now());
}

TEST_F(TalkWithAModem, HasItsSpeedBackBehindTheDropOfDtr) {
    AtDialogue modem("/dev/ttyS0", 1200);
    modem.DropDtr();
    const termios after = line.Settings();
    EXPECT_EQ(static_cast<speed_t>(B1200), cfgetospeed(&after));
    EXPECT_EQ(kSecond, pagersim::VirtualClock::Now());
}

struct SpeedCase {
    int bits;
    speed_t code;
};

class EachSpeed : public TalkWithAModem, public ::testing::WithParamInterface<SpeedCase> {};

TEST_P(EachSpeed, IsThatOfTheDevice) {
    const AtDialogue modem("/dev/ttyS0", GetParam().bits);
    const termios set = line.Settings();
    EXPECT_EQ(GetParam().code, cfgetospeed(&set));
    EXPECT_EQ(GetParam().code, cfgetispeed(&set));
}

INSTANTIATE_TEST_SUITE_P(OfAPort, EachSpeed,
                         ::testing::Values(SpeedCase{300, B300}, SpeedCase{1200, B1200},
                                           SpeedCase{2400, B2400}, SpeedCase{4800, B4800},
                                           SpeedCase{9600, B9600}, SpeedCase{19200, B19200},
                                           SpeedCase{38400, B38400}, SpeedCase{57600, B57600},
                                           SpeedCase{115200, B115200}, SpeedCase{230400, B230400},
                                           SpeedCase{460800, B460800}, SpeedCase{0, B9600},
                                           SpeedCase{2640, B9600}));

TEST_F(TalkWithAModem, NeedsNoSecondStopBitNorHandshakeAndPutsThemBack) {
    const Descriptor before(open("/dev/ttyS0", O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios two{};
    ASSERT_EQ(0, tcgetattr(before.Number(), &two));
    two.c_cflag |= CSTOPB | CRTSCTS;
    ASSERT_EQ(0, tcsetattr(before.Number(), TCSANOW, &two));
    {
        const AtDialogue modem("/dev/ttyS0", 9600);
        EXPECT_EQ(0U, line.Settings().c_cflag & (CSTOPB | CRTSCTS));
    }
    EXPECT_EQ(static_cast<tcflag_t>(CSTOPB | CRTSCTS),
              line.Settings().c_cflag & (CSTOPB | CRTSCTS));
}

TEST_F(TalkWithAModem, SendsNothingBackWhereTheLineWasATerminal) {
    const Descriptor before(open("/dev/ttyS0", O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios terminal{};
    ASSERT_EQ(0, tcgetattr(before.Number(), &terminal));
    terminal.c_lflag |= ICANON | ECHO;
    terminal.c_iflag |= ICRNL;
    ASSERT_EQ(0, tcsetattr(before.Number(), TCSANOW, &terminal));
    const AtDialogue modem("/dev/ttyS0", 9600);
    EXPECT_EQ(0U, line.Settings().c_lflag & (ICANON | ECHO));
    EXPECT_EQ(0U, line.Settings().c_iflag & ICRNL);
}

TEST_F(TalkWithAModem, EndsWhereTheDeviceGoes) {
    line.Hears("AT\r").Vanishes();
    EXPECT_EQ("", Ask("AT", 60 * kSecond).result);
    EXPECT_GT(kSecond, pagersim::VirtualClock::Now());
}

TEST_F(TalkWithAModem, EndsWhereTheAnswerNeverDoes) {
    line.Hears("AT\r").Says(std::string(100000, 'x'));
    EXPECT_EQ("", Ask("AT", 60 * kSecond).result);
    EXPECT_GT(10 * kSecond, pagersim::VirtualClock::Now());
}

TEST_F(TalkWithAModem, EndsWhereAByteComesNowAndThenAndNoResult) {
    line.Hears("AT\r").Says("x");
    for (int byte = 0; byte < 200; ++byte) {
        line.Says("x", Milliseconds(90));
    }
    EXPECT_EQ("", Ask("AT").result);
    EXPECT_LE(11 * kSecond, pagersim::VirtualClock::Now());
    EXPECT_GE(12 * kSecond, pagersim::VirtualClock::Now());
}

TEST_F(TalkWithAModem, HearsASlowAnswerToItsEnd) {
    line.Hears("ATI\r");
    for (const char byte : std::string("Maker\r\nOK\r\n")) {
        line.Says(std::string(1, byte), Milliseconds(90));
    }
    EXPECT_THAT(Ask("ATI").said, ElementsAre("Maker"));
}

TEST_F(TalkWithAModem, SaysWhyItCant) {
    line.PlugOut();
    EXPECT_EQ("can't be opened: No such file or directory", AtDialogue("/dev/ttyS0", 0).WhyNot());
    EXPECT_EQ("is no serial line", AtDialogue("/dev/null", 0).WhyNot());
}

}  // namespace
}  // namespace host
