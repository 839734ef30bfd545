// TAP blocks, held against the published ones.
#include "sim/centres/tap_block.h"

#include <gmock/gmock.h>

#include "sim/centres/tap_codes.h"

namespace pagersim {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string BlockOf(const std::string& fields, char mark = '\x03') {
    const std::string summed = "\x02" + fields + mark;
    return summed + TapChecksum(summed) + "\r";
}

TEST(TapChecksum, OfThePublishedBlocks) {
    EXPECT_EQ("17;", TapChecksum("\x02"
                                 "123\rABC\r\x03"))
        << "TAP 1.8, chapter 5";
    EXPECT_EQ("081", TapChecksum("\x02"
                                 "02\r\r\x03"))
        << "an empty message";
}

TEST(TapChecksum, CountsTheLowSevenBits) {
    EXPECT_EQ("1:1", TapChecksum("\x02"
                                 "123\rAB\xe9\r\x03"));
}

TEST(TapBlock, PublishedBlockIsRead) {
    const TapBlock block = ReadTapBlock(
        "\x02"
        "123\rABC\r\x03"
        "17;\r",
        true);
    EXPECT_EQ(0, block.code);
    EXPECT_THAT(block.fields, ElementsAre("123", "ABC"));
}

TEST(TapBlock, EmptyMessageIsRead) {
    const TapBlock block = ReadTapBlock(
        "\x02"
        "02\r\r\x03"
        "081\r",
        true);
    EXPECT_EQ(0, block.code);
    EXPECT_THAT(block.fields, ElementsAre("02", ""));
}

TEST(TapBlock, WrongChecksumIsToldWithTheRightOne) {
    const TapBlock block = ReadTapBlock(
        "\x02"
        "123\rABC\r\x03"
        "18;\r",
        false);
    EXPECT_EQ(kTapChecksum, block.code);
    EXPECT_EQ("checksum is 17;, not 18;", block.fault);
    EXPECT_THAT(block.fields, IsEmpty());
}

TEST(TapBlock, LengthIsAtMost256) {
    const std::string longest = BlockOf("1\r" + std::string(246, 'x') + "\r");
    ASSERT_EQ(255U, longest.size());
    EXPECT_EQ(0, ReadTapBlock(BlockOf("12\r" + std::string(246, 'x') + "\r"), true).code);
    const TapBlock longer = ReadTapBlock(BlockOf("123\r" + std::string(246, 'x') + "\r"), true);
    EXPECT_EQ(kTapTooLong, longer.code);
    EXPECT_EQ("a block of 257 characters; 256 are allowed", longer.fault);
}

TEST(TapBlock, ShiftedControlIsDecoded) {
    EXPECT_THAT(ReadTapBlock(BlockOf("123\rA\x1aMB\r"), true).fields, ElementsAre("123", "A\rB"));
}

TEST(TapBlock, ShiftedControlMayStandFirstAndLastInAField) {
    EXPECT_THAT(ReadTapBlock(BlockOf("123\r\x1aMB\r"), true).fields, ElementsAre("123", "\rB"));
    EXPECT_THAT(ReadTapBlock(BlockOf("123\rA\x1aM\r"), true).fields, ElementsAre("123", "A\r"));
}

TEST(TapBlock, ShiftWithoutACharacterIsAFault) {
    EXPECT_EQ(kTapFormat, ReadTapBlock(BlockOf("123\rA\x1a\r"), true).code);
}

TEST(TapBlock, EveryCharacterOfTheChecksumCounts) {
    const std::string good = BlockOf("123\rABC\r");
    for (std::size_t from_end = 2; from_end <= 4; ++from_end) {
        std::string bad = good;
        ++bad[bad.size() - from_end];
        EXPECT_EQ(kTapChecksum, ReadTapBlock(bad, true).code) << from_end;
    }
}

TEST(TapBlock, BareControlIsAFault) {
    EXPECT_EQ(kTapFormat, ReadTapBlock(BlockOf("123\rA\tB\r"), false).code);
    EXPECT_EQ(kTapFormat, ReadTapBlock(BlockOf("123\rA\nB\r"), true).code);
    EXPECT_EQ("a bare control in A<ht>B", ReadTapBlock(BlockOf("123\rA\tB\r"), false).fault);
}

TEST(TapBlock, LenientReaderSkipsLineFeedAndNulButCountsThem) {
    const std::string with_nul("123\rA\n\0B\r", 9);
    EXPECT_THAT(ReadTapBlock(BlockOf(with_nul), false).fields, ElementsAre("123", "AB"));
    EXPECT_EQ(kTapChecksum, ReadTapBlock("\x02"
                                         "123\rAB\nC\r\x03"
                                         "17;\r",
                                         false)
                                .code);
}

TEST(TapBlock, FieldsMustEnd) {
    EXPECT_EQ(kTapFormat, ReadTapBlock(BlockOf("123\rABC"), false).code);
    EXPECT_EQ("the last field doesn't end with <cr>",
              ReadTapBlock(BlockOf("123\rABC"), false).fault);
    EXPECT_EQ(kTapFormat, ReadTapBlock(BlockOf("123\rABC", '\x17'), false).code);
}

TEST(TapBlock, MarkSaysWhatFollows) {
    const TapBlock last = ReadTapBlock(BlockOf("123\rABC\r"), true);
    EXPECT_TRUE(last.is_last);
    EXPECT_FALSE(last.field_goes_on);
    const TapBlock further_fields = ReadTapBlock(BlockOf("123\r", '\x17'), true);
    EXPECT_EQ(0, further_fields.code);
    EXPECT_FALSE(further_fields.is_last);
    EXPECT_FALSE(further_fields.field_goes_on);
    EXPECT_THAT(further_fields.fields, ElementsAre("123"));
    const TapBlock rest_of_field = ReadTapBlock(BlockOf("123\rAB", '\x1f'), true);
    EXPECT_EQ(0, rest_of_field.code);
    EXPECT_FALSE(rest_of_field.is_last);
    EXPECT_TRUE(rest_of_field.field_goes_on);
    EXPECT_THAT(rest_of_field.fields, ElementsAre("123", "AB"));
}

TEST(TapBlock, FieldThatHasEndedDoesntGoOn) {
    const TapBlock block = ReadTapBlock(BlockOf("123\rAB\r", '\x1f'), true);
    EXPECT_FALSE(block.is_last);
    EXPECT_FALSE(block.field_goes_on);
}

TEST(TapBlock, ChecksumCountsTheMark) {
    EXPECT_EQ("18?", TapChecksum("\x02"
                                 "123\rABC\r\x17"));
}

TEST(TapBlock, IsWholeWithTheCarriageReturnBehindTheChecksum) {
    const std::string block =
        "\x02"
        "123\rABC\r\x03"
        "17;\r";
    EXPECT_TRUE(IsWholeTapBlock(block));
    for (std::size_t length = 1; length < block.size(); ++length) {
        EXPECT_FALSE(IsWholeTapBlock(block.substr(0, length))) << length;
    }
    EXPECT_TRUE(IsWholeTapBlock(BlockOf("123\r", '\x17')));
    EXPECT_TRUE(IsWholeTapBlock(BlockOf("123\rAB", '\x1f')));
    EXPECT_FALSE(IsWholeTapBlock(BlockOf("123\rAB\r", '\x1e')));
    EXPECT_FALSE(
        IsWholeTapBlock("\x02"
                        "123\rABC\r\x03"
                        "17;X"));
}

}  // namespace
}  // namespace pagersim
