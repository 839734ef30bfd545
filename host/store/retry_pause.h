// When to try again to reach a server that is away: at first soon, then less and less often. Each
// pause is random within its upper half, so that all who have lost a server don't come back at one
// instant. Nobody sleeps here.
//
// Tested by tests/unit/host/retry_pause_test.cpp.
//
// Threads    One.
#ifndef PAGERFWD_HOST_STORE_RETRY_PAUSE_H
#define PAGERFWD_HOST_STORE_RETRY_PAUSE_H

#include <algorithm>
#include <chrono>
#include <random>

namespace host {

class RetryPause {
 public:
    using Time = std::chrono::system_clock::time_point;
    using Length = std::chrono::milliseconds;

    static constexpr Length kFirst{500};
    static constexpr Length kLongest{8000};

    explicit RetryPause(unsigned seed) : random_(seed) {}

    // A clock that was set back makes none longer.
    bool IsOver(Time now) const { return now >= until_ || now < until_ - kLongest; }

    void Failed(Time now) {
        until_ = now + Length(std::uniform_int_distribution<Length::rep>(length_.count() / 2,
                                                                         length_.count())(random_));
        length_ = std::min(2 * length_, kLongest);
    }

    void Worked() {
        length_ = kFirst;
        until_ = {};
    }

 private:
    std::minstd_rand random_;
    Length length_ = kFirst;  // of the next pause, at most
    Time until_{};
};

}  // namespace host

#endif
