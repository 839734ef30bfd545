// A test of several threads under the virtual clock: who did something, and when.
#ifndef PAGERFWD_TESTS_UNIT_SIM_TIMED_LOG_H
#define PAGERFWD_TESTS_UNIT_SIM_TIMED_LOG_H

#include <gtest/gtest.h>

#include <mutex>
#include <string>

#include "sim/testing.h"

namespace pagersim {

class TimedLogTest : public testing::Test {
 protected:
    // "who@1500 " for 1,500 ms after the clock began. From any thread.
    void Log(const std::string& who) {
        const std::lock_guard<std::mutex> hold(log_lock_);
        log_ += who + "@" + std::to_string(VirtualClock::Now().count()) + " ";
    }

    std::string Log() {
        const std::lock_guard<std::mutex> hold(log_lock_);
        return log_;
    }

    VirtualClock clock;

 private:
    std::mutex log_lock_;
    std::string log_;
};

}  // namespace pagersim

#endif
