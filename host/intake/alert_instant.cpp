// Instants. Tested by tests/unit/host/alertmanager_test.cpp, tests/fuzz/alertmanager.cpp.
#include "host/intake/alert_instant.h"

#include <algorithm>

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

// Days since 1970 of the Gregorian calendar, and back: time_t ends in 2038 where it has 32 bits,
// and an alert that hasn't ended says that it ends in the year 1. Years begin in March here, so
// that a leap day is a year's last, and repeat after 400 of them.
struct Date {
    int64_t year = 0;
    int64_t month = 0;
    int64_t day = 0;
};
constexpr int64_t kDaysOf400Years = 146097;
constexpr int64_t kDaysFromMarchOfYear0To1970 = 719468;
constexpr int64_t kSecondsOfDay = 86400;

int64_t DayOfYear(int64_t month, int64_t day) {
    return (153 * ((month + 9) % 12) + 2) / 5 + day - 1;
}

int64_t DaysTo(const Date& date) {
    const int64_t year = date.year - (date.month <= 2 ? 1 : 0) + 400;  // of none below 0
    const int64_t of_400 = year % 400;
    return (year / 400 - 1) * kDaysOf400Years + of_400 * 365 + of_400 / 4 - of_400 / 100 +
           DayOfYear(date.month, date.day) - kDaysFromMarchOfYear0To1970;
}

Date DateOf(int64_t days) {
    const int64_t from_0 = days + kDaysFromMarchOfYear0To1970 + kDaysOf400Years;
    const int64_t day = from_0 % kDaysOf400Years;
    const int64_t of_400 = (day - day / 1460 + day / 36524 - day / 146096) / 365;
    const int64_t of_year = day - (of_400 * 365 + of_400 / 4 - of_400 / 100);
    const int64_t month = (5 * of_year + 2) / 153;  // from March on
    const int64_t year = (from_0 / kDaysOf400Years - 1) * 400 + of_400 + (month >= 10 ? 1 : 0);
    return {year, month < 10 ? month + 3 : month - 9, of_year - (153 * month + 2) / 5 + 1};
}

int64_t SecondsIn(Reading& reading) {
    Date date;
    date.year = reading.Number(kDigitsOfYear, 1, 9999);
    reading.Sign('-');
    date.month = reading.Number(2, 1, 12);
    reading.Sign('-');
    date.day = reading.Number(2, 1, 31);
    reading.Sign('T');
    const int hours = reading.Number(2, 0, 23);
    reading.Sign(':');
    const int minutes = reading.Number(2, 0, 59);
    reading.Sign(':');
    const int seconds = reading.Number(2, 0, 60);
    return DaysTo(date) * kSecondsOfDay + (hours * 60 + minutes) * 60 + seconds;
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
    const int64_t second = (instant.seconds % kSecondsOfDay + kSecondsOfDay) % kSecondsOfDay;
    const Date date = DateOf((instant.seconds - second) / kSecondsOfDay);
    std::string fraction = Digits(instant.nanoseconds, kDigitsOfNanoseconds);
    fraction.resize(fraction.find_last_not_of('0') + 1);
    return Digits(date.year, kDigitsOfYear) + "-" + Digits(date.month, 2) + "-" +
           Digits(date.day, 2) + "T" + Digits(second / 3600, 2) + ":" +
           Digits(second / 60 % 60, 2) + ":" + Digits(second % 60, 2) +
           (fraction.empty() ? "" : "." + fraction) + "Z";
}

}  // namespace host
