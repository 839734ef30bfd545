// Rates. Tested by tests/unit/host/web_http_test.cpp.
#include "host/net/rate.h"

#include <algorithm>

namespace host {
namespace {

// Above this many sources, those are forgotten that don't ask any more.
constexpr size_t kMostSources = 1000;

}  // namespace

bool RateLimit::Take(const std::string& source, Clock::time_point now) {
    if (full_at_.size() > kMostSources) {
        ForgetFull(now);
    }
    Clock::time_point& full_at = full_at_[source];
    const Clock::time_point next = std::max(full_at, now) + every_;
    if (next > now + burst_ * every_) {
        return false;
    }
    full_at = next;
    return true;
}

void RateLimit::ForgetFull(Clock::time_point now) {
    for (auto it = full_at_.begin(); it != full_at_.end();) {
        it = it->second <= now ? full_at_.erase(it) : std::next(it);
    }
}

}  // namespace host
