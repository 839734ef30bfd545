// A centre's own refusals. Tested by tests/unit/host/centre_code_test.cpp.
#include "host/trace/centre_code.h"

#include <array>
#include <utility>

namespace host {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 8> kUcpErrors = {
    {{"01", "checksum error"},
     {"02", "syntax error"},
     {"04", "operation not allowed"},
     {"05", "call barring active"},
     {"06", "recipient invalid"},
     {"07", "authentication failure"},
     {"24", "message too long"},
     {"26", "message type not valid"}}};

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// "515 Message format error" at the head of `text`, up to the next control character.
std::string_view TapRefusalAt(std::string_view text) {
    constexpr size_t kCodeLength = 3;
    const std::string_view line = text.substr(0, text.find('<'));
    const bool isCode = line.size() >= kCodeLength && line[0] == '5' && IsDigit(line[1]) &&
                        IsDigit(line[2]) &&
                        (line.size() == kCodeLength || line[kCodeLength] == ' ');
    return isCode ? line : std::string_view();
}

// The two digits of ".../R/51/N/24/..." at the head of `text`, which begins with "/R/".
std::string_view UcpErrorAt(std::string_view text) {
    constexpr std::string_view kNegative = "/N/";
    constexpr size_t kNegativeAt = std::string_view("/R/51").size();
    constexpr size_t kErrorAt = kNegativeAt + kNegative.size();
    if (text.size() < kErrorAt + 2 || text.substr(kNegativeAt, kNegative.size()) != kNegative) {
        return {};
    }
    const std::string_view error = text.substr(kErrorAt, 2);
    return IsDigit(error[0]) && IsDigit(error[1]) ? error : std::string_view();
}

std::string InWords(std::string_view ucpError) {
    std::string words = "error " + std::string(ucpError);
    for (const auto& [error, meaning] : kUcpErrors) {
        if (error == ucpError) {
            words.append(" (").append(meaning).append(")");
        }
    }
    return words;
}

}  // namespace

std::string CentreCodeIn(std::string_view heard) {
    constexpr std::string_view kResult = "/R/";
    std::string code;
    for (size_t at = 0; at < heard.size(); ++at) {
        const std::string_view rest = heard.substr(at);
        const bool beginsLine = at == 0 || heard[at - 1] == '>';
        if (const auto line = beginsLine ? TapRefusalAt(rest) : std::string_view(); !line.empty()) {
            code = line;
        } else if (rest.substr(0, kResult.size()) == kResult && !UcpErrorAt(rest).empty()) {
            code = InWords(UcpErrorAt(rest));
        }
    }
    return code;
}

}  // namespace host
