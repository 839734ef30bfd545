// Instants. Tested by tests/unit/host/cli_alarm_test.cpp.
#include "host/cli/times.h"

#include <array>

namespace host {

std::string LocalTime(std::time_t instant) {
    std::tm parts{};
    std::array<char, 32> text{};
    if (instant == 0 || localtime_r(&instant, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts) == 0) {
        return "-";
    }
    return text.data();
}

}  // namespace host
