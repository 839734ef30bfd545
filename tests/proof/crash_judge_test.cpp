// Tests of the judge: the crash test is worth what it notices.
#include "tests/proof/crash_judge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace proof::crash {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Every page of the scenario as it goes without a crash, but for that of alarm 2.
std::string OtherPages() {
    std::ostringstream lines;
    for (const Action& action : kActions) {
        if (action.deed != Deed::kForward || action.alarm == 2) {
            continue;
        }
        const PagerPlan& plan = *std::find_if(
            kPagerPlans.begin(), kPagerPlans.end(),
            [&](const PagerPlan& each) { return std::string(each.name) == action.pager; });
        lines << "forward " << action.alarm << " " << action.pager << "\nanswer " << action.alarm
              << " " << action.pager << " 1\n";
        for (int i = 0; i < plan.sends; ++i) {
            const std::string number = plan.number;
            lines << "received " << action.alarm << " " << action.pager << " 1000 "
                  << (number.back() == '@' ? number.substr(0, 7)
                                           : number.substr(number.find('@') + 1))
                  << " OPS/Major/SRV1/pump" << action.alarm << "\n";
        }
    }
    return lines.str();
}

class CrashJudge : public ::testing::Test {
 protected:
    std::vector<std::string> ComplaintsAbout(const std::string& lines) {
        std::istringstream ledger(OtherPages() + lines);
        return Judge(ledger).complaints;
    }

    const std::string answered = "forward 2 ucp\nanswer 2 ucp 1\n";
    const std::string received = "received 2 ucp 1030 5550112 OPS/Major/SRV1/pump2\n";
    const std::string end = "alarm 2 4\nend\n";
};

TEST_F(CrashJudge, HasNothingAgainstARunThatGoesWell) {
    EXPECT_THAT(ComplaintsAbout(answered + "dial 2 ucp 1020\n" + received + end), IsEmpty());
}

TEST_F(CrashJudge, NoticesALostPage) {
    EXPECT_THAT(ComplaintsAbout(answered + "killed 6 0 - 0 1010 0 0\n" + end),
                ElementsAre("alarm 2 for ucp was received 0 times, not 1 to 1"));
}

TEST_F(CrashJudge, LetsGoOfAPageThatWasNotAnswered) {
    EXPECT_THAT(ComplaintsAbout("forward 2 ucp\nkilled 1 0 - 0 1010 0 0\n" + end), IsEmpty());
    EXPECT_THAT(ComplaintsAbout("forward 2 ucp\nanswer 2 ucp 0\n" + end), IsEmpty());
}

TEST_F(CrashJudge, NoticesAPageThatIsSentAgainThoughItsRowSaidSo) {
    EXPECT_THAT(ComplaintsAbout(answered + received + "killed 6 0 - 0 1040 0 0\n" + received + end),
                ElementsAre("alarm 2 for ucp was received 2 times, not 1 to 1"));
}

TEST_F(CrashJudge, ExpectsAPageAgainWhoseRowWasNotRewritten) {
    const std::string killed = "killed 5 2 ucp 4 1035 0 0\n";
    EXPECT_THAT(ComplaintsAbout(answered + received + killed + received + end), IsEmpty());
    EXPECT_THAT(ComplaintsAbout(answered + received + killed + end),
                ElementsAre("alarm 2 for ucp was received 1 times, not 2 to 2"));
    EXPECT_THAT(ComplaintsAbout(answered + received + killed + received + received + end),
                ElementsAre("alarm 2 for ucp was received 3 times, not 2 to 2"));
}

TEST_F(CrashJudge, TakesEitherWithinAWrite) {
    const std::string killed = "killed 5 2 ucp 4 1035 1 0\n";
    EXPECT_THAT(ComplaintsAbout(answered + received + killed + received + end), IsEmpty());
    EXPECT_THAT(ComplaintsAbout(answered + received + killed + end), IsEmpty());
}

TEST_F(CrashJudge, NoticesTooManyCalls) {
    const std::string dial = "dial 2 ucp 1020\n";
    const std::string killed = "killed 3 2 ucp 2 1021 0 0\n";
    EXPECT_THAT(ComplaintsAbout(answered + dial + killed + dial + received + end), IsEmpty());
    EXPECT_THAT(ComplaintsAbout(answered + dial + killed + dial + dial + received + end),
                ElementsAre("alarm 2 for ucp was dialled 3 times"));
}

TEST_F(CrashJudge, NoticesAPageOfAnotherAlarmOrPager) {
    EXPECT_THAT(
        ComplaintsAbout(answered + "received 2 ucp 1030 5550112 OPS/Major/SRV1/pump3\n" + end),
        ElementsAre("ucp got OPS/Major/SRV1/pump3 to 5550112"));
    EXPECT_THAT(
        ComplaintsAbout(answered + "received 2 ucp 1030 5550113 OPS/Major/SRV1/pump2\n" + end),
        ElementsAre("ucp got OPS/Major/SRV1/pump2 to 5550113"));
}

TEST_F(CrashJudge, NoticesAPageAfterItsAcknowledgement) {
    EXPECT_THAT(ComplaintsAbout(answered + "acknowledge 2\nacknowledged 2 1000\n"
                                           "dial 2 ucp 1020\nalarm 2 1\nend\n"),
                ElementsAre("alarm 2 for ucp was dialled after its acknowledgement"));
    EXPECT_THAT(ComplaintsAbout(answered + "acknowledge 2\nacknowledged 2 1000\n" + end),
                ElementsAre("alarm 2 is acknowledged no more"));
}

TEST_F(CrashJudge, NoticesWhatIsStillOwed) {
    EXPECT_THAT(ComplaintsAbout(answered + received + "row 2 ucp 0 2\nalarm 2 2\nend\n"),
                ElementsAre("alarm 2 for ucp is still pending", "alarm 2 is still being paged"));
    EXPECT_THAT(ComplaintsAbout(answered + "acknowledge 2\nacknowledged 2 1000\nrow 2 ucp 0 2\n"
                                           "alarm 2 1\nend\n"),
                ElementsAre("alarm 2 for ucp is still pending"));
}

TEST_F(CrashJudge, LetsAnAlarmLagOnlyWhereItsFoldWasDue) {
    const std::string end_of_lag = "alarm 2 2\nend\n";
    EXPECT_THAT(ComplaintsAbout(answered + received + "killed 0 0 - 0 1040 0 2\n" + end_of_lag),
                IsEmpty());
    for (const char* killed : {"killed 0 0 - 0 1040 0 0\n", "killed 0 0 - 0 1040 0 3\n",
                               "killed 3 3 ntt 2 1040 1 0\n", ""}) {
        EXPECT_THAT(ComplaintsAbout(answered + received + killed + end_of_lag),
                    ElementsAre("alarm 2 is still being paged"))
            << killed;
    }
}

TEST_F(CrashJudge, NoticesARunThatDoesNotEnd) {
    EXPECT_THAT(ComplaintsAbout(answered + "killed 6 0 - 0 1010 0 0\n"),
                ElementsAre("the second life did not come to its end"));
}

}  // namespace
}  // namespace proof::crash
