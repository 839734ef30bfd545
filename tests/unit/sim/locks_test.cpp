// Locks and conditions between threads that wait in virtual time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/sim/timed_log.h"

using namespace std::chrono_literals;

namespace pagersim {
namespace {

using LocksTest = TimedLogTest;

TEST_F(LocksTest, AMutexHeldOverASleepIsWaitedForInVirtualTime) {
    std::mutex mutex;
    mutex.lock();
    std::thread other([&] {
        const std::lock_guard<std::mutex> hold(mutex);
        Log("other");
    });
    sleep(30);
    mutex.unlock();
    other.join();
    EXPECT_EQ("other@30000 ", Log());
}

TEST_F(LocksTest, WaitersForAMutexAreServedInTurn) {
    std::mutex mutex;
    std::vector<std::thread> threads;
    threads.reserve(4);
    mutex.lock();
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            poll(nullptr, 0, 10 + i);
            const std::lock_guard<std::mutex> hold(mutex);
            Log(std::to_string(i));
            sleep(1);
        });
    }
    sleep(1);
    mutex.unlock();
    for (std::thread& each : threads) {
        each.join();
    }
    EXPECT_EQ("0@1000 1@2000 2@3000 3@4000 ", Log());
}

TEST_F(LocksTest, ManyMutexesUnderContention) {
    std::mutex mutexes[3];
    int counters[3] = {};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int k = 0; k < 3000; ++k) {
                const int which = (i + k) % 3;
                const std::lock_guard<std::mutex> hold(mutexes[which]);
                ++counters[which];
                if (k % 100 == 0) {
                    poll(nullptr, 0, 1);
                }
            }
        });
    }
    for (std::thread& each : threads) {
        each.join();
    }
    EXPECT_EQ(12'000, counters[0] + counters[1] + counters[2]);
}

TEST_F(LocksTest, AMutexThatChecksItsOwnerStillDoes) {
    pthread_mutexattr_t kind;
    pthread_mutexattr_init(&kind);
    pthread_mutexattr_settype(&kind, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_t mutex;
    pthread_mutex_init(&mutex, &kind);
    EXPECT_EQ(0, pthread_mutex_lock(&mutex));
    EXPECT_EQ(EDEADLK, pthread_mutex_lock(&mutex));
    EXPECT_EQ(0, pthread_mutex_unlock(&mutex));
    pthread_mutex_destroy(&mutex);
    pthread_mutexattr_destroy(&kind);
}

TEST_F(LocksTest, ARecursiveMutexCountsItsOwnersLocks) {
    std::recursive_mutex mutex;
    mutex.lock();
    mutex.lock();
    std::thread other([&] {
        const std::lock_guard<std::recursive_mutex> hold(mutex);
        Log("other");
    });
    sleep(1);
    mutex.unlock();
    sleep(1);
    mutex.unlock();
    other.join();
    EXPECT_EQ("other@2000 ", Log());
}

TEST_F(LocksTest, ConditionsWakeOneOrAll) {
    std::mutex mutex;
    std::condition_variable changed;
    int tokens = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&, i] {
            poll(nullptr, 0, i + 1);
            std::unique_lock<std::mutex> hold(mutex);
            changed.wait(hold, [&] { return tokens > 0; });
            --tokens;
            Log(std::to_string(i));
        });
    }
    sleep(1);
    {
        const std::lock_guard<std::mutex> hold(mutex);
        tokens = 1;
    }
    changed.notify_one();
    sleep(1);
    EXPECT_EQ("0@1000 ", Log());
    {
        const std::lock_guard<std::mutex> hold(mutex);
        tokens = 2;
    }
    changed.notify_all();
    for (std::thread& each : threads) {
        each.join();
    }
    EXPECT_THAT(Log(), testing::AnyOf("0@1000 1@2000 2@2000 ", "0@1000 2@2000 1@2000 "));
}

TEST_F(LocksTest, ATimedConditionOfTheWallClockEndsInVirtualTime) {
    std::mutex mutex;
    std::condition_variable never;
    std::unique_lock<std::mutex> hold(mutex);
    const auto until = std::chrono::system_clock::now() + 90s;
    EXPECT_EQ(std::cv_status::timeout, never.wait_until(hold, until));
    EXPECT_EQ(90s, VirtualClock::Now());
}

TEST_F(LocksTest, ATimedConditionOfTheMonotonicClockIsReal) {
    std::mutex mutex;
    std::condition_variable never;
    std::unique_lock<std::mutex> hold(mutex);
    EXPECT_EQ(std::cv_status::timeout, never.wait_for(hold, 20ms));
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(LocksTest, AMonotonicConditionFreesItsMutexAndCanBeSignalled) {
    std::mutex mutex;
    std::condition_variable changed;
    bool set = false;
    std::thread other([&] {
        sleep(1);
        const std::lock_guard<std::mutex> hold(mutex);
        set = true;
        changed.notify_one();
    });
    std::unique_lock<std::mutex> hold(mutex);
    EXPECT_FALSE(changed.wait_for(hold, 20ms, [&] { return set; })) << "time stood still";
    hold.unlock();
    other.join();
    hold.lock();
    EXPECT_TRUE(changed.wait_for(hold, 20ms, [&] { return set; }));
}

TEST_F(LocksTest, AMonotonicConditionHandsItsMutexOver) {
    std::mutex mutex;
    std::condition_variable changed;
    bool set = false;
    std::unique_lock<std::mutex> hold(mutex);
    std::thread other([&] {
        const std::lock_guard<std::mutex> other_hold(mutex);  // waits here first
        set = true;
        changed.notify_one();
    });
    usleep(10'000);
    EXPECT_TRUE(changed.wait_for(hold, 60s, [&] { return set; }));
    hold.unlock();
    other.join();
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(LocksTest, AReadWriteLockIsWaitedForInVirtualTime) {
    std::shared_mutex lock;
    lock.lock();
    std::vector<std::thread> readers;
    readers.reserve(4);
    for (int i = 0; i < 2; ++i) {
        readers.emplace_back([&] {
            const std::shared_lock<std::shared_mutex> hold(lock);
            sleep(5);
            Log("reader");
        });
    }
    sleep(10);
    lock.unlock();
    sleep(1);
    lock.lock();
    Log("writer");
    lock.unlock();
    for (std::thread& each : readers) {
        each.join();
    }
    EXPECT_EQ("reader@15000 reader@15000 writer@15000 ", Log());
}

}  // namespace
}  // namespace pagersim
