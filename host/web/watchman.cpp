// The watchman. Tested by tests/unit/host/web_watchman_test.cpp.
#include "host/web/watchman.h"

#include <algorithm>
#include <utility>

namespace host {
namespace {

constexpr std::time_t kApart = 60;
constexpr std::time_t kTooFar = 10 * kApart;  // then nobody knows whether it was so in between

// Figures that grow stand behind the comma.
std::string Lasting(const Amiss& amiss) {
    return amiss.what.substr(0, amiss.what.find(','));
}

bool IsAmong(const std::vector<Amiss>& found, const Amiss& amiss) {
    return std::any_of(found.begin(), found.end(), [&amiss](const Amiss& other) {
        return other.alarm == amiss.alarm && other.pager == amiss.pager &&
               Lasting(other) == Lasting(amiss);
    });
}

}  // namespace

Watchman::Report Watchman::Look(Connection& connection, Encoding encoding, std::time_t now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (now >= report_.at && now < report_.at + kApart) {
        return report_;
    }
    std::vector<Amiss> found = Reckon(connection, encoding, now);
    Report report{now, report_.at != 0 && now >= report_.at && now < report_.at + kTooFar, {}};
    for (const Amiss& amiss : found) {
        if (report.twice && IsAmong(found_, amiss)) {
            report.amiss.push_back(amiss);
        }
    }
    found_ = std::move(found);
    report_ = std::move(report);
    return report_;
}

}  // namespace host
