// The week of a time model, and its rules. Tested by tests/unit/host/site_check_test.cpp.
#include "host/site/time_models.h"

#include <array>

#include "host/site/rules.h"

namespace host {
namespace {

std::string HoursCalled(const TimeModel& model) {
    return "hours " + InQuotes(model.name.value);
}

void CheckName(const Site& site, const TimeModel& model, Findings& findings) {
    const TimeModel* first = FindTimeModel(site, model.name.value);
    if (first != &model) {
        findings.Error(model.name.line,
                       HoursCalled(model) + " are there already, " + findings.Where(first->line),
                       "Only the first of the two would count.",
                       "Give these their own name, or take them out.");
    }
}

// The line on which each day is said; 0: not yet.
using SaidOn = std::array<int, kDaysInWeek>;

// Each day may be said once: of two texts for one day nobody could tell which one holds.
void NoteDays(const TimeModel& model, const DayHours& hours, SaidOn& saidOn, Findings& findings) {
    for (const size_t day : ParseDays(hours.days.value)) {
        if (saidOn[day] != 0) {
            findings.Error(hours.days.line,
                           HoursCalled(model) + ": " + std::string(NameOfDay(day)) +
                               " is said already, " + findings.Where(saidOn[day]),
                           "It could not be told which of the two holds.", "Say each day once.");
            return;
        }
        saidOn[day] = hours.days.line;
    }
}

// Returns whether all days and hours could be told.
bool CheckDays(const TimeModel& model, Findings& findings) {
    SaidOn saidOn{};
    bool told = true;
    for (const DayHours& hours : model.days) {
        try {
            ParseHours(hours.ranges.value);
            NoteDays(model, hours, saidOn, findings);
        } catch (const NoHours& reason) {
            told = false;
            findings.Error(hours.days.line, HoursCalled(model) + ": " + reason.what(),
                           "The hours could not be told.",
                           "Write days and hours such as: mon-fri = \"8-12,13-18\", sat = \"24h\", "
                           "sun = \"none\"");
        }
    }
    return told;
}

void CheckAll(const TimeModel& model, Findings& findings) {
    if (model.all.value && !model.days.empty()) {
        findings.Error(model.all.line, HoursCalled(model) + ": all = true, and days besides",
                       "The days would have no effect.", "Keep one of the two.");
    }
}

void CheckAny(const TimeModel& model, Findings& findings) {
    if (WeekOf(model).none()) {
        findings.Warning(model.line, HoursCalled(model) + " allow no hour",
                         "Every page counts as sent, and none is ever sent.",
                         "Add days such as: mon-fri = \"8-18\", or: all = true");
    }
}

}  // namespace

const TimeModel* FindTimeModel(const Site& site, std::string_view name) {
    for (const TimeModel& model : site.timeModels) {
        if (model.name.value == name) {
            return &model;
        }
    }
    return nullptr;
}

Week WeekOf(const TimeModel& model) {
    Week week;
    if (model.all.value) {
        return week.set();
    }
    for (const DayHours& hours : model.days) {
        try {
            const Day allowed = ParseHours(hours.ranges.value);
            for (const size_t day : ParseDays(hours.days.value)) {
                for (size_t hour = 0; hour < kHoursInDay; ++hour) {
                    week.set(day * kHoursInDay + hour, allowed.test(hour));
                }
            }
        } catch (const NoHours&) {
            continue;
        }
    }
    return week;
}

void CheckTimeModels(const Site& site, Findings& findings) {
    for (const TimeModel& model : site.timeModels) {
        CheckName(site, model, findings);
        CheckAll(model, findings);
        if (CheckDays(model, findings)) {
            CheckAny(model, findings);
        }
    }
}

}  // namespace host
