// `pagerfwd run`, killed at any moment: the next run owes nobody a page.
#include "tests/e2e/run_fixture.h"

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Ge;
using ::testing::Le;

class RunKilled : public RunTest, public ::testing::WithParamInterface<int> {};

TEST_P(RunKilled, LosesNoPageAndRepeatsAtMostOne) {
    const int32_t alarm = Raise("ALL/1");
    At(GetParam(), "kill -KILL $PPID");
    EXPECT_EQ(128 + 9, Simulated({"run"}).exit_code);
    const ProgramRun run = RunUntilDone();
    EXPECT_EQ(0, run.exit_code) << run.err;

    EXPECT_THAT(pages["tap"], AllOf(Ge(1), Le(2)));
    EXPECT_THAT(pages["ntt"], AllOf(Ge(1), Le(2)));
    EXPECT_THAT(pages["plain"], AllOf(Ge(2), Le(3)));
    EXPECT_LE(pages["tap"] + pages["ntt"] + pages["plain"], 4 + 1);
    EXPECT_THAT(Stories(),
                ::testing::ElementsAre("duty done 1", "osaka off limit 1", "tech off limit 2"));
    EXPECT_EQ("3", StateOf(alarm));
    EXPECT_THAT(Rows("answer FROM Host_Deliveries"), Contains(::testing::AnyOf("1", "3")).Times(3));
}

// From the taking up of the alarm to the second page of "tech". With a server each takes longer.
#ifdef PAGERFWD_TEST_ON_POSTGRES
constexpr int kBetweenKills = 24;
#else
constexpr int kBetweenKills = 6;
#endif
INSTANTIATE_TEST_SUITE_P(After, RunKilled, ::testing::Range(1, 240, kBetweenKills));

}  // namespace
