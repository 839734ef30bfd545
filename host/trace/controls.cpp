// Control characters by name. Tested by tests/unit/host/trace_test.cpp.
#include <array>
#include <cctype>
#include <charconv>

#include "host/trace/traced_page.h"

namespace host {
namespace {

constexpr std::array<std::string_view, 32> kNames = {
    "nul", "soh", "stx", "etx", "eot", "enq", "ack", "bel", "bs",  "ht",  "lf",
    "vt",  "ff",  "cr",  "so",  "si",  "dle", "dc1", "dc2", "dc3", "dc4", "nak",
    "syn", "etb", "can", "em",  "sub", "esc", "fs",  "gs",  "rs",  "us"};
constexpr unsigned char kDelete = 0x7F;

std::string Named(unsigned char byte) {
    if (byte < kNames.size()) {
        return "<" + std::string(kNames.at(byte)) + ">";
    }
    return byte == kDelete ? "<del>" : std::string(1, static_cast<char>(byte));
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
