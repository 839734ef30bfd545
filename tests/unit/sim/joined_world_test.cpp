// A world that stays, and commands that join it.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "tests/unit/sim/pagersim_fixture.h"

namespace pagersim {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class JoinedWorld : public PagersimTest {
 protected:
    JoinedWorld() {
        Write("exchange.toml", std::string(kExchange) + "[[line]]\nport = \"COM 2\"\n");
    }

    // Comes back when it can be joined.
    pid_t StartWorld(const Words& options = {}) const {
        const pid_t world = StartAs("world", Words{"world"} + options + Words{"night"});
        for (int i = 0; i < 1000 && Contents(Path("night/preloads")).empty(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return world;
    }

    pid_t Join(const std::string& name, const Words& steps) const {
        return StartAs(name, Words{"join", "night", "--", SIM_CLIENT} + steps);
    }

    Result EndWorld(pid_t world) const {
        kill(world, SIGTERM);
        return End(world, "world");
    }

    static Words PageOn(const std::string& device) {
        return Words{"open:" + device, "send:ATDT0,5550101\\r", "wait:CONNECT"} + kPage +
               Words{"close"};
    }
};

TEST_F(JoinedWorld, TwoCommandsHaveOneClockOneExchangeAndOneTranscript) {
    const pid_t world = StartWorld({"--await", "2", "--until-left"});
    const pid_t early = Join("early", Words{"sleep:5"} + PageOn("/dev/ttyS0") + Words{"now"});
    const pid_t late = Join("late", Words{"sleep:20"} + PageOn("/dev/ttyS1") + Words{"now"});
    EXPECT_EQ("2001-01-08 10:00:14\n", End(early, "early").out);
    EXPECT_EQ("2001-01-08 10:00:29\n", End(late, "late").out);
    const Result told = End(world, "world");
    EXPECT_EQ(0, told.status) << told.err;
    EXPECT_THAT(told.out, StartsWith("    5.000  COM 1  program  # opens the line\n"));
    EXPECT_THAT(told.out, HasSubstr("   20.000  COM 2  program  # opens the line\n"));
    EXPECT_THAT(told.out, HasSubstr("tap received 2 pages"));
    EXPECT_FALSE(std::filesystem::exists(Path("night"))) << "nothing of it is left";
}

TEST_F(JoinedWorld, WhoJoinsFirstInRealTimeMattersToNobody) {
    const auto night = [this](bool first_last) {
        const pid_t world = StartWorld({"--await", "2", "--until-left"});
        const Words one = PageOn("/dev/ttyS0");
        const Words two = PageOn("/dev/ttyS1");
        const pid_t a = Join("a", first_last ? two : one);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        const pid_t b = Join("b", first_last ? one : two);
        End(a, "a");
        End(b, "b");
        return End(world, "world").out;
    };
    EXPECT_EQ(night(false), night(true));
}

TEST_F(JoinedWorld, ItStaysUntilItIsAskedToEnd) {
    const pid_t world = StartWorld();
    EXPECT_EQ("", End(Join("a", {"sleep:5"}), "a").out);
    EXPECT_EQ("2001-01-08 10:00:05\n", End(Join("b", {"now"}), "b").out);
    EXPECT_THAT(EndWorld(world).out, HasSubstr("virtual time: 0.000 s"));
}

TEST_F(JoinedWorld, WhatIsStillInItIsAskedToEndWithIt) {
    const pid_t world = StartWorld();
    const pid_t service = Join("service", {"print:here", "pause"});
    while (Contents(Path("service.out")).empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(0, EndWorld(world).status);
    int status = 0;
    waitpid(service, &status, 0);
    EXPECT_EQ(SIGTERM, WIFSIGNALED(status) ? WTERMSIG(status) : 0);
}

TEST_F(JoinedWorld, OneThatIsKilledLeavesNoProgramBehindAndItsPlaceToTheNext) {
    const pid_t world = StartWorld();
    const pid_t service = Join("service", {"print:here", "pause", "print:there"});
    while (Contents(Path("service.out")).empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    kill(world, SIGKILL);
    End(world, "world");
    const Result left = End(service, "service");
    EXPECT_EQ(125, left.status);
    EXPECT_THAT(left.err, HasSubstr("pagersim: the world of this program has ended"));

    const Result alone = End(Join("a", {"now"}), "a");
    EXPECT_EQ(2, alone.status);
    EXPECT_THAT(alone.err, HasSubstr("night: the world of that name has ended"));

    std::filesystem::remove(Path("night/preloads"));
    const pid_t next = StartWorld();
    EXPECT_EQ("2001-01-08 10:00:00\n", End(Join("b", {"now"}), "b").out);
    EXPECT_EQ(0, EndWorld(next).status);
}

TEST_F(JoinedWorld, ThereIsOneOfAName) {
    const pid_t world = StartWorld();
    const Result second = Run({"world", "night"});
    EXPECT_EQ(2, second.status);
    EXPECT_THAT(second.err, HasSubstr("night: there is a world of that name already"));
    EXPECT_EQ("2001-01-08 10:00:00\n", End(Join("a", {"now"}), "a").out);
    EndWorld(world);
}

TEST_F(JoinedWorld, OnlyItsUserReachesIt) {
    const pid_t world = StartWorld();
    struct stat status {};
    ASSERT_EQ(0, stat(Path("night").c_str(), &status));
    EXPECT_EQ(0700U, status.st_mode & 0777U);
    EndWorld(world);
}

TEST_F(JoinedWorld, WhatIsInTheWayStaysAsItIs) {
    Write("night", "mine");
    EXPECT_THAT(Run({"world", "night"}).err, HasSubstr("night: is in the way"));
    EXPECT_EQ("mine", Contents(Path("night")));

    std::filesystem::create_directory(Path("papers"));
    std::filesystem::permissions(Path("papers"), std::filesystem::perms::owner_all);
    Write("papers/letter", "mine");
    EXPECT_THAT(Run({"world", "papers"}).err, HasSubstr("papers: is in the way"));
    EXPECT_EQ("mine", Contents(Path("papers/letter")));

    std::filesystem::create_directory(Path("open"));
    std::filesystem::permissions(Path("open"), std::filesystem::perms::all);
    EXPECT_THAT(Run({"world", "open"}).err, HasSubstr("open: is in the way"));
    EXPECT_THAT(Run({"join", "open", "--", SIM_CLIENT}).err, HasSubstr("is no world of yours"));

    std::filesystem::create_directory_symlink("papers", Path("link"));
    EXPECT_THAT(Run({"world", "link"}).err, HasSubstr("link: is in the way"));
}

TEST_F(JoinedWorld, MistakesAreTold) {
    EXPECT_THAT(Run({"join", "night", "--", SIM_CLIENT}).err,
                HasSubstr("night: there is no world of that name"));
    EXPECT_THAT(Run({"join", "night"}).err, HasSubstr("there is no command to run"));
    EXPECT_THAT(Run({"world"}).err, HasSubstr("FOLDER is required"));
    EXPECT_THAT(Run({"world", std::string(200, 'n')}).err, HasSubstr("name is too long"));
    EXPECT_THAT(Run({"world", "--await", "0", "night"}).err, HasSubstr("--await"));
    const pid_t world = StartWorld();
    EXPECT_THAT(Run({"join", "night", "--", "./exchange.toml"}).err, HasSubstr("no such program"));
    EndWorld(world);
}

// The same without names, for commands that begin together.
TEST_F(JoinedWorld, CommandsRunBesideOneFromTheStart) {
    const std::string beside =
        std::string("'") + SIM_CLIENT + "' sleep:3 print:beside sleep:1000 print:never";
    const Result result = Client({"sleep:5", "print:five"}, {"--quiet", "--beside", beside});
    EXPECT_EQ("beside\nfive\n", result.out);
    EXPECT_EQ(0, result.status) << result.err;
}

#ifdef SIM_OTHER_CLIENT
TEST_F(JoinedWorld, ProgramsOfBothWordSizesJoinIt) {
    const pid_t world = StartWorld({"--await", "2", "--until-left"});
    const pid_t own = Join("own", {"sleep:5", "now"});
    const pid_t other = StartAs("other", Words{"join", "night", "--", SIM_OTHER_CLIENT, "sleep:5"} +
                                             PageOn("/dev/ttyS1") + Words{"now"});
    EXPECT_EQ("2001-01-08 10:00:05\n", End(own, "own").out);
    EXPECT_EQ("2001-01-08 10:00:14\n", End(other, "other").out);
    EXPECT_THAT(End(world, "world").out, HasSubstr("tap received 1 page"));
}
#endif

}  // namespace
}  // namespace pagersim
