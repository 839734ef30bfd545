// Tests of engine/worker_thread.h.
#include "engine/worker_thread.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>

#include "linux/win_system.h"
#include "sim/testing.h"

namespace {

using namespace std::chrono_literals;
using pagersim::VirtualClock;

// The body gets no argument, so what it works on is static.
class Worker : public ::testing::Test {
 protected:
    Worker() {
        runs = 0;
        worker = &thread;
    }
    ~Worker() override { EXPECT_TRUE(thread.Stop(3600 * 1000)); }

    static void* EndAtOnce(void* argument) {
        EXPECT_EQ(nullptr, argument);
        ++runs;
        worker->AnnounceEnd();
        return nullptr;
    }
    static void* PauseForAMinute(void*) {
        ++runs;
        worker->Pause(60000);
        worker->AnnounceEnd();
        return nullptr;
    }
    static void* BeBusyForAnHour(void*) {
        ++runs;
        Sleep(3600 * 1000);
        worker->AnnounceEnd();
        return nullptr;
    }
    static void* RunUntilStopped(void*) {
        ++runs;
        while (!worker->StopRequested()) {
            worker->Pause(60000);
        }
        worker->AnnounceEnd();
        return nullptr;
    }

    static std::atomic<int> runs;
    static WorkerThread* worker;

    VirtualClock clock;
    WorkerThread thread;
};

std::atomic<int> Worker::runs;
WorkerThread* Worker::worker;

TEST_F(Worker, RunsItsBodyOnce) {
    EXPECT_TRUE(thread.Start(EndAtOnce));
    EXPECT_TRUE(thread.Stop(1000));
    EXPECT_EQ(1, runs);
}

TEST_F(Worker, WithoutAThreadThereIsNothingToStop) {
    EXPECT_TRUE(thread.Stop(0));
}

TEST_F(Worker, PauseEndsAtOnceWhenAStopIsAskedFor) {
    thread.Start(PauseForAMinute);
    Sleep(15000);
    EXPECT_TRUE(thread.Stop(1000));
    EXPECT_EQ(15000ms, VirtualClock::Now());
}

TEST_F(Worker, PauseEndsByItselfAfterItsTime) {
    thread.Start(PauseForAMinute);
    Sleep(90000);
    EXPECT_TRUE(thread.Stop(0)) << "it had ended after a minute";
}

TEST_F(Worker, SeesTheRequest) {
    thread.Start(RunUntilStopped);
    Sleep(600 * 1000);
    EXPECT_TRUE(thread.Stop(1000));
    EXPECT_EQ(600s, VirtualClock::Now());
}

TEST_F(Worker, StopGivesUpAfterItsLimitAndMayBeCalledAgain) {
    thread.Start(BeBusyForAnHour);
    EXPECT_FALSE(thread.Stop(1000));
    EXPECT_EQ(1000ms, VirtualClock::Now());
    EXPECT_FALSE(thread.Stop(0));
    Sleep(3600 * 1000);
    EXPECT_TRUE(thread.Stop(0));
}

TEST_F(Worker, OneAfterTheOtherForAsLongAsOneLikes) {
    constexpr int kRounds = 500;
    for (int i = 0; i < kRounds; ++i) {
        ASSERT_TRUE(thread.Start(EndAtOnce)) << "after " << i;
    }
    EXPECT_TRUE(thread.Stop(1000));
    EXPECT_EQ(kRounds, runs);
}

TEST_F(Worker, ARequestToTheOneBeforeDoesNotReachTheNext) {
    thread.Start(RunUntilStopped);
    EXPECT_TRUE(thread.Stop(1000));
    thread.Start(RunUntilStopped);
    EXPECT_FALSE(thread.StopRequested());
}

TEST_F(Worker, DoesNotStartWithoutDescriptors) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{0, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_FALSE(thread.Start(EndAtOnce));
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_TRUE(thread.Start(EndAtOnce));
}

}  // namespace
