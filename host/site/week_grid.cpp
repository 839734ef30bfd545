// The week grid. Tested by tests/unit/host/week_grid_test.cpp.
#include "host/site/week_grid.h"

#include <algorithm>
#include <cctype>

namespace host {
namespace {

constexpr const char* kHeader = "#     0        8        16\n";
constexpr size_t kHoursAGroup = 8;
constexpr char kAllowed = 'x';
constexpr char kBarred = '.';
constexpr std::string_view kBlanks = " \t\r";

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

std::string_view Trimmed(std::string_view text) {
    const size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    text.remove_prefix(begin);
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// Takes the text up to the separator off the front.
std::string_view TakeUpTo(std::string_view& text, std::string_view separators) {
    const size_t end = std::min(text.find_first_of(separators), text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return taken;
}

Day ParseMarks(std::string_view marks) {
    Day day;
    size_t hour = 0;
    for (const char mark : marks) {
        if (kBlanks.find(mark) != std::string_view::npos) {
            continue;
        }
        if (mark != kAllowed && mark != 'X' && mark != kBarred) {
            throw NoHours("\"" + std::string(1, mark) +
                          "\" is neither x (a page may leave) nor a dot");
        }
        if (hour < kHoursInDay) {
            day.set(hour, mark != kBarred);
        }
        ++hour;
    }
    if (hour != kHoursInDay) {
        throw NoHours("there are " + std::to_string(hour) + " hours, and a day has 24");
    }
    return day;
}

void SetDay(Week& week, size_t index, const Day& day) {
    for (size_t hour = 0; hour < kHoursInDay; ++hour) {
        week.set(index * kHoursInDay + hour, day.test(hour));
    }
}

// "mon   xxx...": returns which day it was.
size_t ParseLine(std::string_view line, Week& week, const std::bitset<kDaysInWeek>& said) {
    std::string_view marks = line;
    const std::string name = Lower(TakeUpTo(marks, kBlanks));
    const std::vector<size_t> days = ParseDays(name);
    if (days.size() != 1) {
        throw NoHours("a line is for one day");
    }
    if (said.test(days[0])) {
        throw NoHours(name + " is there already");
    }
    try {
        SetDay(week, days[0], ParseMarks(marks));
    } catch (const NoHours& reason) {
        throw NoHours(name + ": " + reason.what());
    }
    return days[0];
}

}  // namespace

std::string WriteGrid(const Week& week) {
    std::string grid = kHeader;
    for (size_t day = 0; day < kDaysInWeek; ++day) {
        grid += std::string(NameOfDay(day)) + "  ";
        for (size_t hour = 0; hour < kHoursInDay; ++hour) {
            grid += hour % kHoursAGroup == 0 ? " " : "";
            grid += week.test(day * kHoursInDay + hour) ? kAllowed : kBarred;
        }
        grid += "\n";
    }
    return grid;
}

Week ParseGrid(std::string_view text) {
    Week week;
    std::bitset<kDaysInWeek> said;
    for (int number = 1; !text.empty(); ++number) {
        std::string_view line = TakeUpTo(text, "\n");
        line = Trimmed(TakeUpTo(line, "#"));
        if (line.empty()) {
            continue;
        }
        try {
            said.set(ParseLine(line, week, said));
        } catch (const NoHours& reason) {
            throw NoHours("line " + std::to_string(number) + ": " + reason.what());
        }
    }
    for (size_t day = 0; day < kDaysInWeek; ++day) {
        if (!said.test(day)) {
            throw NoHours("there is no line for " + std::string(NameOfDay(day)));
        }
    }
    return week;
}

void SetHours(Week& week, std::string_view text) {
    std::string_view hours = Trimmed(text);
    const std::string days = Lower(TakeUpTo(hours, kBlanks));
    if (days.empty() || Trimmed(hours).empty()) {
        throw NoHours("\"" + std::string(text) +
                      "\" says no days and hours; write such as \"mon-fri 8-17\"");
    }
    const Day day = ParseHours(Lower(hours));
    Week changed = week;
    for (std::string_view left = days; !left.empty();) {
        for (const size_t index : ParseDays(TakeUpTo(left, ","))) {
            SetDay(changed, index, day);
        }
    }
    week = changed;
}

}  // namespace host
