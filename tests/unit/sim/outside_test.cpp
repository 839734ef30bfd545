// Waiting for something outside the program, while others of its threads wait for the clock.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "sim/testing.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/sim/server_outside.h"

using namespace std::chrono_literals;

namespace pagersim {
namespace {

class OutsideTest : public testing::Test {
 protected:
    OutsideTest() { EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, ends)); }
    ~OutsideTest() override {
        close(ends[0]);
        close(ends[1]);
    }

    VirtualClock clock;
    int ends[2] = {-1, -1};
};

TEST_F(OutsideTest, AThreadThatWaitsOutsideDoesNotStopTheClock) {
    std::thread reader([&] {
        char byte = 0;
        EXPECT_EQ(1, read(ends[0], &byte, 1));
        EXPECT_EQ(1, recv(ends[0], &byte, 1, 0));
    });
    sleep(60);
    EXPECT_EQ(2, write(ends[1], "xy", 2));
    reader.join();
    EXPECT_EQ(60s, VirtualClock::Now());
}

TEST_F(OutsideTest, ACallThatNeedNotWaitTakesNoTime) {
    std::thread sleeper([] { sleep(1000); });
    poll(nullptr, 0, 1);  // the sleeper sleeps
    char byte = 0;
    EXPECT_EQ(-1, recv(ends[0], &byte, 1, MSG_DONTWAIT));
    ASSERT_EQ(3, write(ends[1], "xyz", 3));
    EXPECT_EQ(1, read(ends[0], &byte, 1));
    EXPECT_EQ(1, recv(ends[0], &byte, 1, 0));
    EXPECT_EQ(1, recvfrom(ends[0], &byte, 1, 0, nullptr, nullptr));
    ASSERT_EQ(0, fcntl(ends[0], F_SETFL, O_NONBLOCK));
    EXPECT_EQ(-1, read(ends[0], &byte, 1));
    EXPECT_EQ(EAGAIN, errno);
    EXPECT_EQ(1ms, VirtualClock::Now());
    sleeper.join();
}

TEST_F(OutsideTest, ASignalIsAwaited) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::thread waiter([&] {
        int signal = 0;
        EXPECT_EQ(0, sigwait(&set, &signal));
        EXPECT_EQ(SIGUSR2, signal);
    });
    sleep(300);
    EXPECT_EQ(300s, VirtualClock::Now());
    pthread_kill(waiter.native_handle(), SIGUSR2);
    waiter.join();
}

TEST_F(OutsideTest, APendingSignalTakesNoTime) {
    std::thread sleeper([] { sleep(1000); });
    poll(nullptr, 0, 1);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    pthread_kill(pthread_self(), SIGUSR2);
    int signal = 0;
    EXPECT_EQ(0, sigwait(&set, &signal));
    EXPECT_EQ(1ms, VirtualClock::Now());
    sleeper.join();
}

TEST_F(OutsideTest, AChildIsAwaited) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(7);
    }
    int status = 0;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(7, WEXITSTATUS(status));
}

TEST_F(OutsideTest, EpollWaitsInVirtualTime) {
    const int set = epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = ends[0];
    ASSERT_EQ(0, epoll_ctl(set, EPOLL_CTL_ADD, ends[0], &event));
    EXPECT_EQ(0, epoll_wait(set, &event, 1, 90'000));
    EXPECT_EQ(90s, VirtualClock::Now());
    std::thread writer([&] {
        sleep(5);
        EXPECT_EQ(1, write(ends[1], "x", 1));
    });
    EXPECT_EQ(1, epoll_wait(set, &event, 1, 90'000));
    EXPECT_EQ(ends[0], event.data.fd);
    EXPECT_EQ(95s, VirtualClock::Now());
    writer.join();
    close(set);
}

TEST_F(OutsideTest, TimeStandsStillWhileAServerThatIsNamedIsAsked) {
    const test_support::TempDir folder;
    setenv("PAGERSIM_OUTSIDE", std::filesystem::current_path().c_str(), 1);
    const ServerOutside server(std::filesystem::current_path());
    std::thread sleeper([] { sleep(1000); });
    poll(nullptr, 0, 1);  // the sleeper sleeps
    pollfd call{server.Call(), POLLIN, 0};
    EXPECT_EQ(0, poll(&call, 1, 1)) << "a limit is one of real time";
    EXPECT_EQ(1, poll(&call, 1, 30'000));
    EXPECT_EQ(1ms, VirtualClock::Now());
    const int number = call.fd;
    close(number);
    unsetenv("PAGERSIM_OUTSIDE");
    // The number may be any other descriptor's from now on.
    ASSERT_EQ(number, dup2(ends[0], number));
    EXPECT_EQ(0, poll(&call, 1, 90'000));
    EXPECT_EQ(90s + 1ms, VirtualClock::Now());
    close(number);
    sleeper.join();
}

TEST_F(OutsideTest, AServerThatIsNotNamedIsNoneOfTheWorldsConcern) {
    const test_support::TempDir folder;
    setenv("PAGERSIM_OUTSIDE", "/elsewhere", 1);
    const ServerOutside server(std::filesystem::current_path());
    pollfd call{server.Call(), POLLIN, 0};
    EXPECT_EQ(0, poll(&call, 1, 30'000));
    EXPECT_EQ(30s, VirtualClock::Now());
    close(call.fd);
    unsetenv("PAGERSIM_OUTSIDE");
}

}  // namespace
}  // namespace pagersim
