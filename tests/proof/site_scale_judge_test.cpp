// Tests of the judge of the site of many nodes: the proof is worth what it notices.
#include "tests/proof/site_scale_judge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/proof/site_scale_scenario.h"

namespace proof::site_scale {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// An alarm for each line, each received 20 seconds later, and done.
class TheBooksOfManyNodes : public ::testing::Test {
 protected:
    TheBooksOfManyNodes() {
        for (int number = 1; number <= kLines; ++number) {
            books.alarms[number] = {number % kGroups, kStart + 100};
            books.pages[number] = {{{LineOnPort(number), kStart + 101, 0}}, 0, true};
            Receive(number, LineOnPort(number), 120);
        }
    }
    void Receive(int number, const std::string& line, int second) {
        books.receptions.push_back(
            {number, PagerOf(number % kGroups).number, line, static_cast<double>(kStart + second)});
    }
    // The page of line "n1 2", which another has from then on.
    void TakeAway(int second) {
        books.pages[2].holdings.back().until = kStart + second;
        books.pages[2].holdings.push_back({"n3 4", kStart + second + 1, 0});
    }
    std::vector<std::string> Complaints() const { return Judge(books).complaints; }

    Books books;
};

TEST_F(TheBooksOfManyNodes, AreInOrder) {
    const Totals totals = Judge(books);
    EXPECT_THAT(totals.complaints, IsEmpty());
    EXPECT_EQ(1, totals.pages_of_line.at("n8 8"));
    EXPECT_EQ(20, totals.waits.back());
    EXPECT_EQ(0, totals.twice);
}

TEST_F(TheBooksOfManyNodes, MissAnAlarmThatNobodyReceived) {
    books.alarms[kLines + 1] = {0, kStart + 100};
    EXPECT_THAT(Complaints(), ElementsAre("alarm 65. is lost: nobody received it"));
}

TEST_F(TheBooksOfManyNodes, MissAPageOfWhichTheSiteDoesNotKnow) {
    books.pages[2].done = false;
    EXPECT_THAT(Complaints(), ElementsAre("alarm 2. was received, and the site doesn't know"));
}

TEST_F(TheBooksOfManyNodes, NameEachPageThatIsReceivedTwice) {
    Receive(2, "n1 2", 150);
    EXPECT_THAT(Complaints(), ElementsAre("alarm 2. was received 2 times, and named 0 times"));
    books.pages[2].named = 1;
    EXPECT_THAT(Complaints(), IsEmpty());
    EXPECT_EQ(1, Judge(books).twice);
}

TEST_F(TheBooksOfManyNodes, KnowWhosePageItWasWhenItWasReceived) {
    TakeAway(125);
    EXPECT_THAT(Complaints(), IsEmpty());
    Receive(2, "n1 2", 128);
    books.pages[2].named = 1;
    EXPECT_THAT(Complaints(), ElementsAre(HasSubstr("alarm 2. was sent by n1 2, whose page it was "
                                                    "not, at ")));
    books.receptions.back().line = "n3 4";
    EXPECT_THAT(Complaints(), IsEmpty());
}

TEST_F(TheBooksOfManyNodes, MissAPageOfAnother) {
    Receive(3, "n1 3", 130);
    books.receptions.back().recipient = "5550299";
    books.pages[3].named = 1;
    EXPECT_THAT(Complaints(), ElementsAre("alarm 3. went to 5550299"));
}

TEST_F(TheBooksOfManyNodes, KnowNoAlarmThatWasNeverRaised) {
    Receive(0, "n1 3", 130);
    EXPECT_THAT(Complaints(), ElementsAre(HasSubstr("and never raised")));
}

TEST_F(TheBooksOfManyNodes, MissALineThatHasSentNothing) {
    books.receptions.back().line = "n8 7";
    books.pages[kLines].holdings.front().line = "n8 7";
    EXPECT_THAT(Complaints(), ElementsAre("n8 8 was idle"));
}

}  // namespace
}  // namespace proof::site_scale
