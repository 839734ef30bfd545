// What requests say, and how often they may come.
#include <gtest/gtest.h>

#include "host/net/rate.h"
#include "host/web/http.h"

namespace host {
namespace {

TEST(WebTarget, IsAPathAndWhatIsAsked) {
    const auto target = ParseTarget("/api/v1/alarms?count=5&after=a%20b+c&x");
    ASSERT_TRUE(target);
    EXPECT_EQ("/api/v1/alarms", target->path);
    EXPECT_EQ("5", target->query.at("count"));
    EXPECT_EQ("a b c", target->query.at("after"));
    EXPECT_EQ("", target->query.at("x"));
}

TEST(WebTarget, MayAskNothing) {
    EXPECT_TRUE(ParseTarget("/")->query.empty());
    EXPECT_TRUE(ParseTarget("/?")->query.empty());
    EXPECT_TRUE(ParseTarget("/?&&")->query.empty());
    EXPECT_EQ("/a b+", ParseTarget("/a%20b+")->path) << "a plus is a plus in a path";
    EXPECT_EQ("/\xc3\xa4", ParseTarget("/%C3%a4")->path);
}

TEST(WebTarget, ThatIsNoneIsRefused) {
    for (const char* target : {"", "*", "a/b", "http://host/", "/%", "/%4", "/%4g", "/%g4", "/%00",
                               "/?%", "/?a=%0", "/?%00=1", "?a=b"}) {
        EXPECT_FALSE(ParseTarget(target)) << target;
    }
}

class TheRate : public ::testing::Test {
 protected:
    RateLimit rate{3, std::chrono::milliseconds(100)};
    RateLimit::Clock::time_point now = RateLimit::Clock::now();

    int Taken(const std::string& source) {
        int taken = 0;
        while (rate.Take(source, now)) {
            ++taken;
        }
        return taken;
    }
};

TEST_F(TheRate, LetsABurstIn) {
    EXPECT_EQ(3, Taken("a"));
    EXPECT_FALSE(rate.Take("a", now));
}

TEST_F(TheRate, LetsOneInAfterTheOther) {
    Taken("a");
    now += std::chrono::milliseconds(99);
    EXPECT_EQ(0, Taken("a"));
    now += std::chrono::milliseconds(1);
    EXPECT_EQ(1, Taken("a"));
    now += std::chrono::hours(1);
    EXPECT_EQ(3, Taken("a")) << "no more than a burst, however long nobody came";
}

TEST_F(TheRate, IsThatOfEachSource) {
    Taken("a");
    EXPECT_EQ(3, Taken("b"));
}

TEST_F(TheRate, HoldsForThoseThatAskAmongManyThatDont) {
    Taken("a");
    for (int i = 0; i < 5000; ++i) {
        rate.Take("other " + std::to_string(i), now);
    }
    EXPECT_FALSE(rate.Take("a", now));
}

}  // namespace
}  // namespace host
