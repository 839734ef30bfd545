// Real time for far ends: what is to happen when, by the clock of the machine.
#ifndef PAGERFWD_SIM_SERVE_REAL_TIME_H
#define PAGERFWD_SIM_SERVE_REAL_TIME_H

#include <chrono>
#include <functional>
#include <map>

#include "sim/far_end.h"

namespace pagersim {

// Begins at 0 when it is made.
//
// Threads    One.
class RealTime {
 public:
    Milliseconds Now() const;

    // Calls that are due at the same instant are made in the order they were asked for.
    void At(Milliseconds after, std::function<void()> what);

    // Makes the calls that are due, also those that these ask for.
    void RunDue();

    // Until the next call; `most` where there is none before.
    Milliseconds UntilNext(Milliseconds most) const;

 private:
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::multimap<Milliseconds, std::function<void()>> due_;
};

}  // namespace pagersim

#endif
