// Texts that go out whatever they hold.
#include "host/text/nearest.h"

#include <gtest/gtest.h>

namespace host {
namespace {

struct LettersCase {
    const char* situation;
    std::string text;
    std::string latin1;
    std::string shift_jis;
};

void PrintTo(const LettersCase& one, std::ostream* out) {
    *out << one.situation;
}

class NearestLetters : public ::testing::TestWithParam<LettersCase> {};

TEST_P(NearestLetters, StandForWhatTheEncodingLacks) {
    EXPECT_EQ(GetParam().latin1, EncodeNearest(GetParam().text, Encoding::kLatin1));
    EXPECT_EQ(GetParam().shift_jis, EncodeNearest(GetParam().text, Encoding::kShiftJis));
}

INSTANTIATE_TEST_SUITE_P(
    All, NearestLetters,
    ::testing::Values(LettersCase{"nothing", "", "", ""},
                      LettersCase{"plain text", "Pump 3 ~", "Pump 3 ~", "Pump 3 ~"},
                      LettersCase{"a dash of a word processor", "2 \u2013 3", "2 - 3", "2 - 3"},
                      LettersCase{"quotation marks", "\u201EA\u201C", ",,A\"", ",,A\x81\x67"},
                      LettersCase{"a euro sign at the end", "5 \u20AC", "5 EUR", "5 EUR"},
                      LettersCase{"what one of the two has", "40 \u00B0C, J\u00FCrgen",
                                  "40 \xB0\x43, J\xFCrgen", "40 \x81\x8B\x43, Jurgen"},
                      LettersCase{"Latin letters of other languages", "\u0141\u00F3d\u017A",
                                  "L\xF3\x64z", "Lodz"},
                      LettersCase{"Cyrillic", "\u041D\u0430\u0441\u043E\u0441 3", "Nasos 3",
                                  "\x84\x4E\x84\x70\x84\x83\x84\x80\x84\x83 3"},
                      LettersCase{"kanji", "\u6771!", "?!", "\x93\x8C!"},
                      LettersCase{"what is known nowhere", "\U0001F600 a", "? a", "? a"},
                      LettersCase{"line ends, tabs and a zero", std::string("a\r\n\tb\0c", 7),
                                  "a   b c", "a   b c"},
                      LettersCase{"delete, and a C1 control", "a\x7F\u009B[b", "a  [b", "a  [b"},
                      LettersCase{"marks that turn the direction", "a\u202E\u2066\u2069z", "a   z",
                                  "a   z"},
                      LettersCase{"bytes that are no UTF-8", "J\xFCr\xE2\x82", "J?r??", "J?r??"}));

TEST(NearestLetters, AreFoundInTextsLargerThanABuffer) {
    std::string dashes;
    for (int i = 0; i < 1000; ++i) {
        dashes += "\u2013";
    }
    EXPECT_EQ(std::string(1000, '-'), EncodeNearest(dashes, Encoding::kLatin1));
}

TEST(MendedText, IsTakenAsUtf8WhereItReadsAsSuch) {
    EXPECT_EQ("J\xFCrgen", MendEncoded("J\u00FCrgen", Encoding::kLatin1));
    EXPECT_EQ("2 - 3", MendEncoded("2 \u2013 3", Encoding::kLatin1));
    EXPECT_EQ("\x93\x8C\x8B\x9E", MendEncoded("\u6771\u4EAC", Encoding::kShiftJis));
}

TEST(MendedText, IsLeftAsItIsInTheEncodingOfTheSite) {
    EXPECT_EQ("J\xFCrgen", MendEncoded("J\xFCrgen", Encoding::kLatin1));
    EXPECT_EQ("Pump", MendEncoded("Pump", Encoding::kLatin1));
    EXPECT_EQ("", MendEncoded("", Encoding::kLatin1));
    EXPECT_EQ("\x93\x8C\x8B\x9E", MendEncoded("\x93\x8C\x8B\x9E", Encoding::kShiftJis));
    // Two kana, or one letter in UTF-8.
    EXPECT_EQ("\xCA\xB2", MendEncoded("\xCA\xB2", Encoding::kShiftJis));
    // It begins as UTF-8, and doesn't go on so.
    EXPECT_EQ("\u00FC \xFC", MendEncoded("\u00FC \xFC", Encoding::kLatin1));
}

TEST(MendedText, HasBlanksForControlCharacters) {
    EXPECT_EQ("a b c ", MendEncoded("a\rb\nc\x7F", Encoding::kLatin1));
    EXPECT_EQ("a \xFC", MendEncoded("a\x1F\xFC", Encoding::kLatin1));
    EXPECT_EQ("a \xFC", MendEncoded("a\n\u00FC", Encoding::kLatin1));
}

}  // namespace
}  // namespace host
