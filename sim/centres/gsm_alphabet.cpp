// GSM 03.38's tables. Tested by tests/unit/sim/gsm_alphabet_test.cpp.
#include "sim/centres/gsm_alphabet.h"

#include <array>
#include <utility>

#include "sim/centre.h"

namespace pagersim {
namespace {

constexpr char kEscape = '\x1b';

// Eight characters a row.
constexpr std::array<std::string_view, 128> kSeptets = {
    "@", "£", "$",  "¥",          "è", "é",  "ù", "ì",  //
    "ò", "Ç", "\n", "Ø",          "ø", "\r", "Å", "å",  //
    "Δ", "_", "Φ",  "Γ",          "Λ", "Ω",  "Π", "Ψ",  //
    "Σ", "Θ", "Ξ",  kNoCharacter, "Æ", "æ",  "ß", "É",  //
    " ", "!", "\"", "#",          "¤", "%",  "&", "'",  //
    "(", ")", "*",  "+",          ",", "-",  ".", "/",  //
    "0", "1", "2",  "3",          "4", "5",  "6", "7",  //
    "8", "9", ":",  ";",          "<", "=",  ">", "?",  //
    "¡", "A", "B",  "C",          "D", "E",  "F", "G",  //
    "H", "I", "J",  "K",          "L", "M",  "N", "O",  //
    "P", "Q", "R",  "S",          "T", "U",  "V", "W",  //
    "X", "Y", "Z",  "Ä",          "Ö", "Ñ",  "Ü", "§",  //
    "¿", "a", "b",  "c",          "d", "e",  "f", "g",  //
    "h", "i", "j",  "k",          "l", "m",  "n", "o",  //
    "p", "q", "r",  "s",          "t", "u",  "v", "w",  //
    "x", "y", "z",  "ä",          "ö", "ñ",  "ü", "à"};

// Behind 0x1b.
constexpr std::array<std::pair<char, std::string_view>, 10> kExtension = {{{0x0a, "\f"},
                                                                           {0x14, "^"},
                                                                           {0x28, "{"},
                                                                           {0x29, "}"},
                                                                           {0x2f, "\\"},
                                                                           {0x3c, "["},
                                                                           {0x3d, "~"},
                                                                           {0x3e, "]"},
                                                                           {0x40, "|"},
                                                                           {0x65, "€"}}};

std::string_view Character(char septet) {
    const auto index = static_cast<unsigned char>(septet);
    return index < kSeptets.size() ? kSeptets[index] : kNoCharacter;
}

std::string_view Extended(char septet) {
    for (const auto& [known, character] : kExtension) {
        if (known == septet) {
            return character;
        }
    }
    return kNoCharacter;
}

}  // namespace

std::string DecodeGsm(std::string_view septets) {
    std::string text;
    for (std::size_t i = 0; i < septets.size(); ++i) {
        const bool extended = septets[i] == kEscape && i + 1 < septets.size();
        text += extended ? Extended(septets[++i]) : Character(septets[i]);
    }
    return text;
}

}  // namespace pagersim
