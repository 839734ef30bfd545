// Pauses between tries to reach a server.
#include "host/store/retry_pause.h"

#include <gtest/gtest.h>

#include <set>

namespace host {
namespace {

using Length = RetryPause::Length;

// How long it lasts, to the millisecond, from a failure at `now` on.
Length LastsFrom(const RetryPause& pause, RetryPause::Time now) {
    Length length{0};
    while (!pause.IsOver(now + length)) {
        ++length;
    }
    return length;
}

TEST(ARetryPause, IsNotThereBeforeAnythingFailed) {
    EXPECT_TRUE(RetryPause(1).IsOver(RetryPause::Time{}));
}

TEST(ARetryPause, GrowsUpToABoundAndIsRandomWithinItsUpperHalf) {
    RetryPause pause(1);
    const RetryPause::Time now{std::chrono::hours(1)};
    for (Length most = RetryPause::kFirst; most < 8 * RetryPause::kLongest; most *= 2) {
        pause.Failed(now);
        const Length length = LastsFrom(pause, now);
        EXPECT_LE(length, std::min(most, RetryPause::kLongest));
        EXPECT_GE(length, std::min(most, RetryPause::kLongest) / 2);
    }
}

TEST(ARetryPause, IsAnotherForEach) {
    const RetryPause::Time now{std::chrono::hours(1)};
    std::set<Length> lengths;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        RetryPause pause(seed);
        pause.Failed(now);
        pause.Failed(now);
        lengths.insert(LastsFrom(pause, now));
    }
    EXPECT_GT(lengths.size(), 10U);
}

TEST(ARetryPause, IsOverWhereTheClockWasSetBack) {
    RetryPause pause(1);
    const RetryPause::Time now{std::chrono::hours(10)};
    pause.Failed(now);
    EXPECT_FALSE(pause.IsOver(now));
    EXPECT_TRUE(pause.IsOver(now - std::chrono::hours(1)));
}

TEST(ARetryPause, IsShortAgainBehindASuccess) {
    RetryPause pause(1);
    const RetryPause::Time now{std::chrono::hours(1)};
    for (int failure = 0; failure < 9; ++failure) {
        pause.Failed(now);
    }
    pause.Worked();
    EXPECT_TRUE(pause.IsOver(now));
    pause.Failed(now);
    EXPECT_LE(LastsFrom(pause, now), RetryPause::kFirst);
}

}  // namespace
}  // namespace host
