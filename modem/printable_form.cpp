// How the trace shows bytes that go out on a line.
// Tested by tests/unit/modem/printable_form_test.cpp.

#include "modem/printable_form.h"

#include <array>
#include <cstdio>

namespace {

constexpr size_t kShownWidth = 4;

void AppendCode(std::string& shown, signed char byte) {
    std::array<char, 16> code{};
    snprintf(code.data(), code.size(), "<%2x>", static_cast<unsigned>(byte));
    // Kept: four characters of it. A byte from 128 up is negative and would give <ffffff82>; the
    // trace has always shown only the beginning.
    shown.append(code.data(), kShownWidth);
}

}  // namespace

std::string PrintableForm(const void* bytes, size_t count) {
    const auto* byte = static_cast<const signed char*>(bytes);
    std::string shown;
    for (; count > 0; ++byte, --count) {
        if (*byte > ' ') {
            shown += static_cast<char>(*byte);
        } else {
            AppendCode(shown, *byte);
        }
    }
    return shown;
}
