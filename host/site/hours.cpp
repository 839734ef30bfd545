// Hour ranges. Tested by tests/unit/host/hours_test.cpp.
#include "host/site/hours.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace host {
namespace {

constexpr std::array<std::string_view, kDaysInWeek> kDays = {"mon", "tue", "wed", "thu",
                                                             "fri", "sat", "sun"};

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (size_t at = text.find(separator); at != std::string_view::npos;
         at = text.find(separator)) {
        parts.push_back(text.substr(0, at));
        text.remove_prefix(at + 1);
    }
    parts.push_back(text);
    return parts;
}

std::string_view Trimmed(std::string_view text) {
    const size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

size_t ParseDay(std::string_view name) {
    const auto* const day = std::find(kDays.begin(), kDays.end(), name);
    if (day == kDays.end()) {
        throw NoHours("there is no day \"" + std::string(name) + "\"");
    }
    return static_cast<size_t>(day - kDays.begin());
}

size_t ParseHour(std::string_view text) {
    size_t hour = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, hour);
    if (stop != end && *stop == ':') {
        throw NoHours("\"" + std::string(text) + "\": only whole hours can be told apart");
    }
    if (text.empty() || error != std::errc() || stop != end || hour > kHoursInDay) {
        throw NoHours("\"" + std::string(text) + "\" is not an hour from 0 to 24");
    }
    return hour;
}

void AddRange(std::string_view text, Day& day) {
    const std::vector<std::string_view> ends = Split(text, '-');
    if (ends.size() != 2) {
        throw NoHours("\"" + std::string(text) + "\" is not a range of hours");
    }
    const size_t from = ParseHour(Trimmed(ends[0]));
    const size_t to = ParseHour(Trimmed(ends[1]));
    if (from >= to) {
        throw NoHours("\"" + std::string(text) +
                      "\" ends before it begins; over midnight, write two ranges: \"0-6,22-24\"");
    }
    for (size_t hour = from; hour < to; ++hour) {
        day.set(hour);
    }
}

}  // namespace

std::vector<size_t> ParseDays(std::string_view text) {
    const std::vector<std::string_view> ends = Split(text, '-');
    if (ends.size() > 2) {
        throw NoHours("\"" + std::string(text) + "\" is not a range of days");
    }
    std::vector<size_t> days{ParseDay(ends.front())};
    const size_t last = ParseDay(ends.back());
    while (days.back() != last) {
        days.push_back((days.back() + 1) % kDaysInWeek);
    }
    return days;
}

Day ParseHours(std::string_view text) {
    Day day;
    const std::string_view whole = Trimmed(text);
    if (whole == "24h") {
        return day.set();
    }
    if (whole == "none") {
        return day;
    }
    for (const std::string_view range : Split(whole, ',')) {
        AddRange(Trimmed(range), day);
    }
    return day;
}

std::string_view NameOfDay(size_t day) {
    return kDays.at(day);
}

std::string WriteHours(const Day& day) {
    if (day.none() || day.all()) {
        return day.none() ? "none" : "24h";
    }
    std::string hours;
    for (size_t from = 0; from < kHoursInDay; ++from) {
        if (!day.test(from)) {
            continue;
        }
        size_t to = from;
        while (to < kHoursInDay && day.test(to)) {
            ++to;
        }
        hours += (hours.empty() ? "" : ",") + std::to_string(from) + "-" + std::to_string(to);
        from = to;
    }
    return hours;
}

std::vector<WrittenHours> WriteWeek(const Week& week) {
    std::vector<WrittenHours> written;
    for (size_t first = 0; first < kDaysInWeek;) {
        const Day day = DayOf(week, first);
        size_t last = first;
        while (last + 1 < kDaysInWeek && DayOf(week, last + 1) == day) {
            ++last;
        }
        if (day.any()) {
            const std::string days(kDays.at(first));
            written.push_back(
                {last == first ? days : days + "-" + std::string(kDays.at(last)), WriteHours(day)});
        }
        first = last + 1;
    }
    return written;
}

Day DayOf(const Week& week, size_t day) {
    Day hours;
    for (size_t hour = 0; hour < kHoursInDay; ++hour) {
        hours.set(hour, week.test(day * kHoursInDay + hour));
    }
    return hours;
}

}  // namespace host
