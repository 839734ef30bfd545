// When something is done that is done at most every so many seconds, and only where somebody wants
// it. Tested by tests/unit/host/pace_test.cpp.
#ifndef PAGERFWD_HOST_NODE_PACE_H
#define PAGERFWD_HOST_NODE_PACE_H

#include <ctime>

#include "host/process/clock_jumps.h"

namespace host {

class Pace {
 public:
    explicit Pace(std::time_t between) : between_(between) {}

    void Want() { wanted_ = true; }

    bool IsDue(std::time_t now) const {
        return wanted_ && HasCome(last_ + between_, now, between_);
    }

    // Whether it is to be done now. It is wanted no more then.
    bool Take(std::time_t now) {
        if (!IsDue(now)) {
            return false;
        }
        last_ = now;
        wanted_ = false;
        return true;
    }

 private:
    const std::time_t between_;
    std::time_t last_ = 0;
    bool wanted_ = true;  // at first
};

}  // namespace host

#endif
