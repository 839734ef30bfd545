// How a program is asked to end, or to look again.
#include "host/process/stop_signal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <cerrno>
#include <csignal>

#include "sim/testing.h"

namespace host {
namespace {

using std::chrono::milliseconds;

void (*HandlerOf(int signal))(int) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

TEST(AStopSignal, IsAskedForByTermAndByInterrupt) {
    for (const int signal : {SIGTERM, SIGINT}) {
        StopSignal stop;
        EXPECT_FALSE(stop.WaitFor(milliseconds(0)));
        errno = EPERM;
        raise(signal);
        EXPECT_EQ(EPERM, errno) << "of whoever was interrupted";
        EXPECT_TRUE(stop.WaitFor(milliseconds(0)));
        EXPECT_TRUE(stop.WaitFor(milliseconds(0))) << "every later look sees it, too";
        pollfd readable{StopSignal::Descriptor(), POLLIN, 0};
        EXPECT_EQ(1, poll(&readable, 1, 0));
    }
}

TEST(AStopSignal, IsWaitedForNoLongerThanAsked) {
    const pagersim::VirtualClock clock;
    StopSignal stop;
    EXPECT_FALSE(stop.WaitFor(milliseconds(2500)));
    EXPECT_EQ(milliseconds(2500), pagersim::VirtualClock::Now());
}

TEST(AStopSignal, IsNotAHangUpWhichIsTakenOnce) {
    StopSignal stop;
    raise(SIGHUP);
    EXPECT_FALSE(stop.WaitFor(milliseconds(0)));
    EXPECT_TRUE(stop.TakeHangUp());
    EXPECT_FALSE(stop.TakeHangUp());
}

TEST(AStopSignal, KeepsNothingOpenWhenItHasGone) {
    int end = -1;
    {
        const StopSignal stop;
        end = StopSignal::Descriptor();
        EXPECT_NE(-1, fcntl(end, F_GETFD));
    }
    EXPECT_EQ(-1, fcntl(end, F_GETFD));
}

TEST(AStopSignal, GivesTheSignalsBackThatItHasTaken) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const auto before = std::signal(signal, SIG_IGN);
        {
            const StopSignal stop;
            EXPECT_NE(SIG_IGN, HandlerOf(signal));
        }
        EXPECT_EQ(SIG_IGN, HandlerOf(signal));
        std::signal(signal, before);
    }
}

}  // namespace
}  // namespace host
