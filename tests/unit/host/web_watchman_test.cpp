// The reckoning that is done for those who look.
#include "host/web/watchman.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/host/service_test.h"

namespace host {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

class TheWatchman : public ServiceTest {
 protected:
    Watchman::Report Look(time_t after) {
        return watchman.Look(connection, Encoding::kLatin1, kNow + after);
    }
    Watchman watchman;
};

TEST_F(TheWatchman, TellsOnlyWhatHeFindsTwice) {
    AddAlarm("7");
    EXPECT_FALSE(Look(0).twice);
    EXPECT_THAT(Look(30).amiss, IsEmpty()) << "too early";
    const Watchman::Report report = Look(60);
    EXPECT_TRUE(report.twice);
    ASSERT_THAT(report.amiss, SizeIs(1));
    EXPECT_EQ("7", report.amiss[0].alarm);
    EXPECT_EQ("it hasn't been taken up", report.amiss[0].what);
}

TEST_F(TheWatchman, IsContentWhereItWasTakenUpMeanwhile) {
    AddAlarm("7");
    Look(0);
    Execute("UPDATE AlarmLog SET pagerstate = '4'");
    AddAlarm("8");
    const Watchman::Report report = Look(61);
    EXPECT_TRUE(report.twice);
    EXPECT_THAT(report.amiss, IsEmpty());
    EXPECT_EQ(kNow + 61, report.at);
}

TEST_F(TheWatchman, ReckonsNoMoreOftenThanOnceAMinute) {
    EXPECT_EQ(kNow, Look(0).at);
    EXPECT_EQ(kNow, Look(59).at);
    EXPECT_EQ(kNow + 60, Look(60).at);
}

TEST_F(TheWatchman, BeginsAnewWhereNobodyHasLookedForLong) {
    AddAlarm("7");
    Look(0);
    EXPECT_FALSE(Look(600).twice);
    EXPECT_TRUE(Look(660).twice);
}

TEST_F(TheWatchman, BeginsAnewWhereTheClockWasSetBack) {
    Look(0);
    EXPECT_EQ(kNow - 5, Look(-5).at);
    EXPECT_FALSE(Look(0).twice);
}

}  // namespace
}  // namespace host
