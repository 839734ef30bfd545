// Control characters by name. Tested by tests/unit/host/trace_entries_test.cpp.
#include <cctype>
#include <charconv>

#include "host/trace/traced_page.h"
#include "support/control_names.h"

namespace host {
namespace {

std::string Named(unsigned char byte) {
    if (byte < support::kControlNames.size()) {
        return "<" + std::string(support::kControlNames.at(byte)) + ">";
    }
    return byte == support::kDelete ? "<" + std::string(support::kDeleteName) + ">"
                                    : std::string(1, static_cast<char>(byte));
}

constexpr size_t kCodeSize = 4;  // "< d>", "<1b>", and "<fff" for a byte from 128 up
constexpr std::string_view kHighByte = "<fff";

// The byte that the code at the start of the text stands for; -1 when there is none.
int CodeAt(std::string_view text) {
    if (text.size() < kCodeSize || text[0] != '<' || text[3] != '>') {
        return -1;
    }
    const char* digits = text.data() + (text[1] == ' ' ? 2 : 1);
    int code = -1;
    const auto [end, error] = std::from_chars(digits, text.data() + 3, code, 16);
    return error == std::errc() && end == text.data() + 3 && code <= ' ' ? code : -1;
}

}  // namespace

std::string NameControls(std::string_view bytes) {
    std::string named;
    for (const char byte : bytes) {
        named += Named(static_cast<unsigned char>(byte));
    }
    return named;
}

std::string NameControlsOfOut(std::string_view shown) {
    std::string named;
    while (!shown.empty()) {
        const int code = CodeAt(shown);
        if (code >= 0) {
            named += Named(static_cast<unsigned char>(code));
        } else if (shown.substr(0, kCodeSize) == kHighByte) {
            named += "<?>";
        } else {
            named += Named(static_cast<unsigned char>(shown.front()));
            shown.remove_prefix(1);
            continue;
        }
        shown.remove_prefix(kCodeSize);
    }
    return named;
}

}  // namespace host
