// What is done at most every so many seconds.
#include "host/node/pace.h"

#include <gtest/gtest.h>

namespace host {
namespace {

constexpr std::time_t kNow = 978948000;

TEST(APace, IsDueAtFirst) {
    Pace pace(5);
    EXPECT_TRUE(pace.IsDue(kNow));
    EXPECT_TRUE(pace.Take(kNow));
}

TEST(APace, IsNotDueWhereNobodyWantsIt) {
    Pace pace(5);
    pace.Take(kNow);
    EXPECT_FALSE(pace.IsDue(kNow + 3600));
    EXPECT_FALSE(pace.Take(kNow + 3600));
}

TEST(APace, KeepsItsDistance) {
    Pace pace(5);
    pace.Take(kNow);
    pace.Want();
    EXPECT_FALSE(pace.Take(kNow + 4));
    EXPECT_TRUE(pace.Take(kNow + 5)) << "it is still wanted";
    EXPECT_FALSE(pace.Take(kNow + 10));
}

TEST(APace, WaitsForNoHourThatComesTwice) {
    Pace pace(60);
    pace.Take(kNow);
    pace.Want();
    EXPECT_TRUE(pace.Take(kNow - 3600));
    pace.Want();
    EXPECT_FALSE(pace.Take(kNow - 3541));
    EXPECT_TRUE(pace.Take(kNow - 3540));
}

}  // namespace
}  // namespace host
