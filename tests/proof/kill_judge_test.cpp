// Tests of the judge: the kill test is worth what it notices.
#include "tests/proof/kill_judge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace proof::kills {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// An alarm for "ucp" and "bound", both by COM 2: received at seconds 30 and 70, written at 45
// and 85.
class KillJudge : public ::testing::Test {
 protected:
    static std::string Page(const std::string& centre, const std::string& recipient, int at,
                            int call) {
        return R"({"centre":")" + centre + R"(","recipient":")" + recipient +
               R"(","text":"B/Major/SRV/pump1","at_seconds":)" + std::to_string(at) +
               R"(,"call":)" + std::to_string(call) + "}";
    }
    static std::string Ucp(int at) { return Page("ucp", "5550112", at, 0); }

    Verdict Judged(Tries tries = Tries::kSendingsOnly) {
        std::string pages = Page("tap", "5550113", 70, 1);
        for (const std::string& page : received) {
            pages += "," + page;
        }
        std::istringstream ledger(before + "killed " + killed + " idle\n" + rows + after);
        std::istringstream report(R"({"calls":[{"line":"COM 2"},{"line":"COM 2"}],"pages":[)" +
                                  pages + "]}");
        return Judge(ledger, report, tries);
    }

    std::string before = "raised 9 pump1 B\n";
    std::string killed = "978948200 2 0 4";  // COM 2, long after
    std::string rows = "written 9 ucp COM 2 978948045\nwritten 9 bound COM 2 978948085\n";
    std::string after = "page 9 ucp done 0\npage 9 bound done 0\nalarm 9 4\nend\n";
    std::vector<std::string> received = {Ucp(30)};
};

TEST_F(KillJudge, HasNothingAgainstAWorldThatGoesWell) {
    const Verdict verdict = Judged();
    EXPECT_THAT(verdict.complaints, IsEmpty());
    EXPECT_THAT(verdict.doubles, IsEmpty());
    EXPECT_EQ(2, verdict.pages);
    ASSERT_THAT(verdict.kills, SizeIs(1));
    EXPECT_FALSE(verdict.kills[0].forgets);
}

TEST_F(KillJudge, ExcusesAKillWithinTheSecondOfTheAcceptance) {
    received = {Ucp(30), Page("ucp", "5550112", 50, 0)};
    const std::string at = "\"at_seconds\":50";
    received[1].replace(received[1].find(at), at.size(), at + ".9");
    rows = "written 9 ucp COM 2 978948070\nwritten 9 bound COM 2 978948085\n";
    killed = "978948050 2 0 4";
    EXPECT_THAT(Judged().doubles, SizeIs(1));
}

// Of a page that was received at second 50, by a line that ended itself at 52.
TEST_F(KillJudge, ExcusesALineThatEndsWithItsKilledNodesLease) {
    received = {Ucp(30), Ucp(50)};
    rows = "written 9 ucp COM 2 978948070\nwritten 9 bound COM 2 978948085\n";
    before += "killed 978948020 0 0 1 -\nfenced 978948052 2\n";
    const Verdict verdict = Judged();
    EXPECT_THAT(verdict.complaints, IsEmpty());
    EXPECT_THAT(verdict.doubles, ElementsAre(HasSubstr("COM 2 ended with its node's lease")));
}

TEST_F(KillJudge, NoticesALineWithoutALeaseWhoseNodeLives) {
    before += "fenced 978948052 2\n";
    EXPECT_THAT(Judged().complaints,
                ElementsAre("COM 2 had no lease at second 52, and its node was not killed"));
}

TEST_F(KillJudge, NoticesALostPage) {
    received.clear();
    EXPECT_THAT(Judged().complaints, ElementsAre("pump1 ucp was received 0 times, not 1"));
}

TEST_F(KillJudge, NoticesAPageThatIsSentAgainThoughItsRowSaidSo) {
    received = {Ucp(30), Ucp(250)};
    EXPECT_THAT(Judged().complaints,
                ElementsAre("pump1 ucp was received 2 times, not 1, and 0 kills explain it"));
}

TEST_F(KillJudge, NamesTheReasonOfADouble) {
    killed = "978948035 2 0 4";
    rows = "written 9 ucp COM 2 978948180\nwritten 9 bound COM 2 978948085\n";
    received = {Ucp(30), Ucp(160)};
    const Verdict verdict = Judged();
    EXPECT_THAT(verdict.complaints, IsEmpty());
    EXPECT_THAT(verdict.doubles,
                ElementsAre("pump1 ucp: COM 2 was killed at second 35, a centre had accepted it at "
                            "second 30, and its row didn't say so yet"));
    EXPECT_TRUE(verdict.kills.at(0).forgets);
}

TEST_F(KillJudge, TakesTheKillOfAnotherLineOrOfTheNodeForNoReason) {
    rows = "written 9 ucp COM 2 978948180\nwritten 9 bound COM 2 978948085\n";
    received = {Ucp(30), Ucp(160)};
    for (const char* kill : {"978948035 1 0 2", "978948035 0 0 1", "978948029 2 0 4"}) {
        killed = kill;
        EXPECT_THAT(Judged().complaints, SizeIs(1)) << kill;
    }
}

TEST_F(KillJudge, ExcusesOneDoubleAKill) {
    killed = "978948035 2 0 4";
    rows = "written 9 ucp COM 2 978948180\nwritten 9 bound COM 2 978948085\n";
    received = {Ucp(30), Ucp(160), Ucp(170)};
    EXPECT_THAT(Judged().complaints, ElementsAre(HasSubstr("3 times, not 1, and 1 kills")));
}

TEST_F(KillJudge, LetsGoOfAPageWhoseAlarmIsAcknowledged) {
    before += "acknowledged 9 978948020\n";
    received.clear();
    after = "page 9 ucp acknowledged 0\npage 9 bound done 0\nalarm 9 1\nend\n";
    EXPECT_THAT(Judged().complaints, IsEmpty());
    after = "page 9 ucp acknowledged 0\npage 9 bound done 0\nalarm 9 2\nend\n";
    EXPECT_THAT(Judged().complaints, ElementsAre("alarm 9 is in state 2"));
}

TEST_F(KillJudge, NoticesWhatIsStillOwed) {
    after = "page 9 ucp pending 0\npage 9 bound done 0\nalarm 9 2\nend\n";
    EXPECT_THAT(Judged().complaints,
                ElementsAre("alarm 9 is in state 2", "page 9 ucp ended as \"pending\""));
}

TEST_F(KillJudge, NoticesAPageThatNobodyOwed) {
    received.push_back(Page("plain", "3003", 100, 0));
    EXPECT_THAT(Judged().complaints, ElementsAre("pump1 plain was received, and never owed"));
}

TEST_F(KillJudge, NoticesASiteThatDoesNotEnd) {
    after.clear();
    EXPECT_THAT(Judged().complaints, ElementsAre("the site did not come to its end"));
}

TEST_F(KillJudge, AllowsFewerSendingsWhereADeviceCannotBeOpenedButNotNone) {
    before = "raised 9 pump1 B\nraised 10 pump1 B\n";
    after =
        "page 9 ucp done 0\npage 9 bound done 0\npage 10 ucp done 0\npage 10 bound done 0\n"
        "alarm 9 4\nalarm 10 4\nend\n";
    EXPECT_THAT(Judged().complaints, SizeIs(2)) << "of each page one is missing";
    EXPECT_THAT(Judged(Tries::kDeviceToo).complaints, IsEmpty());
    received.clear();
    EXPECT_THAT(Judged(Tries::kDeviceToo).complaints,
                ElementsAre("pump1 ucp was received 0 times, not 2"));
}

TEST_F(KillJudge, NamesPagesThatADeviceHasUsedUp) {
    after = "page 9 ucp given-up 0\npage 9 bound done 0\nalarm 9 3\nend\n";
    EXPECT_THAT(Judged(Tries::kDeviceToo).complaints,
                ElementsAre("pump1 ucp was received, and counts as given up"));
    received.clear();
    EXPECT_THAT(Judged().complaints, SizeIs(2));
    const Verdict verdict = Judged(Tries::kDeviceToo);
    EXPECT_THAT(verdict.complaints, IsEmpty());
    EXPECT_THAT(verdict.given_up, ElementsAre("9 ucp"));
}

}  // namespace
}  // namespace proof::kills
