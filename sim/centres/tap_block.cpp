// TAP blocks. Tested by tests/unit/sim/tap_block_test.cpp.
#include "sim/centres/tap_block.h"

#include <optional>

#include "sim/centres/tap_codes.h"
#include "sim/record/printable.h"

namespace pagersim {
namespace {

constexpr char kEtx = '\x03';
constexpr char kSub = '\x1a';
constexpr std::size_t kChecksumLength = 3;
constexpr std::size_t kTailLength = 1 + kChecksumLength + 1;  // ETX, checksum, CR
constexpr std::size_t kFewestFields = 2;                      // the pager, the message

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

TapBlock ReadFields(std::string_view content, bool strict) {
    TapBlock block;
    while (!content.empty()) {
        const std::size_t end = content.find('\r');
        if (end == std::string_view::npos) {
            return Faulty(kTapFormat, "the last field doesn't end with <cr>");
        }
        const auto field = Decoded(content.substr(0, end), strict);
        if (!field) {
            return Faulty(kTapFormat, "a bare control in " + Printable(content.substr(0, end)));
        }
        block.fields.push_back(*field);
        content.remove_prefix(end + 1);
    }
    if (block.fields.size() < kFewestFields) {
        return Faulty(kTapFormat, "a block needs a pager and a message");
    }
    return block;
}

}  // namespace

std::string TapChecksum(std::string_view stx_to_etx) {
    unsigned sum = 0;
    for (const char c : stx_to_etx) {
        sum += static_cast<unsigned char>(c) & 0x7fU;
    }
    std::string characters;
    for (const unsigned shift : {8U, 4U, 0U}) {
        characters += static_cast<char>('0' + (sum >> shift & 0xf));
    }
    return characters;
}

bool IsWholeTapBlock(std::string_view heard) {
    return heard.size() > kTailLength && heard.back() == '\r' &&
           heard[heard.size() - kTailLength] == kEtx;
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
    return ReadFields(summed.substr(1, summed.size() - 2), strict);
}

}  // namespace pagersim
