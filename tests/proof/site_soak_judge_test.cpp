// Tests of the judge of the soak's site: the soak is worth what it notices.
#include "tests/proof/site_soak_judge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/proof/site_soak_scenario.h"

namespace proof::site_soak {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// An alarm for "pager4", of the first SMS service, which is done, and for "pager14", a numeric one
// of which both tries got through.
class TheBooks : public ::testing::Test {
 protected:
    TheBooks() {
        books.groups["7"] = "G4";
        Send("pager4", "5550204", 100, "sent");
        books.ends[{"7", "pager4"}] = "done";
        for (int tries = 0; tries <= SitePagers().at(14).retries; ++tries) {
            Send("pager14", "5550214", 200 + 1000 * tries, "sent");
        }
        books.ends[{"7", "pager14"}] = "given up";
    }
    void Send(const std::string& pager, const std::string& recipient, int second,
              const std::string& outcome) {
        books.sendings.push_back({"north", kStart + second, kStart + second + 25, "7", pager,
                                  outcome, outcome == "sent" ? "" : "the modem said BUSY"});
        if (outcome == "sent") {
            Call(recipient, second + 9);
        }
    }
    void Call(const std::string& recipient, int second) {
        const auto from = static_cast<double>(kStart + second);
        books.calls.push_back({"north", from, from + 10, {recipient}});
    }
    std::vector<std::string> Complaints() const { return Judge(books).complaints; }

    Books books;
};

TEST_F(TheBooks, AreInOrder) {
    const Totals totals = Judge(books);
    EXPECT_THAT(totals.complaints, IsEmpty());
    EXPECT_EQ(2, totals.pages);
    EXPECT_EQ(1, totals.done);
    EXPECT_EQ(1, totals.given_up);
}

TEST_F(TheBooks, MissAPageThatIsLost) {
    books.ends.erase({"7", "pager4"});
    EXPECT_THAT(Complaints(), ElementsAre("alarm 7 to pager4 is lost"));
}

TEST_F(TheBooks, MissAPageThatNeverEnds) {
    books.ends[{"7", "pager4"}] = "pending";
    EXPECT_THAT(Complaints(), ElementsAre("alarm 7 to pager4 is still pending"));
}

TEST_F(TheBooks, MissAPageThatNobodyHasReceived) {
    books.calls.front().received = {"5550299"};
    EXPECT_THAT(Complaints(), ElementsAre(HasSubstr("was sent at"), HasSubstr("5550299")));
}

TEST_F(TheBooks, MissTheAcknowledgementOfADroppedPage) {
    books.ends[{"7", "pager4"}] = "acknowledged";
    EXPECT_THAT(Complaints(), ElementsAre("alarm 7 to pager4 was dropped"));
    books.acknowledged.insert("7");
    EXPECT_THAT(Complaints(), IsEmpty());
}

TEST_F(TheBooks, MissTriesOfAPageThatWasGivenUp) {
    books.sendings.pop_back();
    books.calls.pop_back();
    EXPECT_THAT(Complaints(), ElementsAre(HasSubstr("pager14 was given up after")));
}

TEST_F(TheBooks, MissTheReasonOfAFailure) {
    Send("pager14", "5550214", 9000, "not sent");
    EXPECT_THAT(Complaints(), IsEmpty());
    books.sendings.back().reason.clear();
    EXPECT_THAT(Complaints(), ElementsAre("alarm 7 to pager14 failed without a reason"));
}

TEST_F(TheBooks, KnowAReasonForEachDouble) {
    Call("5550204", 300);
    EXPECT_THAT(Complaints(), ElementsAre(HasSubstr("a page to 5550204 by north")));
    books.kills.emplace_back("east", kStart + 311);
    EXPECT_THAT(Complaints(), ElementsAre(HasSubstr("nobody has sent it")));
    books.kills.emplace_back("north", kStart + 311);
    EXPECT_THAT(Complaints(), IsEmpty());
    EXPECT_THAT(Judge(books).doubles, ElementsAre(HasSubstr("its line was killed")));
}

TEST_F(TheBooks, CountASecondSendingOfAPageThatIsConfirmed) {
    Send("pager4", "5550204", 4000, "sent");
    EXPECT_THAT(Complaints(), ElementsAre("alarm 7 to pager4 was sent 2 times"));
}

}  // namespace
}  // namespace proof::site_soak
