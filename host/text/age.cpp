// Ages. Tested by tests/unit/host/age_test.cpp.
#include "host/text/age.h"

#include <charconv>

namespace host {
namespace {

struct Unit {
    char letter;
    std::chrono::seconds length;
};
constexpr std::chrono::hours kDay(24);
constexpr Unit kUnits[] = {
    {'m', std::chrono::minutes(1)}, {'h', std::chrono::hours(1)}, {'d', kDay}};
constexpr uint32_t kMost = 99'999;

}  // namespace

std::optional<std::chrono::seconds> ParseAge(std::string_view text) {
    uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop + 1 != end || number > kMost) {
        return std::nullopt;
    }
    for (const Unit& unit : kUnits) {
        if (*stop == unit.letter) {
            return number * unit.length;
        }
    }
    return std::nullopt;
}

std::string AgeInWords(std::chrono::seconds age) {
    if (age >= 2 * kDay) {
        return std::to_string(age / kDay) + " days";
    }
    constexpr std::chrono::hours kHour(1);
    return age >= 2 * kHour ? std::to_string(age / kHour) + " hours"
                            : std::to_string(age / std::chrono::minutes(1)) + " minutes";
}

}  // namespace host
