// What becomes of a page that a pager's hours bar at first.
#ifndef PAGERFWD_HOST_SITE_BARRED_TRIES_H
#define PAGERFWD_HOST_SITE_BARRED_TRIES_H

#include <cstdint>
#include <optional>

#include "host/site/hours.h"
#include "host/site/site.h"

namespace host {

inline constexpr int64_t kMinutesInHour = 60;

// How many minutes behind the first try of a page it leaves, by hours that bar it or not; none: it
// never leaves. start: the minute of the week, 0 at the beginning of Monday.
//
// An SMS page is tried once, since a try outside the hours counts as sent. Any other is tried
// again, the pager's delay apart, until its retries are used up.
std::optional<int64_t> MinutesBarred(const Week& week, const Pager& pager, int64_t start);

// The first hour of the week in which an alarm would find all tries of the pager barred; none where
// there is no such hour.
std::optional<size_t> FirstHourInVain(const Week& week, const Pager& pager);

bool IsSms(const Pager& pager);

}  // namespace host

#endif
