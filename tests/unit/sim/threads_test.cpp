// Threads that sleep, wait for each other, and end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/sim/timed_log.h"

using namespace std::chrono_literals;

namespace pagersim {
namespace {

using ThreadsTest = TimedLogTest;

TEST_F(ThreadsTest, TwoSleepSideBySide) {
    std::thread a([this] {
        for (int i = 0; i < 3; ++i) {
            sleep(2);
            Log("a");
        }
    });
    std::thread b([this] {
        for (int i = 0; i < 2; ++i) {
            sleep(3);
            Log("b");
        }
    });
    a.join();
    b.join();
    EXPECT_THAT(Log(), testing::AnyOf("a@2000 b@3000 a@4000 b@6000 a@6000 ",
                                      "a@2000 b@3000 a@4000 a@6000 b@6000 "));
    EXPECT_EQ(6s, VirtualClock::Now());
}

// Once every thread waits for time, they go on in the order of their deadlines, and at one instant
// in the order in which their waits began: the same in each run.
TEST(Threads, RunTheSameWayTwice) {
    const auto run = [] {
        const VirtualClock clock;
        std::mutex lock;
        std::string log;
        std::vector<std::thread> threads;
        threads.reserve(4);
        for (int i = 1; i <= 4; ++i) {
            threads.emplace_back([&, i] {
                poll(nullptr, 0, i);  // sets the order of the first waits
                for (int k = 0; k < 50; ++k) {
                    {
                        const std::lock_guard<std::mutex> hold(lock);
                        log += std::to_string(i) + "@" +
                               std::to_string(VirtualClock::Now().count()) + " ";
                    }
                    poll(nullptr, 0, 7 * i + k % 3);
                }
            });
        }
        for (std::thread& each : threads) {
            each.join();
        }
        return log;
    };
    EXPECT_EQ(run(), run());
}

TEST_F(ThreadsTest, JoinTakesAsLongAsTheThread) {
    std::thread other([] { sleep(45 * 60); });
    other.join();
    EXPECT_EQ(45min, VirtualClock::Now());
}

TEST_F(ThreadsTest, JoinReturnsTheThreadsAnswer) {
    pthread_t thread{};
    static int answer;
    ASSERT_EQ(0, pthread_create(
                     &thread, nullptr,
                     [](void* argument) -> void* {
                         sleep(1);
                         pthread_exit(argument);
                     },
                     &answer));
    void* result = nullptr;
    EXPECT_EQ(0, pthread_join(thread, &result));
    EXPECT_EQ(&answer, result);
    EXPECT_EQ(1s, VirtualClock::Now());
}

TEST_F(ThreadsTest, JoiningOneselfOrADetachedThreadIsRefused) {
    EXPECT_EQ(EDEADLK, pthread_join(pthread_self(), nullptr));
    pthread_t thread{};
    ASSERT_EQ(0, pthread_create(
                     &thread, nullptr,
                     [](void*) -> void* {
                         sleep(5);
                         return nullptr;
                     },
                     this));
    EXPECT_EQ(0, pthread_detach(thread));
    EXPECT_EQ(EINVAL, pthread_join(thread, nullptr));
    sleep(10);
}

TEST_F(ThreadsTest, ADetachedThreadHoldsNobodyUp) {
    std::thread([this] {
        sleep(10);
        Log("detached");
    }).detach();
    sleep(20);
    EXPECT_EQ("detached@10000 ", Log());
}

TEST_F(ThreadsTest, AChildProcessHasItsOwnTime) {
    std::thread other([] { sleep(5); });
    const pid_t child = fork();
    if (child == 0) {
        sleep(100);  // Alone: the other thread isn't there.
        _exit(VirtualClock::Now() == 100s ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    other.join();
    EXPECT_EQ(5s, VirtualClock::Now());
}

// The longest waits of all: nobody left to end them.
TEST_F(ThreadsTest, WaitingForEachOtherForEverIsReported) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            VirtualClock::SetPatience(50ms);
            std::mutex mutex;
            mutex.lock();
            std::thread other([&] { mutex.lock(); });
            other.join();
        },
        "pagersim: after 0 ms all threads wait for each other, for ever:\n"
        "(.|\n)*waits for the end of thread(.|\n)*waits for lock");
}

// A thread that waits when the clock goes away isn't left behind.
TEST(Threads, WaitersGoOnWhenTheClockEnds) {
    std::thread sleeper;
    std::mutex mutex;
    std::thread blocked;
    {
        const VirtualClock clock;
        mutex.lock();
        sleeper = std::thread([] { poll(nullptr, 0, -1); });
        blocked = std::thread([&] { const std::lock_guard<std::mutex> hold(mutex); });
        sleep(1);
    }
    sleeper.join();
    mutex.unlock();
    blocked.join();
}

}  // namespace
}  // namespace pagersim
