// How the trace shows bytes that go out on a line.
// Tested by tests/unit/modem/printable_form_test.cpp.

#include "modem/printable_form.h"

namespace {

// Four characters: "< d>", "<20>". Kept: a byte from 128 up is negative and would give <ffffff82>;
// the trace has always shown only the beginning.
void AppendCode(std::string& shown, signed char byte) {
    constexpr char kDigits[] = "0123456789abcdef";
    if (byte < 0) {
        shown += "<fff";
        return;
    }
    const auto code = static_cast<unsigned char>(byte);
    shown += {'<', code < 16 ? ' ' : kDigits[code / 16], kDigits[code % 16], '>'};
}

}  // namespace

std::string PrintableForm(const void* bytes, size_t count) {
    const auto* byte = static_cast<const signed char*>(bytes);
    std::string shown;
    shown.reserve(count);
    for (; count > 0; ++byte, --count) {
        if (*byte > ' ') {
            shown += static_cast<char>(*byte);
        } else {
            AppendCode(shown, *byte);
        }
    }
    return shown;
}
