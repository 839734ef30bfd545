// Texts made fit for a terminal.
#include "host/text/printable.h"

#include <gtest/gtest.h>

namespace host {
namespace {

struct TextCase {
    const char* situation;
    std::string text;
    std::string printable;
};

void PrintTo(const TextCase& one, std::ostream* out) {
    *out << one.situation;
}

class PrintableText : public ::testing::TestWithParam<TextCase> {};

TEST_P(PrintableText, IsHarmless) {
    EXPECT_EQ(GetParam().printable, Printable(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    All, PrintableText,
    ::testing::Values(
        TextCase{"nothing", "", ""}, TextCase{"plain text", "duty phone 7~", "duty phone 7~"},
        TextCase{"UTF-8 of two, three and four bytes",
                 "J\xC3\xBCrgen \xE2\x82\xAC \xF0\x9F\x93\x9F",
                 "J\xC3\xBCrgen \xE2\x82\xAC \xF0\x9F\x93\x9F"},
        TextCase{"an escape sequence", "\x1b[2J", "\\x1b[2J"},
        TextCase{"line ends and tabs", "a\r\n\tb",
                 "a\\x0d\\x0a\\x09"
                 "b"},
        TextCase{"a zero", std::string("a\0b", 3),
                 "a\\x00"
                 "b"},
        TextCase{"delete", "\x7f", "\\x7f"},
        TextCase{"a C1 control in UTF-8", "\xC2\x9B", "\\xc2\\x9b"},
        TextCase{"the first character behind the C1 controls", "\xC2\xA0", "\xC2\xA0"},
        TextCase{"the first and the last mark that turns the direction", "\u202A\u202E",
                 "\\xe2\\x80\\xaa\\xe2\\x80\\xae"},
        TextCase{"what stands around them", "\u2029\u202F", "\u2029\u202F"},
        TextCase{"the first and the last mark that isolates a direction", "\u2066\u2069",
                 "\\xe2\\x81\\xa6\\xe2\\x81\\xa9"},
        TextCase{"what stands around those", "\u2065\u206A", "\u2065\u206A"},
        TextCase{"the last control of ASCII and the first of C1", "\x1F\u0080\u009F",
                 "\\x1f\\xc2\\x80\\xc2\\x9f"},
        TextCase{"Latin-1", "J\xFCrgen", "J\\xfcrgen"},
        TextCase{"a character cut short", "\xE2\x82", "\\xe2\\x82"},
        TextCase{"a character in more bytes than it needs", "\xC0\xAF", "\\xc0\\xaf"},
        TextCase{"half of a surrogate pair", "\xED\xA0\x80", "\\xed\\xa0\\x80"},
        TextCase{"what stands around the surrogates", "\uD7FF\uE000", "\uD7FF\uE000"},
        TextCase{"behind the last character there is", "\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
        TextCase{"a backslash is left alone", "a\\b", "a\\b"}));

TEST(CharacterName, IsTheCharacterAndItsNumber) {
    EXPECT_EQ("'\xE2\x82\xAC' (U+20AC)", NameOf(FirstCharacter("\xE2\x82\xAC!"), "\xE2\x82\xAC!"));
    EXPECT_EQ("U+0007", NameOf(FirstCharacter("\a"), "\a"));
    EXPECT_EQ("the byte \\xfc", NameOf(FirstCharacter("\xFC"), "\xFC"));
}

}  // namespace
}  // namespace host
