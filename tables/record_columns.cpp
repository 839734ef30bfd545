// Numbers in cells. Tested by tests/unit/tables/records_test.cpp.
#include "tables/record_columns.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

int32_t ToInteger(const char* cell) {
    constexpr long kLeast = std::numeric_limits<int32_t>::min();
    constexpr long kMost = std::numeric_limits<int32_t>::max();
    // The clamp matters where long is wider, so that both word sizes read the same number.
    return static_cast<int32_t>(
        std::clamp(std::strtol(TextOrEmpty(cell), nullptr, 10), kLeast, kMost));
}
