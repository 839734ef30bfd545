// Hours and days, as the site file writes them.
#include "host/site/hours.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace host {
namespace {

using ::testing::ElementsAre;

// The day as 24 characters, hour 0 first; or why it is none.
std::string Hours(std::string_view text) {
    try {
        const Day day = ParseHours(text);
        std::string hours;
        for (size_t hour = 0; hour < kHoursInDay; ++hour) {
            hours += day.test(hour) ? '1' : '.';
        }
        return hours;
    } catch (const NoHours& reason) {
        return reason.what();
    }
}

std::string WhyNoDays(std::string_view text) {
    try {
        ParseDays(text);
        return "days";
    } catch (const NoHours& reason) {
        return reason.what();
    }
}

TEST(Hours, BeginAtTheFirstAndEndBeforeTheLast) {
    EXPECT_EQ("........1111111111......", Hours("8-18"));
    EXPECT_EQ("1.......................", Hours("0-1"));
    EXPECT_EQ(".......................1", Hours("23-24"));
}

TEST(Hours, MayHaveGaps) {
    EXPECT_EQ(".........111..11........", Hours("9-12,14-16"));
    EXPECT_EQ(".........111..11........", Hours(" 9 - 12 , 14-16 "));
    EXPECT_EQ(".........1111111........", Hours("9-14,12-16"));
}

TEST(Hours, MayBeAllOrNone) {
    EXPECT_EQ("111111111111111111111111", Hours("24h"));
    EXPECT_EQ("111111111111111111111111", Hours("0-24"));
    EXPECT_EQ("........................", Hours("none"));
}

TEST(Hours, SayWhyTheyAreNone) {
    EXPECT_EQ("\"\" is not a range of hours", Hours(""));
    EXPECT_EQ("\"8\" is not a range of hours", Hours("8"));
    EXPECT_EQ("\"8-9-10\" is not a range of hours", Hours("8-9-10"));
    EXPECT_EQ("\"\" is not a range of hours", Hours("8-9,"));
    EXPECT_EQ("\"\" is not an hour from 0 to 24", Hours("8-"));
    EXPECT_EQ("\"\" is not an hour from 0 to 24", Hours("-8"));
    EXPECT_EQ("\"25\" is not an hour from 0 to 24", Hours("8-25"));
    EXPECT_EQ("\"99999999999999999999\" is not an hour from 0 to 24",
              Hours("8-99999999999999999999"));
    EXPECT_EQ("\"eight\" is not an hour from 0 to 24", Hours("eight-9"));
    EXPECT_EQ("\"8h\" is not an hour from 0 to 24", Hours("8h-9h"));
    EXPECT_EQ("\"8:30\": only whole hours can be told apart", Hours("8:30-9"));
    EXPECT_EQ("\"8-8\" ends before it begins; over midnight, write two ranges: \"0-6,22-24\"",
              Hours("8-8"));
    EXPECT_EQ("\"22-6\" ends before it begins; over midnight, write two ranges: \"0-6,22-24\"",
              Hours("22-6"));
}

TEST(Days, AreOneOrARange) {
    EXPECT_THAT(ParseDays("mon"), ElementsAre(0));
    EXPECT_THAT(ParseDays("sun"), ElementsAre(6));
    EXPECT_THAT(ParseDays("mon-fri"), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(ParseDays("wed-wed"), ElementsAre(2));
}

TEST(Days, GoOnOverTheEndOfTheWeek) {
    EXPECT_THAT(ParseDays("sat-mon"), ElementsAre(5, 6, 0));
    EXPECT_THAT(ParseDays("tue-mon"), ElementsAre(1, 2, 3, 4, 5, 6, 0));
}

TEST(Days, SayWhyTheyAreNone) {
    EXPECT_EQ("there is no day \"\"", WhyNoDays(""));
    EXPECT_EQ("there is no day \"Mon\"", WhyNoDays("Mon"));
    EXPECT_EQ("there is no day \"\"", WhyNoDays("mon-"));
    EXPECT_EQ("there is no day \"monday\"", WhyNoDays("monday"));
    EXPECT_EQ("\"mon-wed-fri\" is not a range of days", WhyNoDays("mon-wed-fri"));
}

TEST(Days, HaveTheirNames) {
    for (size_t day = 0; day < kDaysInWeek; ++day) {
        EXPECT_THAT(ParseDays(NameOfDay(day)), ElementsAre(day));
    }
}

}  // namespace
}  // namespace host
