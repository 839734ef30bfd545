// What the program's end of the line means to the modem: DTR, and the bits of a character.
#include <gmock/gmock.h>

#include "tests/unit/sim/modem_fixture.h"

namespace pagersim {
namespace {

using ::testing::ElementsAre;

class ModemLine : public ModemTest {
 protected:
    void CloseAndOpen() {
        modem_->Closed();
        Open();
    }

    // A speed of 0 drops DTR as closing does.
    void DropAndRaise() {
        modem_->SettingsChanged({});
        Set(CS8);
    }
};

TEST_F(ModemLine, SpeedZeroHangsUp) {
    Connect();
    DropAndRaise();
    EXPECT_EQ(nullptr, keeper_.call);
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemLine, CallStandsWhereDtrMeansNothing) {
    options_.dtr = DtrDrop::kIgnored;
    Connect();
    DropAndRaise();
    EXPECT_NE(nullptr, keeper_.call);
    modem_->Closed();
    keeper_.call->Say("lost");
    wire_.Read(1000ms);
    Open();
    EXPECT_EQ("", To("ATZ\r", kLong)) << "this is data";
    EXPECT_EQ("ATZ\r", keeper_.heard);
    keeper_.call->Say("still here");
    EXPECT_EQ("still here", wire_.Read(0ms));
}

TEST_F(ModemLine, CentreThatHangsUpEndsACallThatWasLeftStanding) {
    options_.dtr = DtrDrop::kIgnored;
    Connect();
    modem_->Closed();
    keeper_.call->HangUp();
    wire_.Read(1000ms);
    EXPECT_EQ(nullptr, keeper_.call);
    Open();
    EXPECT_EQ("ATZ\r\r\nOK\r\n", To("ATZ\r"));
}

TEST_F(ModemLine, EscapeGoesOnWhileTheLineIsClosed) {
    options_.dtr = DtrDrop::kIgnored;
    Connect();
    To("+++", 500ms);
    modem_->Closed();
    wire_.Read(kLong);
    Open();
    EXPECT_EQ("ATH\r\r\nNO CARRIER\r\n\r\nOK\r\n", To("ATH\r"));
}

TEST_F(ModemLine, DtrMayEscapeInstead) {
    To("AT&D1\r");
    Connect();
    CloseAndOpen();
    EXPECT_NE(nullptr, keeper_.call);
    EXPECT_EQ("ATH\r\r\nNO CARRIER\r\n\r\nOK\r\n", To("ATH\r"));
    EXPECT_EQ(nullptr, keeper_.call);
}

TEST_F(ModemLine, EscapingByDtrGivesUpDialling) {
    To("AT&D1\r");
    To("ATDT1234567\r");
    CloseAndOpen();
    EXPECT_EQ("", wire_.Read(kLong));
    EXPECT_EQ(nullptr, keeper_.call);
}

TEST_F(ModemLine, DtrMayResetAsWell) {
    To("ATE0S12=10&D3\r");
    Opened().Heard("ATDT1234567\r");
    wire_.Read(kLong);
    ASSERT_NE(nullptr, keeper_.call);
    CloseAndOpen();
    EXPECT_EQ(nullptr, keeper_.call);
    EXPECT_EQ("ATS12?\r\r\n050\r\n\r\nOK\r\n", To("ATS12?\r"));
}

TEST_F(ModemLine, HangingUpByDtrKeepsTheSettings) {
    To("ATS12=10\r");
    CloseAndOpen();
    EXPECT_EQ("ATS12?\r\r\n010\r\n\r\nOK\r\n", To("ATS12?\r"));
}

TEST_F(ModemLine, WhatDtrMeansCanBeSetByCommandUntilTheNextReset) {
    options_.dtr = DtrDrop::kIgnored;
    for (const char* reset : {"ATZ\r", "AT&F\r"}) {
        modem_.reset();
        To("AT&D2\r");
        Connect();
        CloseAndOpen();
        EXPECT_EQ(nullptr, keeper_.call) << reset;
        To(reset);
        Connect();
        CloseAndOpen();
        EXPECT_NE(nullptr, keeper_.call) << reset;
    }
}

TEST_F(ModemLine, WhatWasToBeSaidIsNotSaidOnceDtrHasDropped) {
    options_.answer_piece = 1;
    Opened().Heard("AT\r");
    wire_.Read(options_.answer_delay);
    CloseAndOpen();
    EXPECT_EQ("", wire_.Read(kLong));
}

// The bits of a character.

TEST_F(ModemLine, CentreHearsSevenBitsOfEachCharacterOnASevenBitLine) {
    Opened();
    Set(CS7 | PARENB);
    Connect();
    To("caf\xe9\xff\x80");
    EXPECT_EQ(std::string_view("cafi\x7f\0", 6), keeper_.heard);
    EXPECT_EQ(std::string_view("cafi\x7f\0", 6), recorder_.Texts(EventKind::kSends).back());
}

TEST_F(ModemLine, AndItsCallerSevenOfWhatItSays) {
    Opened();
    Set(CS7 | PARENB);
    Connect();
    keeper_.call->Say("caf\xe9");
    EXPECT_EQ("cafi", wire_.Read(0ms));
}

TEST_F(ModemLine, EightBitsGoThroughWhole) {
    Connect();
    To("caf\xe9");
    EXPECT_EQ("caf\xe9", keeper_.heard);
    keeper_.call->Say("\xff");
    EXPECT_EQ("\xff", wire_.Read(0ms));
}

TEST_F(ModemLine, FewerBitsLoseMore) {
    Opened();
    for (const auto& [size, heard] : {std::pair{CS5, '\x1f'}, {CS6, '\x3f'}}) {
        Set(static_cast<tcflag_t>(size));
        modem_->Heard("\xff");
        EXPECT_THAT(recorder_.Texts(EventKind::kSends).back(), ElementsAre(heard));
        Set(CS8);
    }
}

}  // namespace
}  // namespace pagersim
