// A clock that is set while somebody measures by it.
#include "host/process/clock_jumps.h"

#include <gtest/gtest.h>

namespace host {
namespace {

constexpr std::time_t kNow = 978948000;

TEST(AClock, ThatGoesOnHasNotJumped) {
    ClockJumps jumps;
    EXPECT_EQ(0, jumps.Look(kNow)) << "the first look compares with nothing";
    EXPECT_EQ(0, jumps.Look(kNow));
    EXPECT_EQ(0, jumps.Look(kNow + 1));
    EXPECT_EQ(0, jumps.Look(kNow + 1 + ClockJumps::kLongestBetween));
}

TEST(AClock, ThatIsSetHasJumpedOnce) {
    ClockJumps jumps;
    jumps.Look(kNow);
    EXPECT_EQ(121, jumps.Look(kNow + 121));
    EXPECT_EQ(0, jumps.Look(kNow + 122));
    EXPECT_EQ(-3600, jumps.Look(kNow + 122 - 3600));
    EXPECT_EQ(0, jumps.Look(kNow + 123 - 3600));
    EXPECT_EQ(-1, jumps.Look(kNow + 122 - 3600));
}

TEST(AnInstant, ComesAtItsTime) {
    EXPECT_FALSE(HasCome(kNow, kNow - 1, 60));
    EXPECT_FALSE(HasCome(kNow, kNow - 60, 60));
    EXPECT_TRUE(HasCome(kNow, kNow, 60));
    EXPECT_TRUE(HasCome(kNow, kNow + 3600, 60));
}

TEST(AnInstant, IsNotWaitedForByAClockThatWasSetBack) {
    EXPECT_TRUE(HasCome(kNow, kNow - 61, 60));
}

}  // namespace
}  // namespace host
