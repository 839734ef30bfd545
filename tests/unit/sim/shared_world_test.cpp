// Several processes in one world: one clock, one exchange, one transcript.
#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "tests/unit/sim/pagersim_fixture.h"
#include "tests/unit/sim/server_outside.h"

namespace pagersim {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class SharedWorld : public PagersimTest {
 protected:
    SharedWorld() {
        Write("exchange.toml",
              std::string(kExchange) + "[[line]]\nport = \"COM 2\"\n[[line]]\nport = \"COM 3\"\n");
    }

    static Words Dial(const std::string& device) {
        return {"open:" + device, "send:ATDT0,5550101\\r", "wait:CONNECT"};
    }
    static Words Child(const Words& steps) { return Words{"child"} + steps + Words{"end"}; }
    static Words Spawned(const Words& steps) { return Words{"spawn"} + steps + Words{"end"}; }

    Result Quietly(const Words& steps) const { return Client(steps, {"--quiet"}); }
};

// The clock.

TEST_F(SharedWorld, ParentAndChildShareTheClock) {
    EXPECT_EQ(
        "three\nfive\n2001-01-08 10:00:05\n",
        Quietly(Child({"sleep:5", "print:five"}) + Words{"sleep:3", "print:three", "await", "now"})
            .out);
}

TEST_F(SharedWorld, SpawnedProgramsAreInItToo) {
    EXPECT_EQ("three\nfive\n2001-01-08 10:00:05\n",
              Quietly(Spawned({"sleep:5", "print:five"}) +
                      Words{"sleep:3", "print:three", "await", "now"})
                  .out);
}

TEST_F(SharedWorld, AProgramThatReplacesAnotherStaysInIt) {
    EXPECT_EQ("2001-01-08 10:00:07\n",
              Quietly(Child({"sleep:3", "close-all", "exec", "sleep:4", "now"}) +
                      Words{"await", "exit:0"})
                  .out);
}

TEST_F(SharedWorld, WhatAProgramDoesWithAllDescriptorsLeavesItInIt) {
    for (const char* const deed : {"close-all", "close-unshared", "dup-over"}) {
        EXPECT_EQ(
            "2001-01-08 10:00:07\n",
            Quietly(Child({"sleep:3", deed, "sleep:1", "exec", "sleep:3", "now"}) + Words{"await"})
                .out)
            << deed;
    }
}

TEST_F(SharedWorld, AChildThatWasMadeInOtherWaysIsInItToo) {
    EXPECT_EQ("three\nfive\n2001-01-08 10:00:05\n",
              Quietly(Words{"bare-child", "sleep:5", "print:five", "end"} +
                      Words{"sleep:3", "print:three", "await", "now"})
                  .out);
}

TEST_F(SharedWorld, TheParentGoesOnFirstAndTheChildAtTheSameInstant) {
    EXPECT_EQ("parent\nchild\n2001-01-08 10:00:00\n",
              Quietly(Child({"print:child"}) + Words{"print:parent", "await", "now"}).out);
}

// As a server outside goes by it, which can be no part of the world.
TEST_F(SharedWorld, AFileShowsItsClock) {
    setenv("PAGERSIM_SHOWN_CLOCK", Path("clock").c_str(), 1);
    EXPECT_EQ("5000000 978948000000000\n",
              Quietly({"sleep:5", "popen:od -A n -t d8 -N 16 " + Path("clock") + " | xargs"}).out);
    unsetenv("PAGERSIM_SHOWN_CLOCK");
}

// What processes wait for of each other.

TEST_F(SharedWorld, AReaderHearsBeforeTimePasses) {
    EXPECT_EQ("hello\n2001-01-08 10:00:05\n",
              Quietly(Words{"pipe"} + Child({"hear", "now"}) +
                      Words{"sleep:5", "tell:hello", "sleep:60", "await"})
                  .out);
}

TEST_F(SharedWorld, AFileLockIsAwaited) {
    EXPECT_EQ("2001-01-08 10:00:09\n", Quietly(Words{"lock:" + Path("lock")} +
                                               Child({"lock:" + Path("lock"), "now", "sleep:60"}) +
                                               Words{"sleep:9", "unlock", "sleep:1"})
                                           .out);
}

TEST_F(SharedWorld, TimeGoesOnWhileManyAwaitALock) {
    const Words waiter = Child({"tell:x", "lock:" + Path("lock"), "now", "sleep:5", "unlock"});
    EXPECT_EQ("2001-01-08 10:00:09\n2001-01-08 10:00:14\n",
              Quietly(Words{"pipe", "lock:" + Path("lock")} + waiter + waiter +
                      Words{"sleep:9", "unlock", "await", "await"})
                  .out);
}

TEST_F(SharedWorld, ALockOnBytesIsAwaited) {
    EXPECT_EQ("2001-01-08 10:00:09\n",
              Quietly(Words{"lock-bytes:" + Path("lock")} +
                      Child({"lock-bytes:" + Path("lock"), "now", "sleep:60"}) +
                      Words{"sleep:9", "unlock-bytes", "sleep:1"})
                  .out);
}

TEST_F(SharedWorld, APipedCommandIsInItToo) {
    EXPECT_EQ("2001-01-08 10:00:05\n2001-01-08 10:00:05\n",
              Quietly({std::string("popen:exec '") + SIM_CLIENT + "' sleep:5 now", "now"}).out);
}

TEST_F(SharedWorld, TheCommandGetsNoneOfPagersimsFiles) {
    const Words files = {"--transcript", "transcript", "--report", "report"};
    const std::string out = Client({"descriptors"}, Words{"--quiet"} + files).out;
    EXPECT_THAT(out, HasSubstr("/out\n")) << "what the test itself has open";
    EXPECT_THAT(out, Not(HasSubstr("/transcript\n")));
    EXPECT_THAT(out, Not(HasSubstr("/report\n")));
}

TEST_F(SharedWorld, ThreadsMayStartProgramsAtOnce) {
    EXPECT_EQ("2001-01-08 10:00:01\n", Quietly({"twins:8", "now"}).out);
}

// Longer than one may be asleep with it.
TEST_F(SharedWorld, OneThatComputesKeepsItsTurn) {
    EXPECT_EQ(
        "parent\nchild\n2001-01-08 10:00:00\n",
        Quietly(Child({"print:child"}) + Words{"spin:600", "print:parent", "await", "now"}).out);
}

// As a node does that asks its database, while its lines sleep. It takes longer than anybody who
// takes part says nothing.
TEST_F(SharedWorld, OneThatAsksAServerOutsideFindsTheTimeThatItLeft) {
    const ServerOutside server(folder_, std::chrono::milliseconds(700));
    setenv("PAGERSIM_OUTSIDE", folder_.c_str(), 1);
    EXPECT_EQ("parent\n2001-01-08 10:00:00\nchild\n",
              Quietly(Child({"sleep:5", "print:child"}) +
                      Words{"ask:" + Path("server"), "print:parent", "now", "await"})
                  .out);
    unsetenv("PAGERSIM_OUTSIDE");
}

TEST_F(SharedWorld, OneThatAsksAServerOutsideIsAwaitedBehindTheCommandsEnd) {
    const ServerOutside server(folder_, std::chrono::milliseconds(700));
    setenv("PAGERSIM_OUTSIDE", folder_.c_str(), 1);
    EXPECT_EQ("heard\n",
              Quietly(Child({"ask:" + Path("server"), "print:heard"}) + Words{"exit:0"}).out);
    unsetenv("PAGERSIM_OUTSIDE");
}

// As one that a sanitizer looks at when it ends.
TEST_F(SharedWorld, OneThatTakesItsTimeIsAwaitedBehindTheCommandsEnd) {
    EXPECT_EQ("slow\n", Quietly(Child({"nap:700", "print:slow"}) + Words{"exit:0"}).out);
}

TEST_F(SharedWorld, AProgramThatTakesNoPartMakesTimeStandStill) {
    EXPECT_EQ(
        "before\nafter\n2001-01-08 10:00:00\n",
        Quietly({"print:before", "shell:env -u LD_PRELOAD /bin/sh -c 'echo after'", "now"}).out);
}

#ifdef SIM_OTHER_CLIENT
TEST_F(SharedWorld, ProgramsOfBothWordSizesAreInOne) {
    const Result result = Client(Words{"open:/dev/ttyS0",
                                       std::string("shell:'") + SIM_OTHER_CLIENT +
                                           "' sleep:5 open:/dev/ttyS1 'send:ATDT0,5550101\\r' "
                                           "wait:CONNECT now",
                                       "now"});
    EXPECT_EQ(0, result.status) << result.err;
    EXPECT_THAT(result.out, HasSubstr("# closes the line\n2001-01-08 10:00:14\n"));
    EXPECT_THAT(result.out, HasSubstr("   14.300  COM 2  tap      # answers 5550101\n"));
}
#endif

// The shape of a service with a process for each modem.

TEST_F(SharedWorld, LinesOfASiteWaitForTheirPipesAndModemsAtOnce) {
    const auto site = [this](const char* tick) {
        return Run({"--quiet", "--", SIM_SITE, "3", "2", tick}).out;
    };
    // A call takes 9.7 s; the second hour begins 0.7 s late for it.
    const char* const told =
        "978948009: line 1\n978948009: line 2\n978948009: line 3\n"
        "978951610: line 1\n978951610: line 2\n978951610: line 3\n";
    EXPECT_EQ(told, site("60"));
    EXPECT_EQ(told, site("9")) << "however often they look around meanwhile";
}

// Lines.

TEST_F(SharedWorld, TwoLinesInOneTranscript) {
    const Result result =
        Client(Child(Dial("/dev/ttyS1") + kPage) + Dial("/dev/ttyS2") + kPage + Words{"await"});
    EXPECT_EQ(0, result.status) << result.err;
    EXPECT_THAT(result.out, HasSubstr("COM 2  tap      = page for 123: ABC\n"));
    EXPECT_THAT(result.out, HasSubstr("COM 3  tap      = page for 123: ABC\n"));
    EXPECT_THAT(result.out, HasSubstr("virtual time: 9.700 s\n")) << "at once, not in turn";
}

TEST_F(SharedWorld, AKilledProcessLeavesAModemThatHangsUp) {
    for (const char* const deed : {"kill-child", "queue-child"}) {
        const Result result = Client(Child(Dial("/dev/ttyS0") + Words{"sleep:1000"}) +
                                     Words{"sleep:30", deed} + Dial("/dev/ttyS0") + kPage);
        EXPECT_EQ(0, result.status) << result.err;
        EXPECT_THAT(result.out, HasSubstr("   30.000  COM 1  tap      # the call is over\n"
                                          "   30.000  COM 1  program  # closes the line\n"
                                          "   30.000  COM 1  program  # opens the line\n"))
            << deed;
    }
}

TEST_F(SharedWorld, ALineStaysOpenAsLongAsOneHasIt) {
    const Result result = Client(Words{"open:/dev/ttyS0"} + Child({"sleep:9", "close"}) +
                                 Words{"sleep:5", "close", "await"});
    EXPECT_THAT(result.out, HasSubstr("    9.000  COM 1  program  # closes the line\n"));
}

TEST_F(SharedWorld, LinesStayOpenForAProgramThatHasInheritedThem) {
    const Result result = Client(Words{"open:/dev/ttyS0", "open:/dev/ttyS1"} +
                                 Spawned({"sleep:9"}) + Words{"sleep:5", "close", "await"});
    EXPECT_THAT(result.out, HasSubstr("    9.000  COM 2  program  # closes the line\n"));
}

// The proof: whatever the machine does meanwhile.

// Keeps the machine busy.
class Load {
 public:
    explicit Load(int threads) {
        for (int i = 0; i < threads; ++i) {
            threads_.emplace_back([this] {
                while (!over_) {
                }
            });
        }
    }
    ~Load() {
        over_ = true;
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

 private:
    std::atomic<bool> over_{false};
    std::vector<std::thread> threads_;
};

TEST_F(SharedWorld, SameInputSameTranscriptUnderLoad) {
    const Words family = Words{"pipe"} + Child(Dial("/dev/ttyS0") + kPage + Words{"tell:one"}) +
                         Spawned(Dial("/dev/ttyS1") + Words{"sleep:1000"}) +
                         Words{"sleep:20", "kill-child"} +
                         Child(Dial("/dev/ttyS1") + kPage + Words{"tell:two"}) +
                         Dial("/dev/ttyS2") + kPage + Words{"hear", "hear", "await", "await"};
    const Result first = Client(family);
    EXPECT_THAT(first.out, HasSubstr("tap received 3 pages"));
    const char* const asked = getenv("PAGERSIM_PROOF_RUNS");
    const int runs = asked != nullptr ? std::atoi(asked) : 5;
    const Load load(4);
    for (int i = 0; i < runs; ++i) {
        const Result again = Client(family);
        ASSERT_EQ(first.out, again.out) << "run " << i;
        ASSERT_EQ(first.err, again.err) << "run " << i;
    }
}

}  // namespace
}  // namespace pagersim
