// The two-touch table, as it was printed in the pagers' manuals. Tested by
// tests/unit/sim/ntt_exchange_test.cpp.
#include "sim/centres/two_touch.h"

#include <array>

#include "sim/centre.h"

namespace pagersim {
namespace {

constexpr std::string_view kLongMark = "ｰ";
constexpr std::string_view kHyphen = "-";

// Rows and columns in the order of the keys: 1 to 9, then 0. An empty place means nothing.
using Row = std::array<std::string_view, 10>;
constexpr std::array<Row, 10> kKeys = {{
    {"ｱ", "ｲ", "ｳ", "ｴ", "ｵ", "A", "B", "C", "D", "E"},
    {"ｶ", "ｷ", "ｸ", "ｹ", "ｺ", "F", "G", "H", "I", "J"},
    {"ｻ", "ｼ", "ｽ", "ｾ", "ｿ", "K", "L", "M", "N", "O"},
    {"ﾀ", "ﾁ", "ﾂ", "ﾃ", "ﾄ", "P", "Q", "R", "S", "T"},
    {"ﾅ", "ﾆ", "ﾇ", "ﾈ", "ﾉ", "U", "V", "W", "X", "Y"},
    {"ﾊ", "ﾋ", "ﾌ", "ﾍ", "ﾎ", "Z", "?", "!", "ｰ", "/"},
    {"ﾏ", "ﾐ", "ﾑ", "ﾒ", "ﾓ", "¥", "&", "⏰", "☎", "☕"},
    {"ﾔ", "(", "ﾕ", ")", "ﾖ", "*", "#", " ", "", ""},
    {"ﾗ", "ﾘ", "ﾙ", "ﾚ", "ﾛ", "1", "2", "3", "4", "5"},
    {"ﾜ", "ｦ", "ﾝ", "ﾞ", "ﾟ", "6", "7", "8", "9", "0"},
}};

std::size_t KeyIndex(char digit) {
    return digit == '0' ? 9 : static_cast<std::size_t>(digit - '1');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view Character(char row, char column) {
    if (!IsDigit(row) || !IsDigit(column)) {
        return kNoCharacter;
    }
    const std::string_view found = kKeys[KeyIndex(row)][KeyIndex(column)];
    return found.empty() ? kNoCharacter : found;
}

// Half-width katakana, U+FF61 to U+FF9F, are three bytes that begin with 0xef and bd or be.
bool IsKatakana(std::string_view character) {
    return character.size() == 3 && character[0] == '\xef' &&
           (character[1] == '\xbd' || character[1] == '\xbe') && character != kNoCharacter;
}

}  // namespace

std::string DecodeTwoTouch(std::string_view digits) {
    std::string text;
    bool after_katakana = false;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        std::string_view shown =
            i + 1 < digits.size() ? Character(digits[i], digits[i + 1]) : kNoCharacter;
        if (shown == kLongMark && !after_katakana) {
            shown = kHyphen;
        }
        after_katakana = IsKatakana(shown);
        text += shown;
    }
    return text;
}

}  // namespace pagersim
