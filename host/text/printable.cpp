// Escapes for terminals. Tested by tests/unit/host/printable_test.cpp.
#include "host/text/printable.h"

#include <array>
#include <cstdio>

namespace host {
namespace {

// The forms of a UTF-8 character: its first byte, and the smallest code that needs this length.
struct Form {
    size_t length;
    uint32_t smallest;
    unsigned char mask;
    unsigned char bits;
};
constexpr Form kForms[] = {
    {1, 0, 0x80, 0x00},
    {2, 0x80, 0xE0, 0xC0},
    {3, 0x800, 0xF0, 0xE0},
    {4, 0x10000, 0xF8, 0xF0},
};
constexpr uint32_t kLargestCode = 0x10FFFF;

bool IsSurrogate(uint32_t code) {
    return code >= 0xD800 && code <= 0xDFFF;
}

unsigned char Byte(std::string_view text, size_t at) {
    return static_cast<unsigned char>(text[at]);
}

std::string Escaped(std::string_view bytes) {
    std::string escaped;
    for (const char byte : bytes) {
        std::array<char, 5> hex{};
        std::snprintf(hex.data(), hex.size(), "\\x%02x",
                      static_cast<unsigned>(static_cast<unsigned char>(byte)));
        escaped += hex.data();
    }
    return escaped;
}

}  // namespace

bool Steers(uint32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x202A && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

Utf8Character FirstCharacter(std::string_view utf8) {
    const Utf8Character invalid{Byte(utf8, 0), 1, false};
    for (const Form& form : kForms) {
        if ((Byte(utf8, 0) & form.mask) != form.bits) {
            continue;
        }
        if (utf8.size() < form.length) {
            return invalid;
        }
        uint32_t code = Byte(utf8, 0) & static_cast<unsigned char>(~form.mask);
        for (size_t i = 1; i < form.length; ++i) {
            if ((Byte(utf8, i) & 0xC0) != 0x80) {
                return invalid;
            }
            code = (code << 6) | (Byte(utf8, i) & 0x3FU);
        }
        const bool valid = code >= form.smallest && code <= kLargestCode && !IsSurrogate(code);
        return valid ? Utf8Character{code, form.length, true} : invalid;
    }
    return invalid;
}

std::string Printable(std::string_view utf8) {
    std::string printable;
    while (!utf8.empty()) {
        const Utf8Character character = FirstCharacter(utf8);
        const std::string_view bytes = utf8.substr(0, character.length);
        if (character.valid && !Steers(character.code)) {
            printable += bytes;
        } else {
            printable += Escaped(bytes);
        }
        utf8.remove_prefix(character.length);
    }
    return printable;
}

std::string NameOf(const Utf8Character& character, std::string_view utf8) {
    if (!character.valid) {
        return "the byte " + Escaped(utf8.substr(0, 1));
    }
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "U+%04X", static_cast<unsigned>(character.code));
    if (Steers(character.code)) {
        return code.data();
    }
    return "'" + std::string(utf8.substr(0, character.length)) + "' (" + code.data() + ")";
}

}  // namespace host
