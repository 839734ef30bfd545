// The nearest letters. Tested by tests/unit/host/nearest_test.cpp.
#include "host/text/nearest.h"

#include "host/text/converter.h"
#include "host/text/printable.h"
#include "host/text/utf8_locale.h"

namespace host {
namespace {

constexpr const char* kUnknown = "?";

std::string WithBlanks(std::string_view utf8) {
    std::string text;
    while (!utf8.empty()) {
        const Utf8Character character = FirstCharacter(utf8);
        if (character.valid && Steers(character.code)) {
            text += ' ';
        } else {
            text += utf8.substr(0, character.length);
        }
        utf8.remove_prefix(character.length);
    }
    return text;
}

// The C library has two tables: one of each locale, which here knows Latin letters, and one for
// all, which knows Greek and Cyrillic ones.
std::string InNearestLetters(std::string_view character, Encoding encoding) {
    const std::string nearest = std::string(IconvName(encoding)) + "//TRANSLIT";
    std::string_view rest = character;
    {
        const Utf8Locale utf8;
        std::string letters = Converter(nearest, kUtf8).Take(rest);
        if (letters != kUnknown && rest.empty()) {
            return letters;
        }
    }
    const std::string letters = Converter(nearest, kUtf8).Take(character);
    return character.empty() ? letters : kUnknown;
}

bool ReadsAsUtf8(std::string_view bytes, Encoding encoding) {
    const size_t shortest = encoding == Encoding::kShiftJis ? 3 : 2;
    bool is_said = false;
    while (!bytes.empty()) {
        const Utf8Character character = FirstCharacter(bytes);
        const bool is_ascii = character.valid && character.length == 1;
        if (!is_ascii && (!character.valid || character.length < shortest)) {
            return false;
        }
        is_said = is_said || !is_ascii;
        bytes.remove_prefix(character.length);
    }
    return is_said;
}

// A byte at a time would cut characters of two bytes; no second byte of one is a control.
std::string WithoutControlBytes(std::string_view bytes) {
    std::string text(bytes);
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            c = ' ';
        }
    }
    return text;
}

}  // namespace

std::string EncodeNearest(std::string_view utf8, Encoding encoding) {
    const std::string text = WithBlanks(utf8);
    std::string_view rest = text;
    Converter converter(IconvName(encoding), kUtf8);
    std::string bytes = converter.Take(rest);
    while (!rest.empty()) {
        const size_t length = FirstCharacter(rest).length;
        bytes += InNearestLetters(rest.substr(0, length), encoding);
        rest.remove_prefix(length);
        bytes += converter.Take(rest);
    }
    return bytes;
}

std::string MendEncoded(std::string_view bytes, Encoding encoding) {
    return ReadsAsUtf8(bytes, encoding) ? EncodeNearest(bytes, encoding)
                                        : WithoutControlBytes(bytes);
}

}  // namespace host
