// CTime and CTimeSpan. localtime and localtime_r are wrapped at link time, to fail.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <thread>

#include "linux/CTime.h"
#include "sim/testing.h"

namespace {

bool fails = false;

}  // namespace

extern "C" {
tm* __real_localtime(const time_t* time);
tm* __real_localtime_r(const time_t* time, tm* out);

tm* __wrap_localtime(const time_t* time) {
    return fails ? nullptr : __real_localtime(time);
}

// What can't be converted may still leave its first fields behind.
tm* __wrap_localtime_r(const time_t* time, tm* out) {
    tm* const local = __real_localtime_r(time, out);
    return fails ? nullptr : local;
}
}

namespace {

class TimeTest : public testing::Test {
 protected:
    // Central European time: winter one hour, summer two hours east of UTC.
    TimeTest() { SetZone("CET-1CEST,M3.5.0,M10.5.0/3"); }
    ~TimeTest() override { SetZone("UTC0"); }

    static void SetZone(const char* zone) {
        setenv("TZ", zone, 1);
        tzset();
    }
};

std::string Shown(const CTime& time) {
    return static_cast<const char*>(time.Format("%Y-%m-%d %H:%M:%S"));
}

constexpr char kFails[] =
    "\\./CTime:[0-9]+: CTime::CTime\\(int, int, int, int, int, int, int = -1\\): "
    "Assertion `";

TEST_F(TimeTest, IsMadeFromLocalTime) {
    EXPECT_EQ("2001-07-04 15:16:17", Shown(CTime(2001, 7, 4, 15, 16, 17)));
    EXPECT_EQ("2001-07-04 15:16:17", Shown(CTime(994252577)));
}

TEST_F(TimeTest, DayThirtyOneOfAShortMonthRunsOnIntoTheNext) {
    EXPECT_EQ("2001-03-03 00:00:00", Shown(CTime(2001, 2, 31, 0, 0, 0)));
}

TEST_F(TimeTest, HoursMinutesAndSecondsAreNotChecked) {
    EXPECT_EQ("2001-01-02 01:01:05", Shown(CTime(2001, 1, 1, 24, 60, 65)));
}

TEST_F(TimeTest, DaylightSavingFlagDecidesTheDoubleHour) {
    const CTime summer(2001, 10, 28, 2, 30, 0, 1);
    CTime winter(2001, 10, 28, 2, 30, 0, 0);
    EXPECT_TRUE(winter > summer);
    winter += CTimeSpan(-3600);
    EXPECT_TRUE(winter <= summer);
    EXPECT_FALSE(summer > winter);
    // Left to find out, July is summer.
    EXPECT_EQ(Shown(CTime(2001, 7, 1, 12, 0, 0, 1)), Shown(CTime(2001, 7, 1, 12, 0, 0)));
}

using TimeDeathTest = TimeTest;

TEST_F(TimeDeathTest, DayOutsideOneToThirtyOneAborts) {
    const std::string message = std::string(kFails) + "nDay >= 1 && nDay <= 31' failed\\.";
    EXPECT_DEATH(CTime(2001, 1, 0, 0, 0, 0), message);
    EXPECT_DEATH(CTime(2001, 1, 32, 0, 0, 0), message);
    EXPECT_EQ("2001-01-31 00:00:00", Shown(CTime(2001, 1, 31, 0, 0, 0)));
}

TEST_F(TimeDeathTest, MonthOutsideOneToTwelveAborts) {
    const std::string message = std::string(kFails) + "nMonth >= 1 && nMonth <= 12' failed\\.";
    EXPECT_DEATH(CTime(2001, 0, 1, 0, 0, 0), message);
    EXPECT_DEATH(CTime(2001, 13, 1, 0, 0, 0), message);
    EXPECT_EQ("2001-12-01 00:00:00", Shown(CTime(2001, 12, 1, 0, 0, 0)));
}

TEST_F(TimeDeathTest, YearBeforeNineteenHundredAborts) {
    EXPECT_DEATH(CTime(1899, 1, 1, 0, 0, 0), std::string(kFails) + "nYear >= 1900' failed\\.");
    if (sizeof(time_t) == 8) {
        EXPECT_EQ("1900-01-01 00:00:00", Shown(CTime(1900, 1, 1, 0, 0, 0)));
    } else {
        EXPECT_DEATH(CTime(1900, 1, 1, 0, 0, 0), "m_time != -1");
    }
}

TEST_F(TimeDeathTest, DayIsCheckedBeforeMonthBeforeYear) {
    EXPECT_DEATH(CTime(1899, 13, 32, 0, 0, 0), "nDay >= 1");
    EXPECT_DEATH(CTime(1899, 13, 31, 0, 0, 0), "nMonth >= 1");
    EXPECT_DEATH(CTime(1899, 12, 31, 0, 0, 0), "nYear >= 1900");
}

TEST_F(TimeDeathTest, WhatCannotBeConvertedAborts) {
    SetZone("UTC0");
    // One second before 1970 is the number that also means "failed".
    EXPECT_DEATH(CTime(1969, 12, 31, 23, 59, 59), std::string(kFails) + "m_time != -1' failed\\.");
    EXPECT_EQ("1969-12-31 23:59:58", Shown(CTime(1969, 12, 31, 23, 59, 58)));
}

TEST_F(TimeTest, CurrentTimeIsTheClocks) {
    pagersim::VirtualClock clock(1000000000);
    EXPECT_EQ("2001-09-09 03:46:40", Shown(CTime::GetCurrentTime()));
    pagersim::VirtualClock::Set(1000000060);
    EXPECT_EQ("2001-09-09 03:47:40", Shown(CTime::GetCurrentTime()));
}

TEST_F(TimeTest, LocalTimeIsCopiedWhole) {
    tm copy;
    memset(&copy, 0x55, sizeof copy);
    ASSERT_EQ(&copy, CTime(994252577).GetLocalTm(&copy));
    EXPECT_EQ(101, copy.tm_year);
    EXPECT_EQ(6, copy.tm_mon);
    EXPECT_EQ(4, copy.tm_mday);
    EXPECT_EQ(15, copy.tm_hour);
    EXPECT_EQ(16, copy.tm_min);
    EXPECT_EQ(17, copy.tm_sec);
    EXPECT_EQ(3, copy.tm_wday);
    EXPECT_EQ(184, copy.tm_yday);
    EXPECT_EQ(1, copy.tm_isdst);
    EXPECT_EQ(7200, copy.tm_gmtoff);
    EXPECT_STREQ("CEST", copy.tm_zone);
}

TEST_F(TimeTest, KeepsHandingOutTheSharedBuffer) {
    const tm* const shared = CTime(994252577).GetLocalTm(nullptr);
    const time_t any = 0;
    EXPECT_EQ(localtime(&any), shared);
    EXPECT_EQ(shared, CTime(994252577).GetLocalTm(nullptr));
    EXPECT_EQ(17, shared->tm_sec);
}

// In 64 bits there are times of years that no calendar holds; in 32 bits every time has its local
// time, so here it is the calendar that fails.
TEST_F(TimeTest, LocalTimeThatCannotBeGivenIsNull) {
    const CTime beyond(std::numeric_limits<long>::max());
    tm untouched{};
    untouched.tm_sec = 42;
    fails = true;
    EXPECT_EQ(nullptr, beyond.GetLocalTm(&untouched));
    EXPECT_EQ(42, untouched.tm_sec);
    EXPECT_EQ(nullptr, beyond.GetLocalTm(nullptr));
    EXPECT_EQ(0, beyond.GetHour());
    EXPECT_EQ(1, beyond.GetDayOfWeek());
    EXPECT_STREQ("", beyond.Format("%H"));
    fails = false;
}

TEST_F(TimeTest, FieldsAreLocal) {
    const CTime time(994252577);
    EXPECT_EQ(15, time.GetHour());
    EXPECT_EQ(16, time.GetMinute());
    EXPECT_EQ(17, time.GetSecond());
}

TEST_F(TimeTest, WeekRunsFromSundayOneToSaturdaySeven) {
    for (int day = 0; day < 7; ++day) {
        EXPECT_EQ(day + 1, CTime(2001, 1, 7 + day, 0, 0, 0).GetDayOfWeek());
        EXPECT_EQ(day + 1, CTime(2001, 1, 7 + day, 23, 59, 59).GetDayOfWeek());
    }
}

TEST_F(TimeTest, FormatHoldsUpTo127Characters) {
    const CTime time(994252577);
    EXPECT_STREQ("Wed Jul 15%", time.Format("%a %b %H%%"));
    EXPECT_STREQ("x", time.Format("x"));
    const std::string fits(127, 'x');
    EXPECT_STREQ(fits.c_str(), time.Format(fits.c_str()));
    EXPECT_STREQ("", time.Format((fits + "x").c_str()));
    EXPECT_STREQ("", time.Format(""));
}

TEST_F(TimeTest, CopiesAndAssigns) {
    const CTime first(994252577);
    CTime copy(first);
    EXPECT_EQ(Shown(first), Shown(copy));
    copy = CTime(0);
    EXPECT_EQ("1970-01-01 01:00:00", Shown(copy));
    EXPECT_EQ("2001-07-04 15:16:17", Shown(first));
}

TEST_F(TimeTest, SpansAreAddedInSeconds) {
    CTime time(1000);
    time += CTimeSpan(500);
    EXPECT_TRUE(time <= CTime(1500));
    EXPECT_TRUE(time > CTime(1499));
    time += CTimeSpan(-2000);
    EXPECT_TRUE(time <= CTime(-500));
    EXPECT_TRUE(time > CTime(-501));
}

TEST_F(TimeTest, ComparesSigned) {
    EXPECT_TRUE(CTime(0) > CTime(-1));
    EXPECT_FALSE(CTime(-1) > CTime(0));
    EXPECT_FALSE(CTime(7) > CTime(7));
    EXPECT_TRUE(CTime(-1) <= CTime(0));
    EXPECT_TRUE(CTime(7) <= CTime(7));
    EXPECT_FALSE(CTime(8) <= CTime(7));
}

TEST_F(TimeTest, EndOfTimeRunsOnAtTheBeginning) {
    CTime last(std::numeric_limits<long>::max());
    last += CTimeSpan(1);
    EXPECT_TRUE(last <= CTime(std::numeric_limits<long>::min()));
}

// The process may convert times of its own at any moment. Nothing here waits for anything, so the
// two threads really run at once.
TEST_F(TimeTest, AnotherThreadsLocalTimesDoNotComeBetween) {
    std::atomic<bool> ends{false};
    std::thread host([&ends] {
        for (time_t each = 0; !ends; each = (each + 3600) % 86400) {
            localtime(&each);
        }
    });
    const CTime noon(2001, 1, 10, 12, 34, 56);
    int wrong = 0;
    for (int i = 0; i < 300000; ++i) {
        wrong += noon.GetHour() != 12 || noon.GetDayOfWeek() != 4 ? 1 : 0;
    }
    ends = true;
    host.join();
    EXPECT_EQ(0, wrong);
}

TEST_F(TimeTest, AChangedZoneCountsFromTheNextLook) {
    const CTime time(994252577);
    EXPECT_EQ(15, time.GetHour());
    setenv("TZ", "UTC0", 1);
    EXPECT_EQ(13, time.GetHour());
}

}  // namespace
