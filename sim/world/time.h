// Virtual time: microseconds since the simulation began.
#ifndef PAGERFWD_SIM_WORLD_TIME_H
#define PAGERFWD_SIM_WORLD_TIME_H

#include <chrono>
#include <cstdint>
#include <ctime>

namespace pagersim {

using Micros = std::chrono::microseconds;

constexpr Micros kNever = Micros::max();

// A span or instant given in the system's two parts, fractions of a microsecond counted as one.
// Beyond a few thousand years: never.
inline Micros ToMicros(time_t seconds, long nanoseconds) {
    constexpr int64_t kForEver = 100'000'000'000;
    if (int64_t{seconds} >= kForEver) {
        return kNever;
    }
    return std::chrono::seconds(seconds) + Micros((nanoseconds + 999) / 1000);
}

}  // namespace pagersim

#endif
