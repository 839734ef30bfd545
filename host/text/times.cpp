// Instants. Tested by tests/unit/host/cli_alarm_test.cpp and web_html_test.cpp.
#include "host/text/times.h"

#include <array>

namespace host {
namespace {

std::string Written(std::time_t instant, const char* format) {
    std::tm parts{};
    std::array<char, 64> text{};
    if (instant == 0 || localtime_r(&instant, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), format, &parts) == 0) {
        return "-";
    }
    return text.data();
}

}  // namespace

std::string LocalTime(std::time_t instant) {
    return Written(instant, "%Y-%m-%d %H:%M:%S");
}

std::string LocalTimeWithZone(std::time_t instant) {
    return Written(instant, "%Y-%m-%d %H:%M:%S %Z");
}

}  // namespace host
