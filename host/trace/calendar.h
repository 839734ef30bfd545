// Days, counted from 1 January 1970.
#ifndef PAGERFWD_HOST_TRACE_CALENDAR_H
#define PAGERFWD_HOST_TRACE_CALENDAR_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// None where there is no such date.
std::optional<int64_t> DayOf(int year, int month, int day);

// "01/08/01", as the library's trace has it: month, day, year. Years 69 to 99 are of the 20th
// century.
std::optional<int64_t> ParseTraceDate(std::string_view text);

// "2001-01-08"
std::optional<int64_t> ParseIsoDate(std::string_view text);
std::string IsoDate(int64_t day);

// "07:05:09"
std::string ClockTime(int secondOfDay);

}  // namespace host

#endif
