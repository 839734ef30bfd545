// Tests of the judge: the fault test is worth what it notices.
#include "tests/proof/fault_judge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace proof::kills {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> JudgedLog(int times, const std::string& begin, const std::string& end) {
    std::stringstream log;
    for (int time = 0; time < times; ++time) {
        log << begin << time << end << "\n";
    }
    return JudgeLog(log);
}

TEST(FaultJudge, NoticesATroubleThatIsToldWithoutEnd) {
    const std::string time = "2001-01-08 10:00:0";
    EXPECT_THAT(JudgedLog(8, time, " error: no memory; trying again"), IsEmpty());
    EXPECT_THAT(JudgedLog(9, time, " error: no memory; trying again"),
                ElementsAre("told again and again: " + time + "8 error: no memory; trying again"));
}

TEST(FaultJudge, TakesFiguresForTheSameButNotLines) {
    EXPECT_THAT(JudgedLog(9, "2001-01-08 10:00:00 the line before came ", " more time(s)"),
                ::testing::SizeIs(1));
    EXPECT_THAT(JudgedLog(9, "2001-01-08 10:00:00 error: line \"COM ", "\": no memory"), IsEmpty());
}

TEST(FaultJudge, LetsEachProcessSayThatItCannotBegin) {
    EXPECT_THAT(JudgedLog(99, "pagerfwd: a pipe for signals: ", ""), IsEmpty());
}

TEST(FaultJudge, NoticesAPageThatIsGivenUpWithoutAWord) {
    std::stringstream log(
        "2001-01-08 10:12:03 error: page of alarm 9 to \"ucp\": given up: its tries are used up\n");
    EXPECT_THAT(JudgeGivenUp({"9 ucp", "9 tap"}, log),
                ElementsAre("page 9 tap was given up, and nobody was told"));
}

TEST(FaultJudge, NoticesAWorldThatEndsOtherwise) {
    EXPECT_THAT(JudgeWorld("/nowhere", 9, Tries::kSendingsOnly, true).complaints,
                ElementsAre("the world ended with 9"));
    EXPECT_THAT(JudgeWorld("/nowhere", 0, Tries::kSendingsOnly, true).complaints,
                ElementsAre("the site did not come to its end"));
}

}  // namespace
}  // namespace proof::kills
