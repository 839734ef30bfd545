// Tests of host/platform/bell.h, on the virtual clock.
#include "host/platform/bell.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "sim/testing.h"

namespace host {
namespace {

using namespace std::chrono_literals;
using pagersim::VirtualClock;

class BellTest : public testing::Test {
 protected:
    BellTest() { EXPECT_EQ(0, pipe(stop)); }
    ~BellTest() override {
        close(stop[0]);
        close(stop[1]);
    }

    // As the library's worker does. 1: it is to stop.
    int Pause(int timeout = 60000) {
        pollfd readable{stop[0], POLLIN, -1};
        const int ready = PollUnlessRung(::poll, &readable, 1, timeout);
        EXPECT_EQ(ready == 1 ? POLLIN : 0, readable.revents);
        return ready;
    }
    void Stop() const { EXPECT_EQ(1, write(stop[1], "x", 1)); }

    VirtualClock clock;
    int stop[2] = {-1, -1};
};

TEST_F(BellTest, PauseTakesItsMinuteWhenNobodyRings) {
    EXPECT_EQ(0, Pause());
    EXPECT_EQ(60s, VirtualClock::Now());
}

TEST_F(BellTest, RingingEndsThePauseInProgressAsAfterItsTime) {
    std::thread node([] {
        sleep(7);
        RingBell();
    });
    EXPECT_EQ(0, Pause());
    EXPECT_EQ(7s, VirtualClock::Now());
    node.join();
    EXPECT_EQ(0, Pause()) << "rung once";
    EXPECT_EQ(67s, VirtualClock::Now());
}

TEST_F(BellTest, RungBeforeThePauseItEndsIt) {
    RingBell();
    RingBell();
    EXPECT_EQ(0, Pause());
    EXPECT_EQ(0s, VirtualClock::Now());
    EXPECT_EQ(0, Pause()) << "twice before a pause is once";
    EXPECT_EQ(60s, VirtualClock::Now());
}

TEST_F(BellTest, TellsHowMuchOfAPauseIsLeft) {
    EXPECT_EQ(std::nullopt, PauseLeft());
    std::thread node([] {
        sleep(7);
        EXPECT_EQ(53, PauseLeft());
        RingBell();
        sleep(1);
        EXPECT_EQ(std::nullopt, PauseLeft()) << "it has ended";
    });
    EXPECT_EQ(0, Pause());
    node.join();
}

TEST_F(BellTest, TheLibrarysOwnEndOfAPauseStays) {
    Stop();
    EXPECT_EQ(1, Pause());
    RingBell();
    EXPECT_EQ(1, Pause());
    EXPECT_EQ(0s, VirtualClock::Now());
}

TEST_F(BellTest, EveryOtherPollIsTheSystems) {
    RingBell();
    EXPECT_EQ(0, Pause(59999));
    EXPECT_EQ(59999ms, VirtualClock::Now());
    EXPECT_EQ(0, Pause(0));
    EXPECT_EQ(0, PollUnlessRung(::poll, nullptr, 0, 60000));
    pollfd two[] = {{stop[0], POLLIN, 0}, {stop[0], POLLIN, 0}};
    EXPECT_EQ(0, PollUnlessRung(::poll, two, 2, 60000));
    pollfd writable{stop[1], POLLOUT, 0};
    EXPECT_EQ(1, PollUnlessRung(::poll, &writable, 1, 60000));
    EXPECT_EQ(179999ms, VirtualClock::Now());
    EXPECT_EQ(0, Pause()) << "and has not silenced the bell";
    EXPECT_EQ(179999ms, VirtualClock::Now());
}

int Interrupted(pollfd*, nfds_t, int) {
    errno = EINTR;
    return -1;
}

TEST_F(BellTest, SignalEndsThePauseAsTheSystemDoes) {
    pollfd readable{stop[0], POLLIN, 0};
    EXPECT_EQ(-1, PollUnlessRung(Interrupted, &readable, 1, 60000));
    EXPECT_EQ(EINTR, errno);
}

}  // namespace
}  // namespace host
