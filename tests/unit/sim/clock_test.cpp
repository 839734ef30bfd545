// Virtual time: how it passes and how it is shown.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <stdexcept>

#include "sim/testing.h"

using namespace std::chrono_literals;

namespace pagersim {
namespace {

using RealClock = std::chrono::steady_clock;

TEST(Clock, ShowsTheStartAndStandsStill) {
    const VirtualClock clock(1'000'000'000);
    EXPECT_EQ(1'000'000'000, time(nullptr));
    timeval now{};
    gettimeofday(&now, nullptr);
    EXPECT_EQ(1'000'000'000, now.tv_sec);
    EXPECT_EQ(0, now.tv_usec);
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST(Clock, SleepTakesVirtualTimeOnly) {
    const VirtualClock clock(1'000'000'000);
    const auto before = RealClock::now();
    EXPECT_EQ(0U, sleep(3600));
    EXPECT_EQ(3600s, VirtualClock::Now());
    EXPECT_EQ(1'000'003'600, time(nullptr));
    EXPECT_LT(RealClock::now() - before, 60s);
}

TEST(Clock, AllItsFacesShowTheSame) {
    const VirtualClock clock(1'000'000'000);
    usleep(1);  // real: no virtual time
    poll(nullptr, 0, 1234);
    timeval day{};
    gettimeofday(&day, nullptr);
    timespec precise{};
    clock_gettime(CLOCK_REALTIME, &precise);
    time_t stored = 0;
    EXPECT_EQ(1'000'000'001, time(&stored));
    EXPECT_EQ(1'000'000'001, stored);
    EXPECT_EQ(1'000'000'001, day.tv_sec);
    EXPECT_EQ(234'000, day.tv_usec);
    EXPECT_EQ(1'000'000'001, precise.tv_sec);
    EXPECT_EQ(234'000'000, precise.tv_nsec);
    EXPECT_EQ(1'000'000'001,
              std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
}

TEST(Clock, FromTheMachinesStartItCountsTheSameSeconds) {
    const VirtualClock clock(1'000'000'000);
    sleep(7);
    timespec since_start{};
    clock_gettime(CLOCK_BOOTTIME, &since_start);
    EXPECT_EQ(7, since_start.tv_sec);
}

// As a wait for a device that is gone does.
TEST(Clock, PassesForAProgramThatDoesNothingButLookAtIt) {
    const VirtualClock clock;
    const time_t begun = time(nullptr);
    for (int look = 0; look < 100 && time(nullptr) == begun; ++look) {
        EXPECT_EQ(0ms, VirtualClock::Now()) << "a few looks take no time";
    }
    long looks = 0;
    while (time(nullptr) < begun + 10) {
        ASSERT_LT(++looks, 10'000'000);
    }
    EXPECT_LT(VirtualClock::Now(), 11s);
}

TEST(Clock, SetMovesTheWallClockOnly) {
    const VirtualClock clock(1'000'000'000);
    sleep(5);
    VirtualClock::Set(2'000'000'000);
    EXPECT_EQ(2'000'000'000, time(nullptr));
    EXPECT_EQ(5s, VirtualClock::Now());
    sleep(1);
    EXPECT_EQ(2'000'000'001, time(nullptr));
}

constexpr time_t kWeek = time_t{7} * 24 * 3600;

TEST(Clock, TheFirstStartsAtTheDefaultAndNoLaterOneGoesBack) {
    time_t first = 0;
    time_t last = 0;
    {
        const VirtualClock clock;
        first = time(nullptr);
        sleep(8 * 24 * 3600);
        last = time(nullptr);
    }
    const VirtualClock clock;
    EXPECT_GT(time(nullptr), last);
    EXPECT_EQ(0, (time(nullptr) - first) % kWeek) << "the same hour of the week";
    EXPECT_EQ(0, (first - VirtualClock::kDefaultStart) % kWeek);
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST(Clock, NoLaterOneGoesBackBehindOneThatWasSetBack) {
    time_t last = 0;
    {
        const VirtualClock clock;
        const time_t first = time(nullptr);
        sleep(8 * 24 * 3600);
        last = time(nullptr);
        VirtualClock::Set(first);
    }
    const VirtualClock clock;
    EXPECT_GT(time(nullptr), last);
}

TEST(Clock, IsRealAgainWhenItIsGone) {
    { const VirtualClock clock(1'000'000'000); }
    EXPECT_GT(time(nullptr), 1'700'000'000);
}

TEST(Clock, TheMonotonicClockStaysReal) {
    const auto before = RealClock::now();
    const VirtualClock clock;
    sleep(1'000'000);
    EXPECT_LT(RealClock::now() - before, 1000s);
}

TEST(Clock, ASecondOneIsRefused) {
    const VirtualClock clock;
    EXPECT_THROW(VirtualClock(), std::logic_error);
}

}  // namespace
}  // namespace pagersim
