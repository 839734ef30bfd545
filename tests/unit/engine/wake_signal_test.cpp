// Tests of engine/wake_signal.h.
#include "engine/wake_signal.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <thread>

#include "linux/win_system.h"
#include "sim/testing.h"
#include "tests/support/without_descriptors.h"

namespace {

using namespace std::chrono_literals;
using pagersim::VirtualClock;

class Wake : public ::testing::Test {
 protected:
    VirtualClock clock;
    WakeSignal signal;
};

TEST_F(Wake, WaitsExactlyAsLongAsAsked) {
    EXPECT_FALSE(signal.Wait(60000));
    EXPECT_EQ(60000ms, VirtualClock::Now());
}

TEST_F(Wake, RaisedBeforeTheWaitCostsNoTime) {
    signal.Raise();
    EXPECT_TRUE(signal.Wait(60000));
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(Wake, StaysRaised) {
    signal.Raise();
    EXPECT_TRUE(signal.Wait(0));
    EXPECT_TRUE(signal.Wait(0));
}

TEST_F(Wake, RaisedDuringTheWaitEndsIt) {
    std::thread raiser([this] {
        Sleep(12000);
        signal.Raise();
    });
    EXPECT_TRUE(signal.Wait(60000));
    EXPECT_EQ(12000ms, VirtualClock::Now());
    raiser.join();
}

TEST_F(Wake, LoweredIsAsItWasMade) {
    signal.Raise();
    signal.Raise();
    signal.Lower();
    EXPECT_FALSE(signal.Wait(1000));
    EXPECT_EQ(1000ms, VirtualClock::Now());
    signal.Raise();
    EXPECT_TRUE(signal.Wait(1000));
}

TEST_F(Wake, LoweringWhatIsLoweredCostsNoTime) {
    signal.Lower();
    EXPECT_FALSE(signal.Wait(0));
    EXPECT_EQ(0ms, VirtualClock::Now());
}

// A handler of the process runs in the waiting thread, so long after the wait began.
class WakeInterrupted : public Wake {
 protected:
    WakeInterrupted() {
        struct sigaction handler {};
        handler.sa_handler = [](int) {};
        sigaction(SIGUSR1, &handler, &before_);
    }
    ~WakeInterrupted() override { sigaction(SIGUSR1, &before_, nullptr); }

    void WaitAMinuteInterruptedAfter(uint32_t ms) {
        const pthread_t waiter = pthread_self();
        std::thread disturber([waiter, ms] {
            Sleep(ms);
            pthread_kill(waiter, SIGUSR1);
        });
        EXPECT_FALSE(signal.Wait(60000));
        disturber.join();
    }

 private:
    struct sigaction before_ {};
};

TEST_F(WakeInterrupted, ItGoesOnForWhatIsLeft) {
    WaitAMinuteInterruptedAfter(12000);
    EXPECT_EQ(60000ms, VirtualClock::Now());
}

TEST_F(WakeInterrupted, ShortlyBeforeItsEndItGoesOnForWhatIsLeft) {
    WaitAMinuteInterruptedAfter(58000);
    EXPECT_EQ(60000ms, VirtualClock::Now());
}

TEST_F(WakeInterrupted, ItIsNotCutShortByPartsOfASecond) {
    WaitAMinuteInterruptedAfter(200);
    EXPECT_GE(VirtualClock::Now(), 60000ms);
    EXPECT_LT(VirtualClock::Now(), 61000ms);
}

TEST(WakeDescriptors, AreGivenBack) {
    const int before = test_support::NextDescriptor();
    {
        const WakeSignal signal;
        EXPECT_NE(before, test_support::NextDescriptor());
    }
    EXPECT_EQ(before, test_support::NextDescriptor());
}

TEST(WakeWithoutDescriptors, IsNotOpen) {
    const test_support::WithoutDescriptors none;
    const WakeSignal signal;
    EXPECT_FALSE(signal.IsOpen());
}

}  // namespace
