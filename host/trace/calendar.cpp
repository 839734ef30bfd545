// Dates. Tested by tests/unit/host/trace_entries_test.cpp.
#include "host/trace/calendar.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace host {
namespace {

constexpr int kFirstYear = 1;
constexpr int kLastYear = 9999;

bool IsLeap(int year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysInMonth(int year, int month) {
    constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return kDays.at(static_cast<size_t>(month) - 1) + (month == 2 && IsLeap(year) ? 1 : 0);
}

// Days from 1 January of year 1 to that of `year`.
int64_t DaysBefore(int64_t year) {
    const int64_t past = year - 1;
    return past * 365 + past / 4 - past / 100 + past / 400;
}

constexpr int kNone = -1;

// Digits only; kNone otherwise.
int Number(std::string_view text) {
    int number = kNone;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && text.front() != '-' ? number
                                                                                           : kNone;
}

}  // namespace

std::optional<int64_t> DayOf(int year, int month, int day) {
    if (year < kFirstYear || year > kLastYear || month < 1 || month > 12 || day < 1 ||
        day > DaysInMonth(year, month)) {
        return std::nullopt;
    }
    int64_t days = DaysBefore(year) - DaysBefore(1970) + day - 1;
    for (int before = 1; before < month; ++before) {
        days += DaysInMonth(year, before);
    }
    return days;
}

std::optional<int64_t> ParseTraceDate(std::string_view text) {
    if (text.size() != 8 || text[2] != '/' || text[5] != '/') {
        return std::nullopt;
    }
    const int year = Number(text.substr(6));
    if (year == kNone) {
        return std::nullopt;
    }
    return DayOf(year + (year >= 69 ? 1900 : 2000), Number(text.substr(0, 2)),
                 Number(text.substr(3, 2)));
}

std::optional<int64_t> ParseIsoDate(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    return DayOf(Number(text.substr(0, 4)), Number(text.substr(5, 2)), Number(text.substr(8)));
}

std::string IsoDate(int64_t day) {
    int year = 1970 + static_cast<int>(day / 366);
    while (*DayOf(year, 12, 31) < day) {
        ++year;
    }
    while (*DayOf(year, 1, 1) > day) {
        --year;
    }
    int month = 1;
    while (*DayOf(year, month, DaysInMonth(year, month)) < day) {
        ++month;
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", year, month,
                  static_cast<int>(day - *DayOf(year, month, 1)) + 1);
    return text.data();
}

std::string ClockTime(int secondOfDay) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d", secondOfDay / 3600,
                  secondOfDay / 60 % 60, secondOfDay % 60);
    return text.data();
}

}  // namespace host
