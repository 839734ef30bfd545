// Tries outside the hours. Tested by tests/unit/host/barred_tries_test.cpp.
#include "host/site/barred_tries.h"

#include <algorithm>

namespace host {
namespace {

constexpr int64_t kMinutesInWeek = kDaysInWeek * kHoursInDay * kMinutesInHour;

bool IsAllowed(const Week& week, int64_t minute) {
    return week.test(static_cast<size_t>(minute % kMinutesInWeek / kMinutesInHour));
}

}  // namespace

bool IsSms(const Pager& pager) {
    return pager.type.value == "sms1" || pager.type.value == "sms2";
}

// The engine looks once a minute, so without a delay a minute lies between two tries. After a
// week's number of tries the minutes of the week repeat.
std::optional<int64_t> MinutesBarred(const Week& week, const Pager& pager, int64_t start) {
    const int64_t delay = std::clamp<int64_t>(pager.delay.value, 1, INT32_MAX);
    const int64_t retries =
        IsSms(pager) ? 0 : std::clamp<int64_t>(pager.retries.value, 0, kMinutesInWeek);
    for (int64_t retry = 0; retry <= retries; ++retry) {
        if (IsAllowed(week, start + retry * delay)) {
            return retry * delay;
        }
    }
    return std::nullopt;
}

std::optional<size_t> FirstHourInVain(const Week& week, const Pager& pager) {
    for (size_t hour = 0; hour < week.size(); ++hour) {
        if (!MinutesBarred(week, pager, static_cast<int64_t>(hour) * kMinutesInHour)) {
            return hour;
        }
    }
    return std::nullopt;
}

}  // namespace host
