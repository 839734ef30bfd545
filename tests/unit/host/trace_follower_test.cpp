// A running engine, followed by its trace.
#include "host/line/trace_follower.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Following : public ::testing::Test {
 protected:
    void Read(const std::string& text, std::time_t now = 1000) {
        follower.Read(text, now);
        follower.Read("", now);
    }

    std::vector<std::string> ended;
    std::vector<std::string> lasting;
    TraceFollower follower{{[this](const TracedPage& page) { ended.push_back(page.pager); },
                            [this](const TracedPage& page) { lasting.push_back(page.pager); }}};
};

constexpr const char* kBegin =
    "10: 0: 0\t*** START PAGING ***\n"
    "10: 0: 0\tTry to page for duty at 01/08/01\t10:00:00\t: \n";
constexpr const char* kEnd = "10: 0:24\t*** END PAGING ***\n";

TEST_F(Following, TellsOfAPageWhenItEnds) {
    Read(kBegin);
    EXPECT_THAT(ended, IsEmpty());
    Read(kEnd);
    EXPECT_THAT(ended, ElementsAre("duty"));
}

TEST_F(Following, TellsOncePageThatItLastsLong) {
    Read(kBegin, 1000);
    Read("10: 5: 0\tBefore Dial\n", 1000 + TraceFollower::kLong);
    EXPECT_THAT(lasting, IsEmpty());
    Read("", 1001 + TraceFollower::kLong);
    EXPECT_THAT(lasting, ElementsAre("duty"));
    Read("", 9000);
    EXPECT_THAT(lasting, ElementsAre("duty"));
    Read(std::string(kEnd) + kBegin, 9001);
    EXPECT_THAT(lasting, ElementsAre("duty"));
    Read("", 9002 + TraceFollower::kLong);
    EXPECT_THAT(lasting, ElementsAre("duty", "duty"));
}

TEST_F(Following, TellsAgainOfAPageThatGoesOnLongBehindItsExcuse) {
    Read(kBegin, 1000);
    Read("", 1001 + TraceFollower::kLong);
    follower.Excuse(5000);
    Read("", 5000 + TraceFollower::kLong);
    EXPECT_THAT(lasting, ElementsAre("duty"));
    Read("", 5001 + TraceFollower::kLong);
    EXPECT_THAT(lasting, ElementsAre("duty", "duty"));
}

TEST_F(Following, CutsOffThePageOfAnEngineThatIsMadeAnew) {
    Read(kBegin);
    follower.Restart();
    EXPECT_THAT(ended, ElementsAre("duty"));
    Read(kBegin);
    Read(kEnd);
    EXPECT_THAT(ended, ElementsAre("duty", "duty"));
}

}  // namespace
}  // namespace host
