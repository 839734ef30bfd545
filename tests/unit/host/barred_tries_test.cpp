// When a page leaves that a pager's hours bar at first.
#include "host/site/barred_tries.h"

#include <gtest/gtest.h>

#include "host/site/time_models.h"

namespace host {
namespace {

Pager PagerWith(int64_t retries, int64_t delay, const char* type = "alphanumeric") {
    Pager pager;
    pager.type.value = type;
    pager.retries.value = retries;
    pager.delay.value = delay;
    return pager;
}

Week WeekWith(const char* days, const char* hours) {
    TimeModel model;
    model.days.push_back({{days, 1}, {hours, 1}});
    return WeekOf(model);
}

constexpr int64_t kMinutesOfDay = 24 * kMinutesInHour;
const Week kOffice = WeekWith("mon-fri", "8-18");

TEST(MinutesBarred, AreNoneWithinTheHours) {
    EXPECT_EQ(0, MinutesBarred(kOffice, PagerWith(0, 45), 8 * kMinutesInHour));
    EXPECT_EQ(0, MinutesBarred(kOffice, PagerWith(0, 45, "sms1"), 18 * kMinutesInHour - 1));
}

TEST(MinutesBarred, LastUntilATryFallsIntoTheHours) {
    EXPECT_EQ(60, MinutesBarred(kOffice, PagerWith(2, 30), 7 * kMinutesInHour));
    EXPECT_EQ(90, MinutesBarred(kOffice, PagerWith(2, 45), 7 * kMinutesInHour));
    EXPECT_EQ(std::nullopt, MinutesBarred(kOffice, PagerWith(1, 30), 7 * kMinutesInHour));
}

TEST(MinutesBarred, GoOnOverTheEndOfTheWeek) {
    EXPECT_EQ(12 * kMinutesInHour, MinutesBarred(kOffice, PagerWith(1, 12 * kMinutesInHour),
                                                 6 * kMinutesOfDay + 20 * kMinutesInHour));
}

TEST(MinutesBarred, AreForEverForAnSmsPage) {
    for (const char* type : {"sms1", "sms2"}) {
        EXPECT_EQ(std::nullopt, MinutesBarred(kOffice, PagerWith(5, 45, type), 0));
    }
}

TEST(MinutesBarred, CountAMinuteForEachTryWithoutADelay) {
    EXPECT_EQ(3, MinutesBarred(kOffice, PagerWith(3, 0), 8 * kMinutesInHour - 3));
    EXPECT_EQ(std::nullopt, MinutesBarred(kOffice, PagerWith(2, 0), 8 * kMinutesInHour - 3));
}

TEST(MinutesBarred, AreCountedForTheLargestNumbersToo) {
    EXPECT_EQ(std::nullopt, MinutesBarred(Week(), PagerWith(INT64_MAX, INT64_MAX), 0));
    EXPECT_EQ(std::nullopt, MinutesBarred(Week(), PagerWith(-1, -1), 0));
}

TEST(HourInVain, IsTheFirstWhoseAlarmIsGivenUp) {
    // From Friday 18:00 to Monday 8:00 there are 62 hours.
    EXPECT_EQ(std::nullopt, FirstHourInVain(kOffice, PagerWith(62, 60)));
    EXPECT_EQ(4 * kHoursInDay + 18, FirstHourInVain(kOffice, PagerWith(61, 60)));
    EXPECT_EQ(0U, FirstHourInVain(kOffice, PagerWith(1, 60)));
    // Every try falls on the same hour of a day.
    EXPECT_EQ(0U, FirstHourInVain(kOffice, PagerWith(100, kMinutesOfDay)));
    EXPECT_EQ(std::nullopt, FirstHourInVain(Week().set(), PagerWith(0, 1)));
}

}  // namespace
}  // namespace host
