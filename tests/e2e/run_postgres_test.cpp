// `pagerfwd run` on a server that dies while the site works, and comes back.
#include "tests/e2e/run_fixture.h"

namespace {

using test_support::PostgresKeeper;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class RunOnAServer : public RunTest {
 protected:
    // Has it done in no time of the world's.
    void HaveItDone(int second, const std::string& what) {
        At(second, "rm -f " + what + " " + what + ".done; touch " + what + "; until [ -e " + what +
                       ".done ]; do :; done");
    }
    void TheServerIsAwayFrom(int second, int seconds) {
        HaveItDone(second, PostgresKeeper::kKill);
        HaveItDone(second + seconds, PostgresKeeper::kStart);
    }
    static size_t Count(const std::string& text, const std::string& part) {
        size_t count = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++count;
        }
        return count;
    }
};

class RunWithItsServerAway : public RunOnAServer, public ::testing::WithParamInterface<int> {};

TEST_P(RunWithItsServerAway, LosesNoPageAndRepeatsNone) {
    const PostgresKeeper keeper(test_support::TheServer());
    const int32_t alarm = Raise("ALL/1");
    TheServerIsAwayFrom(GetParam(), 20);
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(pages,
                ElementsAre(std::pair{"ntt", 1}, std::pair{"plain", 2}, std::pair{"tap", 1}));
    EXPECT_THAT(Stories(), ElementsAre("duty done 1", "osaka off limit 1", "tech off limit 2"));
    EXPECT_EQ("3", StateOf(alarm));
    EXPECT_EQ("4", Rows("count(*) FROM Host_Sends").at(0));
    EXPECT_EQ(1U, Count(run.err, "; trying again")) << run.err;
    EXPECT_EQ(1U, Count(run.err, ": works again")) << run.err;
}

// A page is on the line, one has ended, one is composed, nobody has anything to do.
INSTANTIATE_TEST_SUITE_P(From, RunWithItsServerAway, ::testing::Values(2, 12, 25, 45, 70, 100));

// At no single moment: a page on the line is finished as long as it is there from time to time.
TEST_F(RunOnAServer, NeedsItNowAndThen) {
    const PostgresKeeper keeper(test_support::TheServer());
    Raise("ALL/1");
    for (const int second : {11, 23, 35, 47}) {
        TheServerIsAwayFrom(second, 2);
    }
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(4, PageCount());
    EXPECT_THAT(run.err, Not(HasSubstr("it ended itself")));
}

TEST_F(RunOnAServer, TellsOfAnOutageOnceAMinute) {
    const PostgresKeeper keeper(test_support::TheServer());
    HaveItDone(10, PostgresKeeper::kKill);
    HaveItDone(200, PostgresKeeper::kStart);
    At(230, "kill -TERM $PPID");
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code);
    EXPECT_THAT(Count(run.err, " error: postgresql://"),
                AllOf(::testing::Ge(3U), ::testing::Le(4U)))
        << run.err;
    EXPECT_THAT(run.err, HasSubstr(": works again"));
}

TEST_F(RunOnAServer, EndsWhileTheServerIsAway) {
    const PostgresKeeper keeper(test_support::TheServer());
    Raise("ALL/1");
    HaveItDone(12, PostgresKeeper::kKill);
    At(20, "kill -TERM $PPID");
    HaveItDone(400, PostgresKeeper::kStart);
    const ProgramRun run = Simulated({"run"});
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.err, HasSubstr(" ended\n"));
    EXPECT_THAT(run.err, Not(HasSubstr("2001-01-08 10:06:")));
}

}  // namespace
