// TAP blocks. Tested by tests/unit/sim/tap_block_test.cpp.
#include "sim/centres/tap_block.h"

#include <optional>

#include "sim/centres/tap_codes.h"
#include "sim/record/printable.h"

namespace pagersim {
namespace {

constexpr char kEtx = '\x03';
constexpr char kEtb = '\x17';
constexpr char kUs = '\x1f';
constexpr char kSub = '\x1a';
constexpr std::size_t kChecksumLength = 3;
constexpr std::size_t kTailLength = 1 + kChecksumLength + 1;  // the mark, checksum, CR

TapBlock Faulty(int code, const std::string& fault) {
    return {code, fault};
}

// One field's text as meant; none when a control stands in it.
std::optional<std::string> Decoded(std::string_view field, bool strict) {
    constexpr char kShift = 0x40;
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const char c = field[i];
        const bool ignored = !strict && (c == '\0' || c == '\n');
        if (c == kSub && i + 1 < field.size()) {
            text += static_cast<char>(field[++i] - kShift);
        } else if (static_cast<unsigned char>(c) >= 0x20) {
            text += c;
        } else if (!ignored) {
            return std::nullopt;
        }
    }
    return text;
}

// `content` stands between STX and the mark.
TapBlock ReadFields(std::string_view content, char mark, bool strict) {
    TapBlock block;
    block.is_last = mark == kEtx;
    while (!content.empty()) {
        const std::size_t end = content.find('\r');
        block.field_goes_on = end == std::string_view::npos;
        if (block.field_goes_on && mark != kUs) {
            return Faulty(kTapFormat, "the last field doesn't end with <cr>");
        }
        const std::string_view piece = content.substr(0, end);
        const auto field = Decoded(piece, strict);
        if (!field) {
            return Faulty(kTapFormat, "a bare control in " + Printable(piece));
        }
        block.fields.push_back(*field);
        content.remove_prefix(block.field_goes_on ? content.size() : end + 1);
    }
    return block;
}

}  // namespace

std::string TapChecksum(std::string_view stx_to_mark) {
    unsigned sum = 0;
    for (const char c : stx_to_mark) {
        sum += static_cast<unsigned char>(c) & 0x7fU;
    }
    std::string characters;
    for (const unsigned shift : {8U, 4U, 0U}) {
        characters += static_cast<char>('0' + (sum >> shift & 0xf));
    }
    return characters;
}

bool IsWholeTapBlock(std::string_view heard) {
    if (heard.size() <= kTailLength || heard.back() != '\r') {
        return false;
    }
    const char mark = heard[heard.size() - kTailLength];
    return mark == kEtx || mark == kEtb || mark == kUs;
}

TapBlock ReadTapBlock(std::string_view block, bool strict) {
    if (block.size() > kTapLongestBlock) {
        return Faulty(kTapTooLong, "a block of " + std::to_string(block.size()) +
                                       " characters; 256 are allowed");
    }
    const std::string_view summed = block.substr(0, block.size() - kTailLength + 1);
    const std::string_view sent = block.substr(summed.size(), kChecksumLength);
    const std::string right = TapChecksum(summed);
    if (sent != right) {
        return Faulty(kTapChecksum, "checksum is " + right + ", not " + Printable(sent));
    }
    return ReadFields(summed.substr(1, summed.size() - 2), summed.back(), strict);
}

}  // namespace pagersim
