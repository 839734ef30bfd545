// Ages as the command line says them.
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

}  // namespace
}  // namespace host
