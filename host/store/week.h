// The hours of a week, as the tables have them.
#ifndef PAGERFWD_HOST_STORE_WEEK_H
#define PAGERFWD_HOST_STORE_WEEK_H

#include <bitset>
#include <cstddef>

namespace host {

constexpr size_t kDaysInWeek = 7;
constexpr size_t kHoursInDay = 24;

// Hour 0 of Monday first. Set: a page may leave.
using Week = std::bitset<kDaysInWeek * kHoursInDay>;
using Day = std::bitset<kHoursInDay>;

}  // namespace host

#endif
