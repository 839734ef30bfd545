// The modem, seen from its program's end of the line: commands, dialling, faults.
#include <gmock/gmock.h>

#include "sim/phone/line_settings.h"
#include "sim/record/transcript.h"
#include "tests/unit/sim/modem_fixture.h"

namespace pagersim {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// What an independent modem emulator does to the commands of a paging program, row by row.

TEST_F(ModemTest, PlusesWhileIdleAreEchoedWithoutOk) {
    EXPECT_EQ("+++", To("+++"));
}

TEST_F(ModemTest, HangingUpWhileIdleIsAnsweredTwice) {
    EXPECT_EQ("ATHV1\r\n\r\nOK\r\n\r\nOK\r\n", To("ATHV1\r\n"));
}

TEST_F(ModemTest, SecondOkIsStillUnreadWhenTheNextCommandGoesOut) {
    EXPECT_EQ("+++ATHV1\r\n\r\nOK\r\n", To("+++ATHV1\r\n", options_.answer_delay));
    EXPECT_EQ("ATZ\r\r\nOK\r\n\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemTest, LineFeedBehindTheCommandIsOnlyEchoed) {
    EXPECT_EQ("ATZ\r\n\r\nOK\r\n", To("ATZ\r\n"));
}

TEST_F(ModemTest, ResetAndFactorySettingsAreAnswered) {
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
    EXPECT_EQ("AT&FV1\r\r\nOK\r\n", To("AT&FV1\r"));
}

TEST_F(ModemTest, EchoIsOnAfterFactorySettings) {
    EXPECT_EQ("ATE0\r\r\nOK\r\n", To("ATE0\r"));
    EXPECT_EQ("\r\nOK\r\n", To("AT&FV1\r")) << "this one is not yet echoed";
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemTest, ConnectComesWithTheSpeedAndTheCentresFirstBytes) {
    Opened().Heard("ATDT0,1234567\r");
    EXPECT_EQ("ATDT0,1234567\r", wire_.Read(2800ms + 4000ms + 2499ms));
    EXPECT_EQ("\r\nCONNECT 2400\r\nID=", wire_.Read(1ms));
}

TEST_F(ModemTest, PlusesWithoutGuardTimeReachTheCentreAndEscape) {
    options_.escape = {480ms, false};
    Connect();
    Opened().Heard("\x04\r");
    EXPECT_EQ("", To("+++", 499ms));
    EXPECT_EQ("\x04\r+++", keeper_.heard);
    EXPECT_EQ("\r\nOK\r\n", wire_.Read(1ms));
}

TEST_F(ModemTest, HangingUpOnLineSaysNoCarrierThenOk) {
    ConnectAndEscape();
    EXPECT_EQ("ATHV1\r\n\r\nNO CARRIER\r\n\r\nOK\r\n", To("ATHV1\r\n"));
    EXPECT_EQ(nullptr, keeper_.call);
}

TEST_F(ModemTest, NoCarrierAndOkComeInTwoReads) {
    ConnectAndEscape();
    EXPECT_EQ("ATHV1\r\n\r\nNO CARRIER\r\n", To("ATHV1\r\n", options_.answer_delay));
    EXPECT_EQ("\r\nOK\r\n", wire_.Read(options_.answer_gap));
}

TEST_F(ModemTest, OrInOne) {
    options_.answer_gap = 0ms;
    ConnectAndEscape();
    EXPECT_EQ("ATHV1\r\n\r\nNO CARRIER\r\n\r\nOK\r\n", To("ATHV1\r\n", options_.answer_delay));
}

TEST_F(ModemTest, NumberOfNobodyEndsInNoCarrier) {
    EXPECT_EQ("ATDT0,1\r\r\nNO CARRIER\r\n", To("ATDT0,1\r", kLong));
    EXPECT_THAT(recorder_.Texts(EventKind::kNotes), ElementsAre("nobody has the number 01"));
}

TEST_F(ModemTest, OrInBusyOrNoAnswer) {
    options_.phone.unknown_number = Answer::kBusy;
    EXPECT_EQ("ATDT1\r\r\nBUSY\r\n", To("ATDT1\r", kLong));
    modem_.reset();
    options_.phone.unknown_number = Answer::kNoAnswer;
    EXPECT_EQ("ATDT1\r\r\nNO ANSWER\r\n", To("ATDT1\r", kLong));
}

// Other answers to a dial.

TEST_F(ModemTest, BusyCentre) {
    Add("busy", "11", [](Subscriber& subscriber) { subscriber.fate = Fate::kBusy; });
    EXPECT_EQ("ATDT11\r\r\nBUSY\r\n", To("ATDT11\r", kLong));
}

TEST_F(ModemTest, CentreThatIsBusyAtFirst) {
    Add("busy", "11", [](Subscriber& subscriber) { subscriber.busy_calls = 1; });
    EXPECT_EQ("ATDT11\r\r\nBUSY\r\n", To("ATDT11\r", kLong));
    EXPECT_EQ("ATDT11\r\r\nCONNECT 2400\r\nID=", To("ATDT11\r", kLong));
}

TEST_F(ModemTest, CentreThatNeverAnswers) {
    Add("away", "11", [](Subscriber& subscriber) { subscriber.fate = Fate::kNoAnswer; });
    EXPECT_EQ("ATDT11\r", To("ATDT11\r", 50'199ms));
    EXPECT_EQ("\r\nNO ANSWER\r\n", wire_.Read(1ms));
}

TEST_F(ModemTest, CentreThatAnswersTooLate) {
    Add("slow", "11", [](Subscriber& subscriber) { subscriber.answers_after = 60'000ms; });
    EXPECT_EQ("ATDT11\r\r\nNO ANSWER\r\n", To("ATDT11\r", kLong));
}

TEST_F(ModemTest, CentreWithoutAModemThatTrains) {
    Add("fax", "11", [](Subscriber& subscriber) { subscriber.fate = Fate::kNoCarrier; });
    EXPECT_EQ("ATDT11\r\r\nNO CARRIER\r\n", To("ATDT11\r", kLong));
}

TEST_F(ModemTest, VoiceThatIsDialledForData) {
    EXPECT_EQ("ATDT7654321\r", To("ATDT7654321\r", 10'000ms));
    EXPECT_NE(nullptr, keeper_.call) << "it has answered, but not as a modem does";
    EXPECT_EQ("\r\nNO CARRIER\r\n", wire_.Read(kLong));
    EXPECT_EQ(nullptr, keeper_.call);
}

TEST_F(ModemTest, DeadTelephoneLine) {
    options_.phone.dial_tone = false;
    EXPECT_EQ("ATDT0,1234567\r\r\nNO DIALTONE\r\n", To("ATDT0,1234567\r", kLong));
}

TEST_F(ModemTest, BrokenDialStringIsAnError) {
    EXPECT_EQ("ATDT55X\r\r\nERROR\r\n", To("ATDT55X\r"));
}

TEST_F(ModemTest, WaitForACarrierCanBeSet) {
    Add("away", "11", [](Subscriber& subscriber) { subscriber.fate = Fate::kNoAnswer; });
    To("ATS7=5\r");
    EXPECT_EQ("ATDT11\r\r\nNO ANSWER\r\n", To("ATDT11\r", 5200ms));
}

TEST_F(ModemTest, SpeedBehindConnectIsTheLinesOrASetOneOrNone) {
    options_.connect_speed = 9600;
    EXPECT_THAT(To("ATDT1234567\r", kLong), HasSubstr("\r\nCONNECT 9600\r\n"));
    modem_.reset();
    options_.connect_speed = 0;
    EXPECT_THAT(To("ATDT1234567\r", kLong), HasSubstr("\r\nCONNECT\r\n"));
}

TEST_F(ModemTest, TypingWhileItDialsGivesUp) {
    Opened().Heard("ATDT0,1234567\r");
    wire_.Read(1000ms);
    EXPECT_EQ("\r\nNO CARRIER\r\n++", To("+++", kLong)) << "the first character is used up";
    EXPECT_EQ(nullptr, keeper_.call);
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemTest, LineFeedBehindTheDialCommandDoesNot) {
    Opened().Heard("ATDT1234567\r\n");
    wire_.Read(124ms);
    EXPECT_THAT(To("\n", kLong), HasSubstr("CONNECT"));
}

// Commands.

TEST_F(ModemTest, NumbersInsteadOfWords) {
    EXPECT_EQ("ATV0\r0\r", To("ATV0\r"));
    EXPECT_EQ("ATX9?\r4\r", To("ATX9?\r"));
    EXPECT_EQ("ATDT1\r3\r", To("ATDT1\r", kLong));
    EXPECT_EQ("ATV1\r\r\nOK\r\n", To("ATV1\r"));
}

TEST_F(ModemTest, QuietModemAnswersNothing) {
    EXPECT_EQ("ATQ1\r", To("ATQ1\r"));
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemTest, CommandsWithoutEffectAreTaken) {
    EXPECT_EQ("ATB0L1M1N1P0T1X4Y0W1&C1&D2&K3\\N3%C0*Q1S0=0\r\r\nOK\r\n",
              To("ATB0L1M1N1P0T1X4Y0W1&C1&D2&K3\\N3%C0*Q1S0=0\r"));
}

TEST_F(ModemTest, OthersAreErrors) {
    for (const char* bad :
         {"ATG", "ATE2", "ATV9", "ATQ2", "ATH2", "ATS7=256", "ATS7", "AT&D4", "AT+FCLASS=0"}) {
        EXPECT_EQ(std::string(bad) + "\r\r\nERROR\r\n", To(std::string(bad) + "\r"));
    }
}

TEST_F(ModemTest, CommandsBeforeTheErrorCount) {
    EXPECT_EQ("ATE0G\r\r\nERROR\r\n", To("ATE0G\r"));
    EXPECT_EQ("\r\nOK\r\n", To("AT\r"));
}

TEST_F(ModemTest, NothingAfterTheErrorCounts) {
    To("ATGE0\r");
    EXPECT_EQ("AT\r\r\nOK\r\n", To("AT\r"));
}

TEST_F(ModemTest, HookOffChangesNothing) {
    EXPECT_EQ("ATH1\r\r\nOK\r\n", To("ATH1\r"));
}

TEST_F(ModemTest, RegistersAreKept) {
    To("ATS7=45S0=1\r");
    EXPECT_EQ("ATS7?\r\r\n045\r\n\r\nOK\r\n", To("ATS7?\r"));
    To("ATZ\r");
    EXPECT_EQ("ATS7?\r\r\n050\r\n\r\nOK\r\n", To("ATS7?\r"));
    EXPECT_EQ("ATS0?\r\r\n000\r\n\r\nOK\r\n", To("ATS0?\r"));
}

TEST_F(ModemTest, RegistersWithAnEffectShowIt) {
    EXPECT_EQ("ATS8?\r\r\n002\r\n\r\nOK\r\n", To("ATS8?\r"));
    EXPECT_EQ("ATS12?\r\r\n050\r\n\r\nOK\r\n", To("ATS12?\r"));
    To("ATS8=3S12=2\r");
    EXPECT_EQ("ATS8?S12?\r\r\n003\r\n\r\n002\r\n\r\nOK\r\n", To("ATS8?S12?\r"));
    modem_.reset();
    options_.phone.carrier_wait = 300'000ms;
    EXPECT_EQ("ATS7?\r\r\n255\r\n\r\nOK\r\n", To("ATS7?\r")) << "the largest that there is";
}

TEST_F(ModemTest, CommaLastsAsTheRegisterSays) {
    To("ATS8=4\r");
    Opened().Heard("ATDT0,1\r");
    EXPECT_EQ("ATDT0,1\r", wire_.Read(200ms + 4000ms + 2999ms));
    EXPECT_EQ("\r\nNO CARRIER\r\n", wire_.Read(1ms));
}

TEST_F(ModemTest, SettingsLastOverClosing) {
    To("ATE0\r");
    modem_->Closed();
    Open();
    EXPECT_EQ("\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemTest, ClosingForgetsAnUnfinishedCommand) {
    To("ATG");
    modem_->Closed();
    Open();
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemTest, CommandMayComeInPieces) {
    EXPECT_EQ("AT", To("AT"));
    EXPECT_EQ("Z", To("Z"));
    EXPECT_EQ("\r\r\nOK\r\n", To("\r"));
}

TEST_F(ModemTest, AnswerTakesItsTime) {
    EXPECT_EQ("ATZ\r", To("ATZ\r", 19ms));
    EXPECT_EQ("\r\nOK\r\n", wire_.Read(1ms));
}

// Faults of the modem and its line.

TEST_F(ModemTest, AnswersInPiecesOfEverySize) {
    const std::string whole = "ATZ\r\r\nOK\r\n";
    for (std::size_t size = 1; size <= whole.size(); ++size) {
        options_.answer_piece = size;
        modem_.reset();
        std::vector<std::string> reads = {To("ATZ\r", 0ms)};
        for (int i = 0; i < 20; ++i) {
            reads.push_back(wire_.Read(options_.piece_gap));
        }
        std::string joined;
        for (const std::string& read : reads) {
            EXPECT_LE(read.size(), size);
            joined += read;
        }
        EXPECT_EQ(whole, joined) << size;
    }
}

TEST_F(ModemTest, SwitchedOffModemSaysNothing) {
    options_.powered = false;
    EXPECT_EQ("", To("+++ATHV1\r\nATZ\r", kLong));
    EXPECT_THAT(recorder_.Texts(EventKind::kSends), ElementsAre("+++ATHV1\r\nATZ\r"));
}

TEST_F(ModemTest, DeviceVanishesAfterSoManyBytes) {
    options_.vanish_after = 6;
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
    EXPECT_FALSE(wire_.Vanished());
    EXPECT_EQ("", To("ATZ\r"));
    EXPECT_TRUE(wire_.Vanished());
}

TEST_F(ModemTest, VanishedDeviceComesBackForGood) {
    options_.vanish_after = 6;
    To("ATZ\rATZ\r");
    ASSERT_TRUE(wire_.Vanished());
    modem_->Closed();
    Open();
    Connect();
}

TEST_F(ModemTest, BeforeOpeningNothingHappens) {
    Modem modem("COM 1", options_, exchange_, recorder_);
    modem.Heard("ATZ\r");
    modem.SettingsChanged({});
    modem.Closed();
    EXPECT_THAT(recorder_.events, IsEmpty());
}

// The record.

TEST_F(ModemTest, EverythingIsRecorded) {
    Connect();
    keeper_.call->Deliver({"123", "HELLO"});
    keeper_.call->Note("well done");
    modem_->Closed();
    std::string lines;
    for (const Event& event : recorder_.events) {
        Transcript alone;
        lines += alone.Add(event);
        lines += alone.Finish();
    }
    EXPECT_EQ(
        "    0.000  COM 1  program  # opens the line\n"
        "    0.000  COM 1  program  # sets the line to 2400,n,8,1\n"
        "    0.000  COM 1  program  > ATDT0,1234567<cr>\n"
        "    0.000  COM 1  modem    < ATDT0,1234567<cr>\n"
        "    9.300  COM 1  modem    < <cr><lf>CONNECT 2400<cr><lf>\n"
        "    9.300  COM 1  centre   # answers 1234567\n"
        "    9.300  COM 1  centre   < ID=\n"
        "  120.000  COM 1  centre   = page for 123: HELLO\n"
        "  120.000  COM 1  centre   # well done\n"
        "  120.000  COM 1  centre   # the call is over\n"
        "  120.000  COM 1  program  # closes the line\n",
        lines);
}

TEST(LineSettings, InWords) {
    termios settings{};
    settings.c_cflag = CS8;
    cfsetspeed(&settings, B2400);
    EXPECT_EQ("2400,n,8,1", DescribeLine(settings));
    settings.c_cflag = CS7 | PARENB | CSTOPB | CRTSCTS;
    cfsetspeed(&settings, B9600);
    EXPECT_EQ("9600,e,7,2 rts/cts", DescribeLine(settings));
    settings.c_cflag = CS6 | PARENB | PARODD;
    settings.c_iflag = IXON;
    cfsetspeed(&settings, B460800);
    EXPECT_EQ("460800,o,6,1 xon/xoff", DescribeLine(settings));
    settings = {};
    EXPECT_EQ("0,n,5,1", DescribeLine(settings));
}

}  // namespace
}  // namespace pagersim
