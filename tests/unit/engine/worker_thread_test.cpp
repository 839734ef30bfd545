// Tests of engine/worker_thread.h.
#include "engine/worker_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>

#include "linux/win_system.h"
#include "sim/testing.h"
#include "tests/support/process_counts.h"
#include "tests/support/without_descriptors.h"

namespace {

using namespace std::chrono_literals;
using pagersim::VirtualClock;

// The body gets no argument, so what it works on is static.
class Worker : public ::testing::Test {
 protected:
    Worker() {
        runs = 0;
        worker = &thread;
        thread.Prepare();
    }
    ~Worker() override {
        EXPECT_TRUE(thread.Stop(3600 * 1000));
        Sleep(2 * 3600 * 1000);  // until those that were let go of have ended, too
        EXPECT_TRUE(thread.Stop(0));
    }

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

    // As one whose last lines hold it up.
    static void* EndAfterAnHour(void*) {
        if (++runs == 1) {
            Sleep(3600 * 1000);
        } else {
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
    const int most = test_support::CountThreads() + 50;  // there is room for some hundred stacks
    for (int i = 0; i < kRounds; ++i) {
        ASSERT_TRUE(thread.Start(EndAtOnce)) << "after " << i;
        ASSERT_TRUE(test_support::ComesDownToThreads(most)) << "after " << i;
    }
    Sleep(1000);  // until all have ended
    EXPECT_TRUE(thread.Stop(1000));
    EXPECT_EQ(kRounds, runs);
}

TEST_F(Worker, ARequestToTheOneBeforeDoesNotReachTheNext) {
    thread.Start(RunUntilStopped);
    EXPECT_TRUE(thread.Stop(1000));
    thread.Release();
    thread.Prepare();
    thread.Start(RunUntilStopped);
    EXPECT_FALSE(thread.StopRequested());
    Sleep(600 * 1000);
    EXPECT_FALSE(thread.Stop(0)) << "it was at its pause";
}

// --- One that is on its way out.

TEST_F(Worker, StartDoesNotWaitForTheOneBefore) {
    thread.Start(EndAfterAnHour);
    Sleep(1000);
    EXPECT_TRUE(thread.Start(EndAfterAnHour));
    EXPECT_EQ(1000ms, VirtualClock::Now());
}

TEST_F(Worker, EndOfTheOneBeforeIsNotThatOfTheNext) {
    thread.Start(EndAfterAnHour);
    Sleep(3600 * 1000 - 1000);
    thread.Start(EndAfterAnHour);
    Sleep(10 * 1000);  // the first has ended, the second pauses
    const auto before = VirtualClock::Now();
    EXPECT_TRUE(thread.Stop(3600 * 1000));
    EXPECT_EQ(before, VirtualClock::Now()) << "that of the second";
    EXPECT_EQ(2, runs);
}

TEST_F(Worker, EndOfTheOneBeforeIsForgottenByTheNext) {
    thread.Start(EndAtOnce);
    Sleep(1000);
    thread.Start(BeBusyForAnHour);
    EXPECT_FALSE(thread.Stop(1000));
}

TEST_F(Worker, OneThatIsLetGoOfIsNoLongerWaitedFor) {
    thread.Start(EndAfterAnHour);
    EXPECT_FALSE(thread.Stop(1000));
    thread.LetGo();
    EXPECT_TRUE(thread.Stop(0));
    thread.Release();
    Sleep(2 * 3600 * 1000);  // its end finds nothing of what was released
}

// --- What the system refuses.

TEST_F(Worker, StartNeedsNoDescriptors) {
    const test_support::WithoutDescriptors none;
    EXPECT_TRUE(thread.Start(EndAtOnce));
    EXPECT_TRUE(thread.Stop(1000));
}

TEST_F(Worker, ReleaseGivesTheDescriptorsBack) {
    WorkerThread another;
    const int before = test_support::NextDescriptor();
    another.Prepare();
    EXPECT_NE(before, test_support::NextDescriptor());
    another.Release();
    EXPECT_EQ(before, test_support::NextDescriptor());
}

TEST_F(Worker, CannotBePreparedWithoutDescriptors) {
    WorkerThread another;
    {
        const test_support::WithoutDescriptors none;
        EXPECT_THROW(another.Prepare(), std::bad_alloc);
    }
    EXPECT_NO_THROW(another.Prepare());
}

}  // namespace
