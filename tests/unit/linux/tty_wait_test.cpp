// The line driver's waits. select is wrapped at link time, to see it and to disturb it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "linux/tty.h"
#include "sim/testing.h"

namespace {

using Calls = std::vector<std::string>;

// Each thread's own: some tests let other threads wait meanwhile.
thread_local Calls calls;       // the time-outs of all selects
thread_local int latest_count;  // of descriptors that the latest select looks through
// A signal ends the next select, or it finds input, with this time left.
thread_local std::optional<timeval> interrupted_with;
thread_local std::optional<timeval> readable_with;

}  // namespace

extern "C" {
int __real_select(int count, fd_set* reads, fd_set* writes, fd_set* excepts, timeval* timeout);

int __wrap_select(int count, fd_set* reads, fd_set* writes, fd_set* excepts, timeval* timeout) {
    latest_count = count;
    calls.push_back(std::to_string(timeout->tv_sec) + "." + std::to_string(timeout->tv_usec));
    if (interrupted_with) {
        *timeout = *interrupted_with;
        interrupted_with.reset();
        errno = EINTR;
        return -1;
    }
    if (readable_with) {
        *timeout = *readable_with;
        readable_with.reset();
        return 1;
    }
    return __real_select(count, reads, writes, excepts, timeout);
}
}

namespace {

using namespace std::chrono_literals;
using pagersim::VirtualClock;

struct WaitTest : testing::Test {
    WaitTest() {
        calls.clear();
        // 0 = made.
        EXPECT_EQ(0, pipe2(pipe_, O_CLOEXEC));
    }
    ~WaitTest() override {
        close(pipe_[0]);
        close(pipe_[1]);
    }

    int ReadEnd() const { return pipe_[0]; }
    void MakeReadable() const { ASSERT_EQ(1, write(pipe_[1], "x", 1)); }

    VirtualClock clock;

 private:
    int pipe_[2] = {-1, -1};
};

TEST_F(WaitTest, PauseTakesItsTime) {
    msleep(2345);
    EXPECT_EQ(2345ms, VirtualClock::Now());
    EXPECT_EQ(Calls{"2.345000"}, calls);
    EXPECT_EQ(0, latest_count);
}

TEST_F(WaitTest, ShortestPauseIsAMillisecond) {
    msleep(1);
    EXPECT_EQ(1ms, VirtualClock::Now());
}

TEST_F(WaitTest, PauseOfZeroOrLessIsNone) {
    msleep(0);
    msleep(-5);
    EXPECT_EQ(Calls{}, calls);
}

TEST_F(WaitTest, PauseGoesOnAfterASignalWithTheTimeLeft) {
    interrupted_with = timeval{1, 500000};
    msleep(2000);
    EXPECT_EQ((Calls{"2.0", "1.500000"}), calls);
    EXPECT_EQ(1500ms, VirtualClock::Now());
}

TEST_F(WaitTest, ReadableAtOnceLeavesTheWholeWait) {
    MakeReadable();
    int32_t wait = 2500;
    EXPECT_EQ(1, data_ready(ReadEnd(), &wait));
    EXPECT_EQ(Calls{"2.500000"}, calls);
    EXPECT_EQ(2500, wait);
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(WaitTest, TimeLeftIsStored) {
    readable_with = timeval{1, 234567};
    int32_t wait = 5000;
    EXPECT_EQ(1, data_ready(ReadEnd(), &wait));
    EXPECT_EQ(1234, wait);
}

TEST_F(WaitTest, NothingWithinTheWaitIsATimeOut) {
    int32_t wait = 700;
    EXPECT_EQ(0, data_ready(ReadEnd(), &wait));
    EXPECT_EQ(700ms, VirtualClock::Now());
    EXPECT_EQ(ReadEnd() + 1, latest_count);
    EXPECT_EQ(700, wait) << "it is stored only with input";
}

TEST_F(WaitTest, DescriptorZeroIsOneLikeOthers) {
    const int usual = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    MakeReadable();
    dup2(ReadEnd(), STDIN_FILENO);
    int32_t wait = 100;
    EXPECT_EQ(1, data_ready(STDIN_FILENO, &wait));
    close(STDIN_FILENO);
    dup2(usual, STDIN_FILENO);
    close(usual);
}

TEST_F(WaitTest, NegativeWaitIsNone) {
    int32_t wait = -1;
    EXPECT_EQ(0, data_ready(ReadEnd(), &wait));
    EXPECT_EQ(Calls{"0.0"}, calls);
    MakeReadable();
    EXPECT_EQ(1, data_ready(ReadEnd(), &wait));
}

TEST_F(WaitTest, ErrorsAreNegative) {
    int32_t wait = 100;
    EXPECT_GT(0, data_ready(-1, &wait));
    EXPECT_GT(0, data_ready(FD_SETSIZE, &wait));
    const int closed = dup(ReadEnd());
    close(closed);
    EXPECT_GT(0, data_ready(closed, &wait));
    interrupted_with = timeval{};
    EXPECT_GT(0, data_ready(ReadEnd(), &wait));
    EXPECT_EQ(100, wait);
}

}  // namespace
