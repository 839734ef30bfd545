// The two-touch code, held against the public table, and the exchange that takes it.
#include "sim/centres/ntt_exchange.h"

#include <gmock/gmock.h>

#include "sim/centres/two_touch.h"
#include "tests/unit/sim/fakes.h"

namespace pagersim {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(TwoTouch, PublicWords) {
    EXPECT_EQ("ﾎﾟｹﾍﾞﾙ", DecodeTwoTouch("650524640493"));
    EXPECT_EQ("PERL", DecodeTwoTouch("46104837"));
    EXPECT_EQ("RUBY", DecodeTwoTouch("48561750"));
    EXPECT_EQ("ﾊﾟｰﾙ", DecodeTwoTouch("61056993"));
    EXPECT_EQ("ﾊﾟ?ﾙ", DecodeTwoTouch("61056793"));
}

TEST(TwoTouch, WholeTable) {
    const char* const rows[] = {"ｱｲｳｴｵABCDE", "ｶｷｸｹｺFGHIJ", "ｻｼｽｾｿKLMNO", "ﾀﾁﾂﾃﾄPQRST",
                                "ﾅﾆﾇﾈﾉUVWXY", "ﾊﾋﾌﾍﾎZ?!-/", "ﾏﾐﾑﾒﾓ¥&⏰☎☕", "ﾔ(ﾕ)ﾖ*# ��",
                                "ﾗﾘﾙﾚﾛ12345", "ﾜｦﾝﾞﾟ67890"};
    const std::string keys = "1234567890";
    for (std::size_t row = 0; row < keys.size(); ++row) {
        std::string digits;
        for (const char column : keys) {
            digits += {keys[row], column};
        }
        EXPECT_EQ(rows[row], DecodeTwoTouch(digits));
    }
}

TEST(TwoTouch, StrokeIsAHyphenButBehindKatakana) {
    EXPECT_EQ("A-1", DecodeTwoTouch("166996"));
    EXPECT_EQ("ｱｰｰ", DecodeTwoTouch("116969"));
    EXPECT_EQ("-", DecodeTwoTouch("69"));
    EXPECT_EQ("?-", DecodeTwoTouch("6769"));
}

TEST(TwoTouch, WhatMeansNothingIsShownAsSuch) {
    EXPECT_EQ("A�", DecodeTwoTouch("16*1"));
    EXPECT_EQ("A�", DecodeTwoTouch("161")) << "half a code";
    EXPECT_EQ("", DecodeTwoTouch(""));
}

class NttExchangeTest : public ::testing::Test {
 protected:
    NttExchangeTest() { exchange_.Answered(call_); }

    FakeCall call_;
    NttExchange exchange_;
};

TEST_F(NttExchangeTest, FreeTextIsDecoded) {
    exchange_.Dialled("*2*2650524640493##");
    EXPECT_THAT(call_.Pages(), ElementsAre("5550103: ﾎﾟｹﾍﾞﾙ"));
    EXPECT_EQ("", call_.Hear(60'000ms)) << "it says nothing";
}

TEST_F(NttExchangeTest, DigitsAreShownAsTheyAre) {
    exchange_.Dialled("0840##");
    EXPECT_THAT(call_.Pages(), ElementsAre("5550103: 0840"));
}

TEST_F(NttExchangeTest, DigitsMayComeInSeveralDials) {
    exchange_.Dialled("*2*216");
    EXPECT_THAT(call_.Pages(), IsEmpty());
    exchange_.Dialled("17##*2*218##");
    EXPECT_THAT(call_.Pages(), ElementsAre("5550103: AB", "5550103: C"));
}

TEST_F(NttExchangeTest, WithoutTheEndNothingIsDelivered) {
    exchange_.Dialled("*2*21617#");
    exchange_.Ended();
    EXPECT_THAT(call_.Pages(), IsEmpty());
    EXPECT_THAT(call_.Notes(), ElementsAre("hung up before ##, nothing delivered: *2*21617#"));
}

}  // namespace
}  // namespace pagersim
