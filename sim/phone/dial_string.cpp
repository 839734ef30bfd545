// Dial strings. Tested by tests/unit/sim/dial_string_test.cpp.
#include "sim/phone/dial_string.h"

namespace pagersim {
namespace {

constexpr std::string_view kDigits = "0123456789*#ABCD";
constexpr std::string_view kNoMeaning = "TPtp -().!";
constexpr Milliseconds kSecondDialTone{1000};  // what a W waits here
constexpr Milliseconds kQuietAnswer{5000};     // what an @ waits: five seconds of silence

bool Has(std::string_view set, char c) {
    return set.find(c) != std::string_view::npos;
}

std::optional<Milliseconds> PauseOf(char c, const DialTimes& times) {
    switch (c) {
        case ',':
            return times.comma;
        case 'W':
        case 'w':
            return kSecondDialTone;
        case '@':
            return kQuietAnswer;
        default:
            return std::nullopt;
    }
}

void AddSegment(DialString& dial) {
    if (dial.segments.empty() || !dial.segments.back().empty()) {
        dial.segments.emplace_back();
    }
}

bool AddCharacter(DialString& dial, char c, const DialTimes& times) {
    if (const auto pause = PauseOf(c, times)) {
        dial.duration += *pause;
        AddSegment(dial);
        return true;
    }
    if (!Has(kDigits, c)) {
        return Has(kNoMeaning, c);
    }
    if (dial.segments.empty()) {
        AddSegment(dial);
    }
    dial.segments.back() += c;
    dial.duration += times.digit;
    return true;
}

}  // namespace

std::string DialString::Digits() const {
    std::string all;
    for (const auto& segment : segments) {
        all += segment;
    }
    return all;
}

std::optional<DialString> TakeDialString(std::string_view& text, const DialTimes& times) {
    DialString dial;
    while (!text.empty() && !dial.stays_in_command) {
        const char c = text.front();
        text.remove_prefix(1);
        if (c == ';') {
            dial.stays_in_command = true;
        } else if (!AddCharacter(dial, c, times)) {
            return std::nullopt;
        }
    }
    if (!dial.segments.empty() && dial.segments.back().empty()) {
        dial.segments.pop_back();
    }
    return dial;
}

}  // namespace pagersim
