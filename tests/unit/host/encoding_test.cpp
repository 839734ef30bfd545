// The bytes of texts on the lines.
#include "host/text/encoding.h"

#include <gtest/gtest.h>
#include <malloc.h>

namespace host {
namespace {

// The character that keeps a text from being encoded.
std::string Refused(std::string_view utf8, Encoding encoding) {
    try {
        return "encoded: " + Encode(utf8, encoding);
    } catch (const NotEncodable& character) {
        return character.what();
    }
}

TEST(Encodings, HaveTheirWords) {
    EXPECT_EQ(Encoding::kLatin1, EncodingNamed("latin1"));
    EXPECT_EQ(Encoding::kShiftJis, EncodingNamed("shift_jis"));
    EXPECT_EQ(std::nullopt, EncodingNamed("Latin1"));
    EXPECT_EQ(std::nullopt, EncodingNamed(""));
    EXPECT_EQ("shift_jis", WordFor(Encoding::kShiftJis));
}

TEST(Latin1, HasAByteForEachOfItsCharacters) {
    for (int code = 1; code < 256; ++code) {
        const std::string byte(1, static_cast<char>(code));
        const std::string utf8 = Decode(byte, Encoding::kLatin1);
        EXPECT_EQ(code < 128 ? 1U : 2U, utf8.size()) << code;
        EXPECT_EQ(byte, Encode(utf8, Encoding::kLatin1)) << code;
    }
}

TEST(Latin1, NamesTheCharacterThatItLacks) {
    EXPECT_EQ("'\xE2\x82\xAC' (U+20AC)", Refused("5 \xE2\x82\xAC", Encoding::kLatin1));
    EXPECT_EQ("'\xEF\xBD\xB1' (U+FF71)", Refused("\xEF\xBD\xB1", Encoding::kLatin1));
}

TEST(ShiftJis, HasKanaInOneByteAndKanjiInTwo) {
    EXPECT_EQ("\xB1\xDD", Encode("\xEF\xBD\xB1\xEF\xBE\x9D", Encoding::kShiftJis));
    EXPECT_EQ("\x93\xFA\x96\x7B", Encode("\xE6\x97\xA5\xE6\x9C\xAC", Encoding::kShiftJis));
    EXPECT_EQ("\xE6\x97\xA5\xE6\x9C\xAC", Decode("\x93\xFA\x96\x7B", Encoding::kShiftJis));
}

TEST(ShiftJis, HasTheYenSignInThePlaceOfTheBackslash) {
    EXPECT_EQ("\\", Encode("\xC2\xA5", Encoding::kShiftJis));
    EXPECT_EQ("\\", Encode("\\", Encoding::kShiftJis));
}

TEST(ShiftJis, KeepsPlainTextInBothDirections) {
    for (int code = 1; code < 128; ++code) {
        const std::string byte(1, static_cast<char>(code));
        EXPECT_EQ(byte, Decode(byte, Encoding::kShiftJis)) << code;
        EXPECT_EQ(byte, Encode(byte, Encoding::kShiftJis)) << code;
    }
}

TEST(ShiftJis, NamesTheCharacterThatItLacks) {
    EXPECT_EQ("'\xC3\xBC' (U+00FC)", Refused("J\xC3\xBCrgen", Encoding::kShiftJis));
}

TEST(Encode, RefusesWhatIsNotUtf8) {
    EXPECT_EQ("the byte \\xfc", Refused("J\xFCrgen", Encoding::kLatin1));
}

TEST(Encode, TakesTextsLargerThanItsBuffer) {
    const std::string large(100'000, 'x');
    EXPECT_EQ(large, Encode(large, Encoding::kShiftJis));
    std::string umlauts;
    for (int i = 0; i < 50'000; ++i) {
        umlauts += "\xC3\xBC";
    }
    EXPECT_EQ(std::string(50'000, '\xFC'), Encode(umlauts, Encoding::kLatin1));
}

TEST(Encode, KeepsNoMemory) {
    const auto encode_often = [] {
        for (int i = 0; i < 1000; ++i) {
            Encode("\xC3\xBC", Encoding::kLatin1);
        }
    };
    encode_often();
    const auto before = mallinfo2().uordblks;
    encode_often();
    EXPECT_LT(mallinfo2().uordblks, before + 1000);
}

TEST(Decode, MarksBytesThatMeanNothing) {
    EXPECT_EQ("a\xEF\xBF\xBD", Decode("a\x93", Encoding::kShiftJis));  // cut short
    EXPECT_EQ(
        "\xEF\xBF\xBD"
        "b",
        Decode("\xFF"
               "b",
               Encoding::kShiftJis));  // no lead byte
}

}  // namespace
}  // namespace host
