// The two-digit code of NTT pagers, held against the published key chart: ten rows of ten places,
// the first digit naming the row, the second the place, both in the order 1 to 9, then 0.

#include "modem/ntt_code.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "host/text_helpers.h"
#include "modem/COMHdl.h"

namespace {

// A host of another writing than ours, as NttOtherHost has it.
bool isOtherHost = false;

}  // namespace

// It has an upper case for signs and for bytes above ASCII too, each of which begins a character of
// two bytes.
extern "C" {
unsigned int __real__mbctoupper(unsigned int character);
unsigned int __wrap__mbctoupper(unsigned int character) {
    return isOtherHost ? character & ~0x20U : __real__mbctoupper(character);
}
size_t __real__mbclen(const unsigned char* text);
size_t __wrap__mbclen(const unsigned char* text) {
    return isOtherHost && *text >= 0x80 ? 2 : __real__mbclen(text);
}
}

namespace {

// '\0' where the chart has a sign that is not in use here, or none.
constexpr std::string_view kChart[] = {
    {"\xB1\xB2\xB3\xB4\xB5"
     "ABCDE",
     10},  // 11 to 10
    {"\xB6\xB7\xB8\xB9\xBA"
     "FGHIJ",
     10},  // 21 to 20
    {"\xBB\xBC\xBD\xBE\xBF"
     "KLMNO",
     10},  // 31 to 30
    {"\xC0\xC1\xC2\xC3\xC4"
     "PQRST",
     10},  // 41 to 40
    {"\xC5\xC6\xC7\xC8\xC9"
     "UVWXY",
     10},  // 51 to 50
    {"\xCA\xCB\xCC\xCD\xCE"
     "Z\0!-/",
     10},  // 61 to 60
    {"\xCF\xD0\xD1\xD2\xD3"
     "\\&\0\0\0",
     10},  // 71 to 70
    {"\xD4(\xD5)\xD6"
     "*#\0\0\0",
     10},  // 81 to 80
    {"\xD7\xD8\xD9\xDA\xDB"
     "12345",
     10},  // 91 to 90
    {"\xDC\xA6\xDD\xDE\xDF"
     "67890",
     10},  // 01 to 00
};

// Of a byte, as the chart has it.
std::string ChartCode(char byte) {
    for (size_t row = 0; row < 10; ++row) {
        const size_t place = kChart[row].find(byte);
        if (byte != '\0' && place != std::string_view::npos) {
            return {static_cast<char>('0' + (row + 1) % 10),
                    static_cast<char>('0' + (place + 1) % 10)};
        }
    }
    return "67";
}

std::string CodeOf(char byte) {
    return std::string(CCOMHdl::NTTChar(byte));
}

std::string Coded(const char* text) {
    return std::string(CCOMHdl::FormatNTT(text));
}

TEST(NttCode, OfEachByteIsThatOfTheChart) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool isLowerCase = byte >= 'a' && byte <= 'z';
        const char upper = static_cast<char>(isLowerCase ? byte - 'a' + 'A' : byte);
        EXPECT_EQ(ChartCode(upper), CodeOf(static_cast<char>(byte))) << "byte " << byte;
    }
}

TEST(NttCode, IsListedForNinetyThreeCharactersAndSharedByNoTwo) {
    std::set<std::string> codes;
    size_t listed = 0;
    for (int byte = 0; byte < 256; ++byte) {
        const bool isLowerCase = byte >= 'a' && byte <= 'z';
        const std::string code = CodeOf(static_cast<char>(byte));
        if (!isLowerCase && code != "67") {
            ++listed;
            codes.insert(code);
        }
    }
    EXPECT_EQ(93U, listed);
    EXPECT_EQ(listed, codes.size());
}

TEST(NttCode, MatchesPublishedExamples) {
    EXPECT_EQ("650524640493", Coded("\xCE\xDF\xB9\xCD\xDE\xD9")) << "pokeberu";
    EXPECT_EQ("46104837", Coded("perl"));
    EXPECT_EQ("48561750", Coded("ruby"));
    EXPECT_EQ("61056793", Coded("\xCA\xDF\xB0\xD9"))
        << "paaru: the long mark goes as a question mark";
}

TEST(NttCode, OfABlankAndOfUnlistedSignsIsAQuestionMark) {
    EXPECT_EQ("67", CodeOf(' '));
    EXPECT_EQ("67", CodeOf('?'));
    EXPECT_EQ("67", CodeOf('.'));
    EXPECT_EQ("67", CodeOf('\xA7')) << "a small kana";
    EXPECT_EQ("67", CodeOf('\xB0')) << "the long mark";
}

TEST(NttText, IsCodedCharacterByCharacter) {
    EXPECT_EQ("", Coded(""));
    EXPECT_EQ("16176796", Coded("ab 1"));
    EXPECT_EQ(28U, Coded("3/pumps stop 1").size());
}

TEST(NttCommand, DialsTheCodeAndStaysInCommandMode) {
    EXPECT_EQ(NTTDialCommand("ab 1"), "ATDT*2*216176796##;");
    EXPECT_EQ(NTTDialCommand(""), "ATDT*2*2##;");
}

TEST(NttCommand, CodesTheFirstFourteenBytes) {
    EXPECT_EQ(NTTDialCommand("ABCDEFGHIJKLMNOPQRST"),
              "ATDT*2*2"
              "1617181910"
              "2627282920"
              "36373839"
              "##;");
    EXPECT_EQ(NTTDialCommand("ABCDEFGHIJKLMN"), NTTDialCommand("ABCDEFGHIJKLMNO"));
}

// Where the host's texts are Shift_JIS.
class NttShiftJis : public ::testing::Test {
 protected:
    NttShiftJis() { host::UseShiftJis(true); }
    ~NttShiftJis() override { host::UseShiftJis(false); }
};

TEST_F(NttShiftJis, CodesATwoByteCharacterAsOneQuestionMark) {
    EXPECT_EQ("166717", Coded("A\x83|B")) << "the second byte could be taken for a sign";
    EXPECT_EQ("6767", Coded("\x82\xA0\x88\xC0"));
}

TEST_F(NttShiftJis, CodesHalfWidthKatakanaAsSingleBytes) {
    EXPECT_EQ("650524640493", Coded("\xCE\xDF\xB9\xCD\xDE\xD9"));
}

TEST_F(NttShiftJis, CutsByBytes) {
    // Two bytes of the fourteen, one code: 12 + 1 = 13.
    EXPECT_EQ(NTTDialCommand("\x82\xA0"
                             "0123456789012"),
              "ATDT*2*2"
              "67"
              "0096979899900607080900"
              "96"
              "##;");
}

TEST_F(NttShiftJis, CutsInsideACharacter) {
    EXPECT_EQ(NTTDialCommand("0123456789012\x82\xA0"),
              "ATDT*2*2"
              "00969798999006070809"
              "009697"
              "67"
              "##;");
}

TEST_F(NttShiftJis, CodesALeadByteAtTheVeryEnd) {
    EXPECT_EQ("1667", Coded("A\x82"));
}

// The code is that of the pagers, whatever else the host takes for a letter or a character.
class NttOtherHost : public ::testing::Test {
 protected:
    NttOtherHost() { isOtherHost = true; }
    ~NttOtherHost() override { isOtherHost = false; }
};

TEST_F(NttOtherHost, TurnsOnlyTheLettersAToZIntoUpperCase) {
    EXPECT_EQ(CodeOf('A'), CodeOf('a'));
    EXPECT_EQ(CodeOf('Z'), CodeOf('z'));
    EXPECT_EQ("68", CodeOf('!'));
    EXPECT_EQ("00", CodeOf('0'));
    EXPECT_EQ("67", CodeOf('|')) << "no backslash";
    EXPECT_EQ("11", CodeOf('\xB1'));
    EXPECT_EQ("67", CodeOf('\xE0')) << "no kana";
}

TEST_F(NttOtherHost, CodesATwoByteCharacterThatBeginsLikeAKanaAsAQuestionMark) {
    EXPECT_EQ("166717", Coded("A\xB1\xB2"
                              "B"));
}

}  // namespace
