// Control characters. Tested by tests/unit/host/table_access_test.cpp.
#include "host/text/controls.h"

#include <algorithm>

namespace host {

std::string WithoutControls(std::string_view text) {
    constexpr char kDelete = 0x7F;
    std::string without(text);
    std::replace_if(
        without.begin(), without.end(), [](char c) { return (c >= 0 && c < ' ') || c == kDelete; },
        ' ');
    return without;
}

}  // namespace host
