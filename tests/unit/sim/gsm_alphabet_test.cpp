// The GSM alphabet, held against the code points of the published mapping, and what the guide says
// of the characters that arrive otherwise than they were meant.
#include "sim/centres/gsm_alphabet.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

namespace pagersim {
namespace {

// As Perl's Encode has it for gsm0338; 0x1b is no character.
constexpr char32_t kPublished[] = {
    0x0040, 0x00a3, 0x0024, 0x00a5, 0x00e8, 0x00e9, 0x00f9, 0x00ec,  //
    0x00f2, 0x00c7, 0x000a, 0x00d8, 0x00f8, 0x000d, 0x00c5, 0x00e5,  //
    0x0394, 0x005f, 0x03a6, 0x0393, 0x039b, 0x03a9, 0x03a0, 0x03a8,  //
    0x03a3, 0x0398, 0x039e, 0xfffd, 0x00c6, 0x00e6, 0x00df, 0x00c9,  //
    0x0020, 0x0021, 0x0022, 0x0023, 0x00a4, 0x0025, 0x0026, 0x0027,  //
    0x0028, 0x0029, 0x002a, 0x002b, 0x002c, 0x002d, 0x002e, 0x002f,  //
    0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036, 0x0037,  //
    0x0038, 0x0039, 0x003a, 0x003b, 0x003c, 0x003d, 0x003e, 0x003f,  //
    0x00a1, 0x0041, 0x0042, 0x0043, 0x0044, 0x0045, 0x0046, 0x0047,  //
    0x0048, 0x0049, 0x004a, 0x004b, 0x004c, 0x004d, 0x004e, 0x004f,  //
    0x0050, 0x0051, 0x0052, 0x0053, 0x0054, 0x0055, 0x0056, 0x0057,  //
    0x0058, 0x0059, 0x005a, 0x00c4, 0x00d6, 0x00d1, 0x00dc, 0x00a7,  //
    0x00bf, 0x0061, 0x0062, 0x0063, 0x0064, 0x0065, 0x0066, 0x0067,  //
    0x0068, 0x0069, 0x006a, 0x006b, 0x006c, 0x006d, 0x006e, 0x006f,  //
    0x0070, 0x0071, 0x0072, 0x0073, 0x0074, 0x0075, 0x0076, 0x0077,  //
    0x0078, 0x0079, 0x007a, 0x00e4, 0x00f6, 0x00f1, 0x00fc, 0x00e0,  //
};

std::string Utf8(char32_t point) {
    if (point < 0x80) {
        return {static_cast<char>(point)};
    }
    const auto tail = [](char32_t bits) { return static_cast<char>(0x80 | (bits & 0x3f)); };
    if (point < 0x800) {
        return {static_cast<char>(0xc0 | point >> 6), tail(point)};
    }
    return {static_cast<char>(0xe0 | point >> 12), tail(point >> 6), tail(point)};
}

TEST(GsmAlphabet, IsThePublishedOne) {
    ASSERT_EQ(128U, std::size(kPublished));
    for (int septet = 0; septet < 128; ++septet) {
        EXPECT_EQ(Utf8(kPublished[septet]), DecodeGsm(std::string{static_cast<char>(septet)}))
            << septet;
    }
}

TEST(GsmAlphabet, ExtensionStandsBehindAnEscape) {
    const std::map<char, char32_t> published = {
        {0x0a, 0x0c}, {0x14, '^'}, {0x28, '{'}, {0x29, '}'}, {0x2f, '\\'},
        {0x3c, '['},  {0x3d, '~'}, {0x3e, ']'}, {0x40, '|'}, {0x65, 0x20ac}};
    for (int septet = 0; septet < 128; ++septet) {
        const auto found = published.find(static_cast<char>(septet));
        EXPECT_EQ(Utf8(found == published.end() ? 0xfffd : found->second),
                  DecodeGsm(std::string{'\x1b', static_cast<char>(septet)}))
            << septet;
    }
}

TEST(GsmAlphabet, TextsAreDecodedCharacterByCharacter) {
    EXPECT_EQ("Pump 3 €5 @", DecodeGsm(std::string_view("Pump 3 \x1b"
                                                        "e5 \0",
                                                        12)));
    EXPECT_EQ("", DecodeGsm(""));
    EXPECT_EQ("a\xef\xbf\xbd", DecodeGsm("a\x1b")) << "nothing behind the escape";
    EXPECT_EQ("\xef\xbf\xbd\xef\xbf\xbd", DecodeGsm("\x80\xff")) << "no septets";
}

// The guide's lines "sent   @ $ ..." and "shown  ¡ ¤ ...", one character below the other.
std::map<std::string, std::string> DifferencesInGuide() {
    std::ifstream guide(PAGERFWD_DOCS "/protocols.md");
    std::map<std::string, std::string> differences;
    std::string sent;
    for (std::string line; std::getline(guide, line);) {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (first == "sent") {
            sent = line;
        } else if (first == "shown") {
            std::istringstream others(sent);
            others >> first;
            for (std::string from, to; others >> from && words >> to;) {
                differences[from] = to;
            }
        }
    }
    return differences;
}

TEST(GsmAlphabet, GuideNamesEveryCharacterThatArrivesOtherwise) {
    std::map<std::string, std::string> differences;
    for (char c = 0x20; c < 0x7f; ++c) {
        const std::string sent{c};
        if (DecodeGsm(sent) != sent) {
            differences[sent] = DecodeGsm(sent);
        }
    }
    EXPECT_EQ(differences, DifferencesInGuide());
}

}  // namespace
}  // namespace pagersim
