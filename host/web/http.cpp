// Targets of requests. Tested by tests/unit/host/web_http_test.cpp, tests/fuzz/web_target.cpp.
#include "host/web/http.h"

#include <algorithm>

namespace host {
namespace {

std::optional<int> HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char small = static_cast<char>(c | 0x20);
    return small >= 'a' && small <= 'f' ? std::optional<int>(small - 'a' + 10) : std::nullopt;
}

// None: a percent sign without its two digits, or a zero byte.
std::optional<std::string> Decoded(std::string_view text, bool plus_is_blank) {
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '%') {
            if (i + 2 >= text.size()) {
                return std::nullopt;
            }
            const std::optional<int> first = HexDigit(text[i + 1]);
            const std::optional<int> second = HexDigit(text[i + 2]);
            if (!first || !second) {
                return std::nullopt;
            }
            c = static_cast<char>(*first * 16 + *second);
            i += 2;
        } else if (c == '+' && plus_is_blank) {
            c = ' ';
        }
        if (c == '\0') {
            return std::nullopt;
        }
        decoded += c;
    }
    return decoded;
}

bool AddPair(std::string_view pair, std::map<std::string, std::string>& query) {
    const size_t equals = std::min(pair.find('='), pair.size());
    const std::optional<std::string> name = Decoded(pair.substr(0, equals), true);
    const std::optional<std::string> value =
        Decoded(pair.substr(std::min(equals + 1, pair.size())), true);
    if (!name || !value) {
        return false;
    }
    query[*name] = *value;
    return true;
}

}  // namespace

std::optional<WebTarget> ParseTarget(std::string_view target) {
    WebTarget parsed;
    const size_t mark = std::min(target.find('?'), target.size());
    const std::optional<std::string> path = Decoded(target.substr(0, mark), false);
    if (!path || path->empty() || path->front() != '/') {
        return std::nullopt;
    }
    parsed.path = *path;
    std::string_view rest = target.substr(std::min(mark + 1, target.size()));
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('&'), rest.size());
        if (end > 0 && !AddPair(rest.substr(0, end), parsed.query)) {
            return std::nullopt;
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return parsed;
}

}  // namespace host
