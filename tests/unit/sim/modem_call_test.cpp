// The modem with a call: data state, escape, hanging up, and calls that stay in command state.
#include <gmock/gmock.h>

#include "sim/centres/ntt_exchange.h"
#include "tests/unit/sim/modem_fixture.h"

namespace pagersim {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

// Data state.

TEST_F(ModemTest, BytesGoBothWays) {
    Connect();
    EXPECT_EQ("", To("\x1bPG1\r")) << "no echo on line";
    EXPECT_EQ("\x1bPG1\r", keeper_.heard);
    keeper_.call->Say("\x06\r");
    EXPECT_EQ("\x06\r", wire_.Read());
}

TEST_F(ModemTest, EscapeNeedsASecondOfSilenceOnBothSides) {
    Connect();
    Opened().Heard("data");
    EXPECT_EQ("", wire_.Read(kUsualGuard));
    EXPECT_EQ("", To("+++", kUsualGuard - 1ms));
    EXPECT_EQ("\r\nOK\r\n", wire_.Read(1ms));
}

TEST_F(ModemTest, GuardTimeCanBeSet) {
    options_.escape.guard = 700ms;
    Connect();
    EXPECT_EQ("", To("+++", 719ms));
    EXPECT_EQ("\r\nOK\r\n", wire_.Read(1ms));
}

TEST_F(ModemTest, GuardTimeCanBeSetByCommand) {
    To("ATS12=10\r");
    Connect();
    EXPECT_EQ("", To("+++", 219ms));
    EXPECT_EQ("\r\nOK\r\n", wire_.Read(1ms));
}

TEST_F(ModemTest, ResetAndFactorySettingsBringTheUsualGuardTimeBack) {
    for (const char* command : {"ATZ\r", "AT&F\r"}) {
        modem_.reset();
        To("ATS12=10\r");
        To(command);
        Connect();
        EXPECT_EQ("", To("+++", kUsualGuard - 1ms)) << command;
        EXPECT_EQ("\r\nOK\r\n", wire_.Read(1ms)) << command;
    }
}

TEST_F(ModemTest, WithoutAGuardTimeCommandsMayFollowAtOnce) {
    To("ATS12=0\r");
    Connect();
    EXPECT_EQ("\r\nOK\r\nATH\r\r\nNO CARRIER\r\n\r\nOK\r\n", To("bye+++ATH\r"));
    EXPECT_EQ("bye+++", keeper_.heard);
    EXPECT_EQ(nullptr, keeper_.call);
}

TEST_F(ModemTest, CommandsASecondBehindThePlusesAreTooEarlyAndReachTheCentre) {
    Connect();
    EXPECT_EQ("", To("+++", 1010ms));
    EXPECT_EQ("", To("ATHV1\r\n", 2010ms));
    EXPECT_EQ("", To("ATZ\r", kLong));
    EXPECT_EQ("+++ATHV1\r\nATZ\r", keeper_.heard);
    EXPECT_NE(nullptr, keeper_.call);
}

TEST_F(ModemTest, PlusesRightBehindDataAreNoEscape) {
    Connect();
    Opened().Heard("\x04\r");
    EXPECT_EQ("", To("+++", kLong));
    EXPECT_EQ("\r\nOK\r\n", To("+++", kUsualGuard));
}

TEST_F(ModemTest, InCommandStateTheCentreIsNotHeard) {
    ConnectAndEscape();
    keeper_.call->Say("hello");
    EXPECT_EQ("", wire_.Read(1000ms));
    EXPECT_EQ("ATE1\r\r\nOK\r\n", To("ATE1\r"));
    EXPECT_EQ("+++", keeper_.heard);
}

TEST_F(ModemTest, CommandReturnsToData) {
    ConnectAndEscape();
    EXPECT_EQ("ATO\r\r\nCONNECT 2400\r\n", To("ATO\r"));
    To("data");
    EXPECT_EQ("+++data", keeper_.heard);
}

TEST_F(ModemTest, WithoutACallThereIsNoData) {
    EXPECT_EQ("ATO\r\r\nNO CARRIER\r\n", To("ATO\r"));
}

TEST_F(ModemTest, DialOnAStandingConnectionIsAnError) {
    ConnectAndEscape();
    EXPECT_EQ("ATDT1\r\r\nERROR\r\n", To("ATDT1\r"));
}

TEST_F(ModemTest, CentreDropsTheCarrierBehindItsLastWord) {
    Connect();
    keeper_.call->Say("bye", 100ms);
    keeper_.call->HangUp();
    EXPECT_EQ("", wire_.Read(99ms));
    EXPECT_EQ("bye\r\nNO CARRIER\r\n", wire_.Read(1ms));
    EXPECT_EQ(nullptr, keeper_.call);
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemTest, NothingIsSaidOnceTheCallIsOver) {
    Connect();
    keeper_.call->Say("late", 500ms);
    keeper_.call->At(500ms, [] { FAIL() << "the call is over"; });
    modem_->Closed();
    EXPECT_EQ("", wire_.Read(kLong));
}

TEST_F(ModemTest, ResetHangsUp) {
    ConnectAndEscape();
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
    EXPECT_EQ(nullptr, keeper_.call);
}

TEST_F(ModemTest, ClosingHangsUp) {
    Connect();
    modem_->Closed();
    EXPECT_EQ(nullptr, keeper_.call);
    Open();
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemTest, ClosingWhileItDialsGivesUp) {
    To("ATDT1234567\r");
    modem_->Closed();
    Open();
    EXPECT_EQ("", wire_.Read(kLong));
    EXPECT_EQ(nullptr, keeper_.call);
}

TEST_F(ModemTest, SemicolonKeepsTheCallAndTheCommandState) {
    EXPECT_EQ("ATDT0,7654321;\r\r\nOK\r\n", To("ATDT0,7654321;\r", 2800ms));
    EXPECT_EQ(nullptr, keeper_.call) << "it rings";
    wire_.Read(4000ms);
    ASSERT_NE(nullptr, keeper_.call);
    EXPECT_EQ("ATDT*2*216176796##;\r\r\nOK\r\n", To("ATDT*2*216176796##;\r", 5000ms));
    EXPECT_EQ("*2*216176796##", keeper_.dialled);
    EXPECT_EQ("", wire_.Read(kLong)) << "a voice is not heard";
}

TEST_F(ModemTest, TonesBeforeTheAnswerAreLost) {
    To("ATDT0,7654321;\r", 2800ms);
    EXPECT_EQ("ATDT12;\r\r\nOK\r\n", To("ATDT12;\r", 1000ms));
    wire_.Read(kLong);
    EXPECT_EQ("", keeper_.dialled);
    EXPECT_THAT(recorder_.Texts(EventKind::kNotes),
                ElementsAre("nobody has answered: tones lost: 12"));
}

TEST_F(ModemTest, HangingUpAVoiceCallIsOkTwice) {
    To("ATDT0,7654321;\r", 10'000ms);
    EXPECT_EQ("+++ATHV1\r\n\r\nOK\r\n\r\nOK\r\n", To("+++ATHV1\r\n"));
    EXPECT_EQ(nullptr, keeper_.call);
}

TEST_F(ModemTest, SemicolonCallToNobodyIsOkToo) {
    EXPECT_EQ("ATDT1;\r\r\nOK\r\n", To("ATDT1;\r", kLong));
    EXPECT_EQ("ATDT22;\r\r\nOK\r\n", To("ATDT22;\r", kLong));
    EXPECT_THAT(recorder_.Texts(EventKind::kNotes),
                ElementsAre("nobody has the number 1", "nobody has answered: tones lost: 22"));
}

TEST_F(ModemTest, SemicolonCallToABusyCentreIsOkToo) {
    Add("busy", "11", [](Subscriber& subscriber) { subscriber.fate = Fate::kBusy; });
    EXPECT_EQ("ATDT11;\r\r\nOK\r\n", To("ATDT11;\r", kLong));
    EXPECT_THAT(recorder_.Texts(EventKind::kNotes), ElementsAre("busy can't be reached"));
}

TEST_F(ModemTest, TonesBehindTheNumberReachWhoAnswers) {
    To("ATDT0,7654321,,4711#;\r", kLong);
    EXPECT_EQ("4711#", keeper_.dialled);
}

TEST_F(ModemTest, StandingCallWithoutASemicolonEndsForWantOfACarrier) {
    To("ATDT7654321;\r", 10'000ms);
    EXPECT_EQ("ATDT12\r\r\nNO CARRIER\r\n", To("ATDT12\r", kLong));
    EXPECT_EQ(nullptr, keeper_.call);
}

TEST_F(ModemTest, NttPageFromEndToEnd) {
    Add("ntt", "5550103", [](Subscriber& subscriber) {
        subscriber.has_modem = false;
        subscriber.make_centre = [] { return std::make_unique<NttExchange>(); };
    });
    To("ATDT0,5550103;\r", 20'000ms);
    To("ATDT*2*2650524640493##;\r", 20'000ms);
    EXPECT_THAT(recorder_.Texts(EventKind::kDelivers), ElementsAre("ﾎﾟｹﾍﾞﾙ"));
    EXPECT_THAT(recorder_.events, Contains(::testing::Field(&Event::recipient, "5550103")));
}

}  // namespace
}  // namespace pagersim
