// Instants. Tested by tests/unit/host/alertmanager_test.cpp, tests/fuzz/alertmanager.cpp.
#include "host/intake/alert_instant.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace host {
namespace {

constexpr size_t kDigitsOfYear = 4;
constexpr size_t kDigitsOfNanoseconds = 9;

// Reads a text from left to right; at the first thing that isn't there it stays bad.
class Reading {
 public:
    explicit Reading(std::string_view text) : rest_(text) {}

    int Number(size_t digits, int least, int most) {
        int number = 0;
        for (size_t i = 0; i < digits; ++i) {
            number = number * 10 + Digit();
        }
        good_ = good_ && least <= number && number <= most;
        return number;
    }
    void Sign(char sign) { good_ = TakeIf(sign) && good_; }
    bool TakeIf(char sign) {
        const bool is_there = !rest_.empty() && rest_.front() == sign;
        rest_.remove_prefix(is_there ? 1 : 0);
        return is_there;
    }
    bool HasDigit() const { return !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9'; }
    int Digit() {
        good_ = good_ && HasDigit();
        const int digit = HasDigit() ? rest_.front() - '0' : 0;
        rest_.remove_prefix(HasDigit() ? 1 : 0);
        return digit;
    }
    bool IsGood() const { return good_ && rest_.empty(); }
    void Spoil() { good_ = false; }

 private:
    std::string_view rest_;
    bool good_ = true;
};

int64_t SecondsIn(Reading& reading) {
    std::tm parts{};
    parts.tm_year = reading.Number(kDigitsOfYear, 1, 9999) - 1900;
    reading.Sign('-');
    parts.tm_mon = reading.Number(2, 1, 12) - 1;
    reading.Sign('-');
    parts.tm_mday = reading.Number(2, 1, 31);
    reading.Sign('T');
    parts.tm_hour = reading.Number(2, 0, 23);
    reading.Sign(':');
    parts.tm_min = reading.Number(2, 0, 59);
    reading.Sign(':');
    parts.tm_sec = reading.Number(2, 0, 60);
    return timegm(&parts);
}

int64_t NanosecondsIn(Reading& reading) {
    if (!reading.TakeIf('.')) {
        return 0;
    }
    int64_t nanoseconds = reading.Digit();
    for (size_t digits = 1; digits < kDigitsOfNanoseconds || reading.HasDigit(); ++digits) {
        const int digit = reading.HasDigit() ? reading.Digit() : 0;
        nanoseconds = digits < kDigitsOfNanoseconds ? nanoseconds * 10 + digit : nanoseconds;
    }
    return nanoseconds;
}

// Seconds east of Greenwich.
int64_t ZoneIn(Reading& reading) {
    if (reading.TakeIf('Z')) {
        return 0;
    }
    const bool is_west = reading.TakeIf('-');
    if (!is_west) {
        reading.Sign('+');
    }
    const int hours = reading.Number(2, 0, 23);
    reading.Sign(':');
    const int seconds = (hours * 60 + reading.Number(2, 0, 59)) * 60;
    return is_west ? -seconds : seconds;
}

// At least so many.
std::string Digits(int64_t number, size_t least) {
    std::string digits = std::to_string(number);
    digits.insert(0, least - std::min(digits.size(), least), '0');
    return digits;
}

}  // namespace

std::optional<AlertInstant> ReadInstant(std::string_view text) {
    Reading reading(text);
    AlertInstant instant;
    instant.seconds = SecondsIn(reading);
    instant.nanoseconds = NanosecondsIn(reading);
    instant.seconds -= ZoneIn(reading);
    return reading.IsGood() ? std::optional<AlertInstant>(instant) : std::nullopt;
}

std::string Written(const AlertInstant& instant) {
    std::tm parts{};
    std::array<char, 32> text{};
    const auto seconds = static_cast<std::time_t>(instant.seconds);
    if (gmtime_r(&seconds, &parts) == nullptr) {
        return {};
    }
    static_cast<void>(std::strftime(text.data(), text.size(), "-%m-%dT%H:%M:%S", &parts));
    std::string fraction = Digits(instant.nanoseconds, kDigitsOfNanoseconds);
    fraction.resize(fraction.find_last_not_of('0') + 1);
    return Digits(parts.tm_year + 1900, kDigitsOfYear) + text.data() +
           (fraction.empty() ? "" : "." + fraction) + "Z";
}

}  // namespace host
