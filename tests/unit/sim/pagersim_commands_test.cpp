// What others do while the program runs: commands at moments of the virtual clock.
#include <gmock/gmock.h>

#include "tests/unit/sim/pagersim_fixture.h"

namespace pagersim {
namespace {

using ::testing::HasSubstr;

class PagersimCommands : public PagersimTest {
 protected:
    void Plan(const std::string& commands) const { Write("exchange.toml", kExchange + commands); }
};

TEST_F(PagersimCommands, RunAtTheirTime) {
    Plan(
        "[[at]]\ntime = \"2001-01-08 10:00:07\"\nrun = \"echo seven\"\n"
        "[[at]]\ntime = \"2001-01-08 10:00:03\"\nrun = \"echo three\"\n");
    const Result result = Client({"sleep:5", "print:five", "sleep:5", "print:ten"}, {"--quiet"});
    EXPECT_EQ("three\nfive\nseven\nten\n", result.out);
    EXPECT_EQ("", result.err);
}

TEST_F(PagersimCommands, DontRunWhenTheProgramHasEnded) {
    Plan("[[at]]\ntime = \"2001-01-08 10:00:07\"\nrun = \"echo seven\"\n");
    EXPECT_EQ("", Client({"sleep:5"}, {"--quiet"}).out);
}

TEST_F(PagersimCommands, ShowInTheDialogue) {
    Plan("[[at]]\ntime = \"2001-01-08 10:00:07\"\nrun = \"true\"\n");
    EXPECT_THAT(Client({"sleep:8"}).out, HasSubstr("7.000         at       # true\n"));
}

TEST_F(PagersimCommands, FindTheSameTime) {
    Plan(std::string("[[at]]\ntime = \"2001-01-08 10:00:07\"\nrun = \"'") + SIM_CLIENT +
         "' now\"\n");
    EXPECT_EQ("2001-01-08 10:00:07\n", Client({"sleep:8"}, {"--quiet"}).out);
}

TEST_F(PagersimCommands, LetTimePassBesideTheProgram) {
    Plan(std::string("[[at]]\ntime = \"2001-01-08 10:00:03\"\nrun = \"'") + SIM_CLIENT +
         "' sleep:5 print:eight now\"\n");
    const Words steps = {"sleep:7", "print:seven", "sleep:7", "now"};
    const char* const told = "seven\neight\n2001-01-08 10:00:08\n2001-01-08 10:00:14\n";
    EXPECT_EQ(told, Client(steps, {"--quiet"}).out);

    std::filesystem::copy(PRELOAD, Path("alone.so"));
    setenv("PAGERSIM_PRELOAD", Path("alone.so").c_str(), 1);
    EXPECT_EQ(told, Client(steps, {"--quiet"}).out) << "also where the shell takes no part";
    unsetenv("PAGERSIM_PRELOAD");
}

TEST_F(PagersimCommands, MayKillTheProgramAndDontRunAgainInTheNext) {
    Plan("[[at]]\ntime = \"2001-01-08 10:00:07\"\nrun = \"echo kill; kill -KILL $PPID\"\n");
    const Words clock = {"--quiet", "--clock", "clock.txt"};
    constexpr int kKilled = 128 + 9;
    Result result = Client({"sleep:8"}, clock);
    EXPECT_EQ(kKilled, result.status);
    EXPECT_EQ("kill\n", result.out);
    result = Client({"now", "sleep:8"}, clock);
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("2001-01-08 10:00:07\n", result.out);
}

TEST_F(PagersimCommands, NeedAnInstantAndACommand) {
    Plan("[[at]]\ntime = \"soon\"\nrun = \"true\"\n");
    EXPECT_THAT(Client({"sleep:8"}).err, HasSubstr("must be an instant"));
    Plan("[[at]]\ntime = \"2001-01-08 10:00:07\"\n");
    EXPECT_THAT(Client({"sleep:8"}).err, HasSubstr("run"));
    Plan("[[at]]\nrun = \"true\"\n");
    EXPECT_THAT(Client({"sleep:8"}).err, HasSubstr("time"));
}

}  // namespace
}  // namespace pagersim
