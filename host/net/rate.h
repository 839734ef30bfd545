// How often each source may ask: a bucket of tokens each, filled at a steady rate.
//
// Threads    One.
#ifndef PAGERFWD_HOST_NET_RATE_H
#define PAGERFWD_HOST_NET_RATE_H

#include <chrono>
#include <map>
#include <string>

namespace host {

class RateLimit {
 public:
    using Clock = std::chrono::steady_clock;

    // burst: at once, at most; every: how long it takes until there is room for one more.
    RateLimit(int burst, std::chrono::milliseconds every) : burst_(burst), every_(every) {}

    // Whether there is room for one more, which is used up then.
    bool Take(const std::string& source, Clock::time_point now);

 private:
    void ForgetFull(Clock::time_point now);

    const int burst_;
    const std::chrono::milliseconds every_;
    // When the bucket of each will be full again; one that isn't here is full.
    std::map<std::string, Clock::time_point> full_at_;
};

}  // namespace host

#endif
