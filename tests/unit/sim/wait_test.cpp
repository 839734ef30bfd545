// poll and select: time-outs, polling loops, pipes, signals.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/select.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <limits>
#include <thread>

#include "sim/testing.h"

using namespace std::chrono_literals;

namespace pagersim {
namespace {

class WaitTest : public testing::Test {
 protected:
    void SetUp() override {
        fd = open("/dev/ttyS0", O_RDWR);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(0, pipe(pipe_ends));
    }

    ~WaitTest() override {
        close(fd);
        close(pipe_ends[0]);
        close(pipe_ends[1]);
    }

    // select for input on the line; what is left of the time comes back in `wait`.
    int SelectLine(timeval& wait) const {
        fd_set input;
        FD_ZERO(&input);
        FD_SET(fd, &input);
        return select(fd + 1, &input, nullptr, nullptr, &wait);
    }

    bool LineHasInput() const {
        timeval none{};
        return SelectLine(none) > 0;
    }

    static Milliseconds TickCount() {
        timeval now{};
        gettimeofday(&now, nullptr);
        return Milliseconds(now.tv_sec * 1000LL + now.tv_usec / 1000);
    }

    VirtualClock clock;
    ScriptedLine line{1};
    int fd = -1;
    int pipe_ends[2] = {-1, -1};
};

TEST_F(WaitTest, SelectEndsAtItsTimeOut) {
    timeval wait{2, 500'000};
    EXPECT_EQ(0, SelectLine(wait));
    EXPECT_EQ(2500ms, VirtualClock::Now());
    EXPECT_EQ(0, wait.tv_sec);
    EXPECT_EQ(0, wait.tv_usec);
}

TEST_F(WaitTest, SelectLeavesTheRestOfTheTime) {
    line.Says("x", 1200ms);
    timeval wait{5, 0};
    EXPECT_EQ(1, SelectLine(wait));
    EXPECT_EQ(1200ms, VirtualClock::Now());
    EXPECT_EQ(3, wait.tv_sec);
    EXPECT_EQ(800'000, wait.tv_usec);
}

TEST_F(WaitTest, SelectWithoutDescriptorsSleeps) {
    timeval wait{0, 1500};
    EXPECT_EQ(0, select(0, nullptr, nullptr, nullptr, &wait));
    EXPECT_EQ(1500us, VirtualClock::NowExactly());
}

TEST_F(WaitTest, SelectTellsALineFromAPipe) {
    ASSERT_EQ(1, write(pipe_ends[1], "x", 1));
    fd_set input;
    FD_ZERO(&input);
    FD_SET(fd, &input);
    FD_SET(pipe_ends[0], &input);
    fd_set output = input;
    FD_CLR(pipe_ends[0], &output);
    EXPECT_EQ(2, select(std::max(fd, pipe_ends[0]) + 1, &input, &output, nullptr, nullptr));
    EXPECT_FALSE(FD_ISSET(fd, &input));
    EXPECT_TRUE(FD_ISSET(pipe_ends[0], &input));
    EXPECT_TRUE(FD_ISSET(fd, &output)) << "a line can always be written to";
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(WaitTest, SelectRefusesAClosedDescriptor) {
    const int closed = dup(pipe_ends[0]);
    close(closed);
    fd_set input;
    FD_ZERO(&input);
    FD_SET(closed, &input);
    timeval none{};
    EXPECT_EQ(-1, select(closed + 1, &input, nullptr, nullptr, &none));
    EXPECT_EQ(EBADF, errno);
}

TEST_F(WaitTest, SelectRefusesANegativeTime) {
    timeval wait{-1, 0};
    EXPECT_EQ(-1, SelectLine(wait));
    EXPECT_EQ(EINVAL, errno);
}

TEST_F(WaitTest, ATimeOutBeyondAllTimeIsNone) {
    line.Says("x", 24h);
    timeval wait{std::numeric_limits<time_t>::max(), 0};
    EXPECT_EQ(1, SelectLine(wait));
    EXPECT_EQ(24h, VirtualClock::Now());
}

TEST_F(WaitTest, PollSaysWhatIsReady) {
    line.Says("x");
    pollfd looks[] = {{fd, POLLIN | POLLOUT, 0}, {pipe_ends[0], POLLIN, 0}, {-1, POLLIN, 0}};
    EXPECT_EQ(1, poll(looks, 3, 1000));
    EXPECT_EQ(POLLIN | POLLOUT, looks[0].revents);
    EXPECT_EQ(0, looks[1].revents);
    EXPECT_EQ(0, looks[2].revents);
}

// The time-out of a loop that polls and looks at the time ends exactly, by steps.
TEST_F(WaitTest, APollingLoopTakesOneStepPerLook) {
    const Milliseconds start = TickCount();
    int looks = 0;
    do {
        EXPECT_FALSE(LineHasInput());
        EXPECT_FALSE(LineHasInput());
        ++looks;
    } while (TickCount() - start < 120s);
    EXPECT_EQ(12'000, looks);
    EXPECT_EQ(120s, VirtualClock::Now());
}

TEST_F(WaitTest, TheStepCanBeSet) {
    VirtualClock::SetStep(1ms);
    EXPECT_FALSE(LineHasInput());
    TickCount();
    EXPECT_EQ(1ms, VirtualClock::Now());
}

TEST_F(WaitTest, OnlyTheLookAtTheTimeAfterAQuietLookTakesTime) {
    TickCount();
    EXPECT_EQ(0ms, VirtualClock::Now());
    EXPECT_FALSE(LineHasInput());
    EXPECT_EQ(0ms, VirtualClock::Now());
    TickCount();
    EXPECT_EQ(10ms, VirtualClock::Now());
    TickCount();
    EXPECT_EQ(10ms, VirtualClock::Now());
}

TEST_F(WaitTest, AQuietLookIsForgottenOverAWriteOrAWait) {
    EXPECT_FALSE(LineHasInput());
    EXPECT_EQ(1, write(fd, "x", 1));
    TickCount();
    EXPECT_EQ(0ms, VirtualClock::Now());
    EXPECT_FALSE(LineHasInput());
    sleep(1);
    TickCount();
    EXPECT_EQ(1s, VirtualClock::Now());
}

// Such a line can always be read from, and only gives EIO.
TEST_F(WaitTest, APollingLoopOnAVanishedLineTakesTimeToo) {
    line.Vanishes(1s);
    const Milliseconds start = TickCount();
    while (TickCount() - start < 60s) {
        char byte = 0;
        if (LineHasInput()) {
            EXPECT_EQ(-1, read(fd, &byte, 1));
        }
    }
    EXPECT_EQ(60s, VirtualClock::Now());
}

// A month of looks is 260 million: they have to be cheap.
TEST_F(WaitTest, AnHourOfLooksTakesAMomentOfRealTime) {
    const auto before = std::chrono::steady_clock::now();
    const Milliseconds start = TickCount();
    while (TickCount() - start < 1h) {
        EXPECT_FALSE(LineHasInput() || LineHasInput());
    }
    const auto spent = std::chrono::steady_clock::now() - before;
    RecordProperty("looks_per_second",
                   static_cast<int>(360'000 / std::chrono::duration<double>(spent).count()));
    EXPECT_LT(spent, 60s);
}

TEST_F(WaitTest, TimeStandsStillWhileInputIsThere) {
    line.Says("abc");
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(LineHasInput());
        TickCount();
    }
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(WaitTest, AStepEndsWhenInputArrives) {
    line.Says("a", 1003ms);
    while (!LineHasInput()) {
        TickCount();
    }
    EXPECT_EQ(1003ms, VirtualClock::Now());
}

TEST_F(WaitTest, ALoopThatNeverLooksAtTheTimeEndsToo) {
    line.Says("a", 50ms);
    while (!LineHasInput()) {
    }
    EXPECT_EQ(50ms, VirtualClock::Now());
}

TEST_F(WaitTest, ALookAtAPipeAloneTakesNoTime) {
    pollfd look{pipe_ends[0], POLLIN, 0};
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(0, poll(&look, 1, 0));
    }
    TickCount();
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(WaitTest, AWakePipeEndsAPollAtOnce) {
    std::thread waker([this] {
        sleep(3);
        EXPECT_EQ(1, write(pipe_ends[1], "x", 1));
        sleep(100);
    });
    pollfd look{pipe_ends[0], POLLIN, 0};
    EXPECT_EQ(1, poll(&look, 1, 60'000));
    EXPECT_EQ(3s, VirtualClock::Now());
    waker.join();
}

TEST_F(WaitTest, AWakePipeEndsAPollBesideAPollingLoop) {
    std::atomic<bool> woken{false};
    std::thread waiter([&] {
        pollfd look{pipe_ends[0], POLLIN, 0};
        EXPECT_EQ(1, poll(&look, 1, 60'000));
        EXPECT_LE(1s, VirtualClock::Now());
        EXPECT_GE(1010ms, VirtualClock::Now());
        woken = true;
    });
    const Milliseconds start = TickCount();
    while (!LineHasInput() && TickCount() - start < 1s) {
    }
    EXPECT_EQ(1, write(pipe_ends[1], "x", 1));
    while (!LineHasInput() && TickCount() - start < 30s) {
    }
    EXPECT_TRUE(woken);
    waiter.join();
}

TEST_F(WaitTest, AnEventfdIsNoticedBesideAPollingLoop) {
    const int event = eventfd(0, 0);
    Milliseconds woken{0};
    std::thread waiter([&] {
        pollfd look{event, POLLIN, 0};
        EXPECT_EQ(1, poll(&look, 1, 60'000));
        woken = VirtualClock::Now();
    });
    const Milliseconds start = TickCount();
    while (!LineHasInput() && TickCount() - start < 1s) {
    }
    EXPECT_EQ(0, eventfd_write(event, 1));
    while (!LineHasInput() && TickCount() - start < 30s) {
    }
    waiter.join();
    EXPECT_LE(woken, 1200ms);
    close(event);
}

// Nothing is left in virtual time: whoever writes is outside.
TEST_F(WaitTest, WithoutAnyDeadlineARealDescriptorIsReallyAwaited) {
    if (fork() == 0) {
        usleep(20'000);
        _exit(write(pipe_ends[1], "x", 1) == 1 ? 0 : 1);
    }
    const auto await = [this] {
        pollfd look{pipe_ends[0], POLLIN, 0};
        EXPECT_EQ(1, poll(&look, 1, -1));
    };
    std::thread other(await);
    await();
    other.join();
    EXPECT_EQ(0ms, VirtualClock::Now());
}

std::atomic<int> handled{0};

void Handle(int) {
    ++handled;
}

class SignalTest : public WaitTest {
 protected:
    SignalTest() {
        handled = 0;
        struct sigaction action {};
        action.sa_handler = Handle;
        action.sa_flags = SA_RESTART;  // makes no difference to poll, select and sleep
        sigaction(SIGUSR1, &action, &before_);
    }

    ~SignalTest() override { sigaction(SIGUSR1, &before_, nullptr); }

    // Signals the calling thread once it waits: after a moment of real time, in which this helper
    // counts as running, so that no virtual time passes.
    std::thread Signaller() {
        return std::thread([target = pthread_self()] {
            usleep(20'000);
            pthread_kill(target, SIGUSR1);
            while (handled == 0) {
                usleep(1'000);
            }
        });
    }

 private:
    struct sigaction before_ {};
};

TEST_F(SignalTest, InterruptsPoll) {
    std::thread signaller = Signaller();
    pollfd look{pipe_ends[0], POLLIN, 0};
    EXPECT_EQ(-1, poll(&look, 1, 60'000));
    EXPECT_EQ(EINTR, errno);
    EXPECT_EQ(0ms, VirtualClock::Now());
    signaller.join();
}

TEST_F(SignalTest, InterruptsSelectAndLeavesTheTime) {
    std::thread signaller = Signaller();
    timeval wait{60, 0};
    EXPECT_EQ(-1, SelectLine(wait));
    EXPECT_EQ(EINTR, errno);
    EXPECT_EQ(60, wait.tv_sec);
    signaller.join();
}

TEST_F(SignalTest, InterruptsSleepWhichTellsTheRest) {
    std::thread signaller = Signaller();
    EXPECT_EQ(60U, sleep(60));
    signaller.join();
}

TEST_F(SignalTest, InterruptsAnEndlessPoll) {
    struct itimerval soon {};
    soon.it_value.tv_usec = 20'000;
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = Handle;
    sigaction(SIGALRM, &action, &before);
    setitimer(ITIMER_REAL, &soon, nullptr);
    pollfd look{pipe_ends[0], POLLIN, 0};
    EXPECT_EQ(-1, poll(&look, 1, -1));
    EXPECT_EQ(EINTR, errno);
    EXPECT_EQ(1, handled);
    sigaction(SIGALRM, &before, nullptr);
}

TEST_F(SignalTest, PendingBeforePpollUnblocksIt) {
    sigset_t blocked;
    sigset_t open_mask;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &open_mask);
    raise(SIGUSR1);
    EXPECT_EQ(0, handled);
    const timespec wait{60, 0};
    EXPECT_EQ(-1, ppoll(nullptr, 0, &wait, &open_mask));
    EXPECT_EQ(EINTR, errno);
    EXPECT_EQ(1, handled);
    EXPECT_EQ(0ms, VirtualClock::Now());
    pthread_sigmask(SIG_SETMASK, &open_mask, nullptr);
}

TEST_F(SignalTest, ReachesPpollWhileItWaits) {
    sigset_t blocked;
    sigset_t open_mask;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &open_mask);
    std::thread signaller = Signaller();
    const timespec wait{60, 0};
    EXPECT_EQ(-1, ppoll(nullptr, 0, &wait, &open_mask));
    EXPECT_EQ(EINTR, errno);
    EXPECT_EQ(1, handled);
    signaller.join();
    pthread_sigmask(SIG_SETMASK, &open_mask, nullptr);
}

}  // namespace
}  // namespace pagersim
