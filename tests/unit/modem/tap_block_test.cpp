// The TAP block: known answers of TAP 1.8, chapter 5, and the rules around them.

#include "modem/tap_block.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string TapSumOf(const std::string& bytes) {
    return std::string(CheckSum(CString(bytes.data(), static_cast<int>(bytes.size()))));
}

std::string BlockOf(const char* number, const char* message) {
    const CString block = CreateD1Block(number, message);
    return {block, static_cast<size_t>(block.GetLength())};
}

struct SumCase {
    const char* what;
    std::string bytes;
    std::string sum;
};

class TapCheckSum : public ::testing::TestWithParam<SumCase> {};

TEST_P(TapCheckSum, IsAsPublished) {
    EXPECT_EQ(GetParam().sum, TapSumOf(GetParam().bytes)) << GetParam().what;
}

const SumCase kSums[] = {
    {"nothing", "", "000"},
    {"the standard's example: 379 = 0x17B",
     "\x02"
     "123\rABC\r\x03",
     "17;"},
    {"an accented letter counts its low seven bits",
     "\x02"
     "123\r"
     "AB\xE9\r\x03",
     "1:1"},
    {"an empty message",
     "\x02"
     "02\r\r\x03",
     "081"},
    {"a delete character alone: 0x07F", "\x7F", "07?"},
    {"a byte of all ones counts as much", "\xFF", "07?"},
    {"0x80 counts nothing", "\x80", "000"},
    {"the letter digits in order: 0xABC", std::string(21, '\x7F') + "\x51", ":;<"},
    {"0xDEF", std::string(28, '\x7F') + "\x0B", "=>?"},
    {"the highest sum of twelve bits: 0xFFF", std::string(32, '\x7F') + "\x1F", "???"},
    {"one more: only twelve bits count", std::string(32, '\x7F') + "\x20", "000"},
};

INSTANTIATE_TEST_SUITE_P(Texts, TapCheckSum, ::testing::ValuesIn(kSums));

TEST(TapCheckSumRule, EachDigitIsZeroPlusFourBits) {
    // "A" counts 65 and "\x01" counts 1: every sum from 0 to 0x1FF in turn.
    for (unsigned sum = 0; sum < 0x200; ++sum) {
        const std::string bytes = std::string(sum / 65, 'A') + std::string(sum % 65, '\x01');
        const std::string digits = {static_cast<char>(0x30 + sum / 256),
                                    static_cast<char>(0x30 + sum / 16 % 16),
                                    static_cast<char>(0x30 + sum % 16)};
        EXPECT_EQ(digits, TapSumOf(bytes)) << "of a sum of " << sum;
    }
}

TEST(TapBlock, IsTheStandardsExample) {
    EXPECT_EQ(
        "\x02"
        "123\rABC\r\x03"
        "17;\r",
        BlockOf("123", "ABC"));
}

TEST(TapBlock, HoldsAnEmptyMessage) {
    EXPECT_EQ(
        "\x02"
        "02\r\r\x03"
        "081\r",
        BlockOf("02", ""));
}

TEST(TapBlock, SendsABareAccentAsItIs) {
    EXPECT_EQ(
        "\x02"
        "123\r"
        "AB\xE9\r\x03"
        "1:1\r",
        BlockOf("123", "AB\xE9"));
}

TEST(TapBlock, NeitherEscapesNorCuts) {
    const std::string message = "a\tb\x1B" + std::string(500, 'x');
    const std::string block = BlockOf("7", message.c_str());
    EXPECT_EQ(
        "\x02"
        "7\r" +
            message + "\r\x03",
        block.substr(0, block.size() - 4));
    EXPECT_EQ(TapSumOf(block.substr(0, block.size() - 4)) + "\r", block.substr(block.size() - 4));
}

TEST(TapBlock, ASecondBlockHoldsNothingOfTheFirst) {
    const CString first = CreateD1Block("1", "a long first message");
    const CString second = CreateD1Block("02", "");
    EXPECT_EQ(second,
              "\x02"
              "02\r\r\x03"
              "081\r");
    EXPECT_EQ(first.Left(3),
              "\x02"
              "1\r");
}

}  // namespace
