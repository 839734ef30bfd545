// GetTickCount, on a clock of the test's own. One test: the first call in the process counts.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "linux/win_system.h"

namespace {

std::atomic<int64_t> clock_us{0};       // microseconds of the day the program sees
std::atomic<int64_t> clock_step_us{0};  // ... and how far each look moves it

void SetClock(int64_t seconds, int64_t microseconds) {
    clock_us = seconds * 1000000 + microseconds;
}

}  // namespace

extern "C" int __wrap_gettimeofday(timeval* now, void* /*zone*/) {
    const int64_t us = clock_us.fetch_add(clock_step_us);
    now->tv_sec = static_cast<time_t>(us / 1000000);
    now->tv_usec = static_cast<suseconds_t>(us % 1000000);
    return 0;
}

TEST(TickCount, CountsMillisecondsFromTheFirstCall) {
    // The first call comes from several threads at once: one of them is the first, for all others
    // a second or more has passed.
    SetClock(1000, 900000);
    clock_step_us = 1000000;
    std::vector<DWORD> ticks(8);
    std::vector<std::thread> threads;
    for (DWORD& tick : ticks) {
        threads.emplace_back([&tick] { tick = GetTickCount(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::sort(ticks.begin(), ticks.end());
    EXPECT_EQ((std::vector<DWORD>{0, 1000, 2000, 3000, 4000, 5000, 6000, 7000}), ticks);
    clock_step_us = 0;

    // The base is 1000.9 s.
    SetClock(1000, 900000);
    EXPECT_EQ(0U, GetTickCount());
    SetClock(1000, 900999);
    EXPECT_EQ(0U, GetTickCount());
    SetClock(1000, 901000);
    EXPECT_EQ(1U, GetTickCount());
    SetClock(1001, 100000);  // fewer microseconds than the base: a second is borrowed
    EXPECT_EQ(200U, GetTickCount());
    SetClock(1002, 899999);
    EXPECT_EQ(1999U, GetTickCount());
    SetClock(1000 + 4294967, 900000 + 95000);
    EXPECT_EQ(4294967095U, GetTickCount());
    SetClock(1000 + 4294968, 195999);
    EXPECT_EQ(4294967295U, GetTickCount());
    SetClock(1000 + 4294968, 196000);
    EXPECT_EQ(0U, GetTickCount()) << "wraps after 2^32 ms";
    SetClock(1000, 899000);
    EXPECT_EQ(4294967295U, GetTickCount()) << "the clock was set back";
}
