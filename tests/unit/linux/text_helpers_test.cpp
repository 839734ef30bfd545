// The text functions that a host supplies, as our host does.

#include <gtest/gtest.h>
#include <pagerfwd/text_helpers.h>

#include <cctype>
#include <climits>
#include <string>

#include "host/text_helpers.h"

namespace {

const unsigned char* Bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

std::string Itoa(int value, int radix) {
    char buffer[33];
    EXPECT_EQ(buffer, _itoa(value, buffer, radix));
    return buffer;
}

std::string Ltoa(long value, int radix) {
    char buffer[sizeof(long) * CHAR_BIT + 1];
    EXPECT_EQ(buffer, _ltoa(value, buffer, radix));
    return buffer;
}

TEST(NumberText, IsInTheRadixAskedFor) {
    EXPECT_EQ("0", Itoa(0, 10));
    EXPECT_EQ("2147483647", Itoa(INT_MAX, 10));
    EXPECT_EQ("-2147483648", Itoa(INT_MIN, 10));
    EXPECT_EQ("ff", Itoa(255, 16));
    EXPECT_EQ("zz", Itoa(35 * 36 + 35, 36));
    EXPECT_EQ("1010", Itoa(10, 2));
    EXPECT_EQ("-7", Ltoa(-7, 10));
    EXPECT_EQ(std::to_string(LONG_MAX), Ltoa(LONG_MAX, 10));
    EXPECT_EQ(std::to_string(LONG_MIN), Ltoa(LONG_MIN, 10));
}

TEST(NumberText, ShowsTheBitsOfANegativeNumberUnlessDecimal) {
    EXPECT_EQ("ffffffff", Itoa(-1, 16));
    EXPECT_EQ("1" + std::string(31, '0'), Itoa(INT_MIN, 2));
    EXPECT_EQ(std::string(sizeof(long) * CHAR_BIT, '1'), Ltoa(-1, 2));
}

TEST(NumberText, IsEmptyInARadixThatDoesNotExist) {
    EXPECT_EQ("", Itoa(1, 1));
    EXPECT_EQ("", Itoa(1, 37));
    EXPECT_EQ("", Ltoa(1, 0));
}

TEST(MultiByteText, IsOneOfSingleBytes) {
    const unsigned char* text = Bytes("abcabc\xE9");
    EXPECT_EQ(text + 1, _mbsinc(text));
    EXPECT_EQ(text + 1, _mbschr(text, 'b'));
    EXPECT_EQ(text + 4, _mbsrchr(text, 'b'));
    EXPECT_EQ(text + 6, _mbschr(text, 0xE9));
    EXPECT_EQ(text + 6, _mbsrchr(text, 0xE9));
    EXPECT_EQ(text + 7, _mbschr(text, 0));
    EXPECT_EQ(nullptr, _mbschr(text, 'x'));
    EXPECT_EQ(nullptr, _mbsrchr(text, 'x'));
    EXPECT_EQ(text + 2, _mbsstr(text, Bytes("ca")));
    EXPECT_EQ(text, _mbsstr(text, Bytes("")));
    EXPECT_EQ(nullptr, _mbsstr(text, Bytes("cb")));
    EXPECT_EQ(0, _mbscmp(text, Bytes("abcabc\xE9")));
    EXPECT_GT(0, _mbscmp(Bytes("abc"), Bytes("abd")));
    EXPECT_LT(0, _mbscmp(Bytes("\xE9"), Bytes("a")));
    EXPECT_EQ(7U, _mbslen(text));
}

TEST(CharacterClass, IsThatOfTheCLocale) {
    for (unsigned int each = 0; each < 256; ++each) {
        const int plain = static_cast<int>(each);
        EXPECT_EQ(std::isspace(plain) != 0, _ismbcspace(each) != 0) << each;
        EXPECT_EQ(std::isdigit(plain) != 0, _ismbcdigit(each) != 0) << each;
        EXPECT_EQ(static_cast<unsigned int>(std::toupper(plain)), _mbctoupper(each)) << each;
    }
}

class ShiftJis : public testing::Test {
 protected:
    ~ShiftJis() override { host::UseShiftJis(false); }
};

TEST_F(ShiftJis, IsOffUnlessChosen) {
    EXPECT_EQ(1U, _mbclen(Bytes("\x83\x65")));
}

TEST_F(ShiftJis, HasCharactersOfTwoBytes) {
    host::UseShiftJis(true);
    for (unsigned int each = 0; each < 256; ++each) {
        const unsigned char followed[] = {static_cast<unsigned char>(each), 'A', '\0'};
        const unsigned char alone[] = {static_cast<unsigned char>(each), '\0'};
        const bool isLead = (each > 0x80 && each < 0xA0) || (each > 0xDF && each < 0xFD);
        EXPECT_EQ(isLead ? 2U : 1U, _mbclen(followed)) << each;
        EXPECT_EQ(1U, _mbclen(alone)) << each;
    }
    host::UseShiftJis(false);
    EXPECT_EQ(1U, _mbclen(Bytes("\x83\x65")));
}

TEST_F(ShiftJis, LeavesTheOtherFunctionsAsTheyAre) {
    host::UseShiftJis(true);
    const unsigned char* text = Bytes("\x83\x41");
    EXPECT_EQ(text + 1, _mbsinc(text));
    EXPECT_EQ(text + 1, _mbschr(text, 'A'));
    EXPECT_EQ(2U, _mbslen(text));
}

}  // namespace
