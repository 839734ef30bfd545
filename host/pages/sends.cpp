// What the trace says of a page. Tested by tests/unit/host/sends_test.cpp.
#include "host/pages/sends.h"

#include <algorithm>

#include "host/store/tables/history.h"

namespace host {
namespace {

// The library writes the number as a local time. In the hour that occurs twice in autumn two
// numbers have the same; elsewhere only one of the two is that time.
std::string AlarmOf(Connection& connection, const TracedPage& page) {
    for (const int summer : {0, 1}) {
        std::tm parts{};
        if (strptime(page.raised.c_str(), "%m/%d/%y / %H:%M:%S", &parts) == nullptr) {
            break;
        }
        parts.tm_isdst = summer;
        std::string alarm = std::to_string(std::mktime(&parts));
        if (parts.tm_isdst == summer && HadPage(connection, {alarm, page.alarm, page.pager})) {
            return alarm;
        }
    }
    return {};
}

// The trace is read a little later than it was written.
std::time_t EndOf(const TracedPage& page, std::time_t now) {
    if (!page.day) {
        return now;
    }
    constexpr int kMinute = 60;
    constexpr int kHour = 60 * kMinute;
    constexpr int kDay = 24 * kHour;
    const std::time_t midday = static_cast<std::time_t>(*page.day) * kDay + kDay / 2;
    std::tm parts{};
    gmtime_r(&midday, &parts);  // only for the date
    // Not as seconds since midnight: on two days of the year, these aren't the clock's.
    const int end = page.second + page.seconds;
    parts.tm_mday += end / kDay;
    parts.tm_hour = end % kDay / kHour;
    parts.tm_min = end % kHour / kMinute;
    parts.tm_sec = end % kMinute;
    parts.tm_isdst = -1;
    return std::min(now, std::mktime(&parts));
}

}  // namespace

Send SendOf(Connection& connection, const TracedPage& page, std::time_t now) {
    Send send;
    send.at = EndOf(page, now);
    send.seconds = page.seconds;
    send.alarm = page.test ? std::string() : AlarmOf(connection, page);
    send.pager = page.pager;
    send.port = page.Port();
    send.outcome = page.outcome;
    send.result = page.result;
    send.reason = page.reason;
    return send;
}

}  // namespace host
