// Ages as the command line and the log say them.
#include "host/text/age.h"

#include <gtest/gtest.h>

namespace host {
namespace {

using std::chrono::seconds;

TEST(Age, IsANumberOfMinutesHoursOrDays) {
    EXPECT_EQ(seconds(0), ParseAge("0m"));
    EXPECT_EQ(seconds(90 * 60), ParseAge("90m"));
    EXPECT_EQ(seconds(12 * 60 * 60), ParseAge("12h"));
    EXPECT_EQ(seconds(3 * 24 * 60 * 60), ParseAge("3d"));
    EXPECT_EQ(seconds(99'999LL * 24 * 60 * 60), ParseAge("99999d"));
}

TEST(Age, IsNothingElse) {
    for (const char* text :
         {"", "12", "h", "12x", "-1h", "+1h", " 1h", "12hh", "1.5h", "100000h", "99999999999h"}) {
        EXPECT_EQ(std::nullopt, ParseAge(text)) << text;
    }
}

TEST(Age, IsToldInTheLargestUnitOfWhichThereAreTwo) {
    constexpr int64_t kHour = 60 * 60;
    EXPECT_EQ("0 minutes", AgeInWords(seconds(59)));
    EXPECT_EQ("1 minutes", AgeInWords(seconds(60)));
    EXPECT_EQ("119 minutes", AgeInWords(seconds(2 * kHour - 1)));
    EXPECT_EQ("2 hours", AgeInWords(seconds(2 * kHour)));
    EXPECT_EQ("47 hours", AgeInWords(seconds(48 * kHour - 1)));
    EXPECT_EQ("2 days", AgeInWords(seconds(48 * kHour)));
    EXPECT_EQ("9 days", AgeInWords(seconds(9 * 24 * kHour + 5)));
}

}  // namespace
}  // namespace host
