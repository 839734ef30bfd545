// Notices that the clock was set, forwards or back, between two looks at it: how long something has
// lasted is then not to be read from it.
//
// A host that was set aside, or a process that stood still, comes to the same: nobody else could go
// on meanwhile either, and gets its time again.
//
// Tested by tests/unit/host/clock_jumps_test.cpp.
#ifndef PAGERFWD_HOST_PROCESS_CLOCK_JUMPS_H
#define PAGERFWD_HOST_PROCESS_CLOCK_JUMPS_H

#include <ctime>
#include <optional>
#include <utility>

namespace host {

class ClockJumps {
 public:
    // Looks that are no further apart find none, in seconds.
    static constexpr std::time_t kLongestBetween = 2 * 60;

    // Seconds that it has jumped by since the last look; 0: it went on as clocks do.
    std::time_t Look(std::time_t now) {
        const std::time_t passed = now - std::exchange(looked_, now).value_or(now);
        return passed < 0 || passed > kLongestBetween ? passed : 0;
    }

 private:
    std::optional<std::time_t> looked_;
};

// Whether an instant has come that was so far away at most when it was set. A clock that was set
// back since then makes nobody wait for it.
inline bool HasCome(std::time_t instant, std::time_t now, std::time_t furthest) {
    return now >= instant || now < instant - furthest;
}

}  // namespace host

#endif
