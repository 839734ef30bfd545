// Hours of the week, as the site file writes them: days = "8-18", "9-12,14-16", "24h", "none".
#ifndef PAGERFWD_HOST_SITE_HOURS_H
#define PAGERFWD_HOST_SITE_HOURS_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/week.h"

namespace host {

// Why a text says no hours or no days, for the author of the file.
class NoHours : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// "mon", or "mon-fri", also over the end of the week: "sat-mon". 0 is Monday. Throws NoHours.
std::vector<size_t> ParseDays(std::string_view text);

// "8-18" is from 8:00 to 18:00, so the hours 8 to 17. Throws NoHours.
Day ParseHours(std::string_view text);

std::string_view NameOfDay(size_t day);

// The same, written: "8-12,13-18", "24h", "none".
std::string WriteHours(const Day& day);

// {"mon-fri", "8-18"}, {"sat", "9-12"}: days that follow each other and are alike, together; days
// without an hour are left out.
struct WrittenHours {
    std::string days;
    std::string hours;
};
std::vector<WrittenHours> WriteWeek(const Week& week);

Day DayOf(const Week& week, size_t day);

}  // namespace host

#endif
