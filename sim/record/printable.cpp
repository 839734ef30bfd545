// Bytes in printable form. Tested by tests/unit/sim/record_test.cpp.
#include "sim/record/printable.h"

#include <array>

#include "support/control_names.h"

namespace pagersim {
namespace {

std::string Hex(unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    return {kDigits[byte >> 4], kDigits[byte & 0xf]};
}

std::string Name(unsigned char byte) {
    if (byte < support::kControlNames.size()) {
        return std::string(support::kControlNames[byte]);
    }
    return byte == support::kDelete ? std::string(support::kDeleteName) : Hex(byte);
}

std::string PrintableByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < support::kDelete) {
        return {c};
    }
    return "<" + Name(byte) + ">";
}

bool Continues(unsigned char byte) {
    return (byte & 0xc0) == 0x80;
}

// A form of UTF-8 (RFC 3629): how its first byte looks, and what it may encode.
struct Utf8Form {
    unsigned char mask, lead;
    char32_t first, last;
};
constexpr std::array<Utf8Form, 4> kUtf8Forms = {{{0x80, 0x00, 0x0, 0x7f},
                                                 {0xe0, 0xc0, 0x80, 0x7ff},
                                                 {0xf0, 0xe0, 0x800, 0xffff},
                                                 {0xf8, 0xf0, 0x10000, 0x10ffff}}};

bool IsSurrogate(char32_t point) {
    return point >= 0xd800 && point < 0xe000;
}

bool Encodes(const Utf8Form& form, std::string_view bytes) {
    char32_t point = static_cast<unsigned char>(bytes.front()) & static_cast<unsigned>(~form.mask);
    for (const char c : bytes.substr(1)) {
        const auto byte = static_cast<unsigned char>(c);
        if (!Continues(byte)) {
            return false;
        }
        point = point << 6 | (byte & 0x3f);
    }
    return point >= form.first && point <= form.last && !IsSurrogate(point);
}

}  // namespace

std::string Printable(std::string_view bytes) {
    std::string shown;
    for (const char c : bytes) {
        shown += PrintableByte(c);
    }
    return shown;
}

std::size_t Utf8Length(std::string_view text) {
    for (std::size_t i = 0; i < kUtf8Forms.size(); ++i) {
        const Utf8Form& form = kUtf8Forms[i];
        const std::size_t length = i + 1;
        if (text.size() >= length &&
            (static_cast<unsigned char>(text.front()) & form.mask) == form.lead) {
            return Encodes(form, text.substr(0, length)) ? length : 0;
        }
    }
    return 0;
}

std::string PrintableText(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = Utf8Length(text);
        if (length > 1) {
            shown += text.substr(0, length);
            text.remove_prefix(length);
        } else {
            shown += PrintableByte(text.front());
            text.remove_prefix(1);
        }
    }
    return shown;
}

}  // namespace pagersim
