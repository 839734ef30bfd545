// The re-entrant lock.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <new>
#include <thread>
#include <vector>

#include "linux/CriticalSection.h"
#include "linux/win_system.h"
#include "sim/testing.h"

namespace {

// Another thread that takes the lock and says so. On the virtual clock a pause of this thread ends
// only when the other one waits too, so after it the other has the lock or is kept out.
class Rival {
 public:
    explicit Rival(CCriticalSection* lock)
        : thread_([this, lock] {
              lock->Lock();
              inside_ = true;
              lock->Unlock();
          }) {}
    ~Rival() { thread_.join(); }
    Rival(const Rival&) = delete;
    Rival& operator=(const Rival&) = delete;

    bool IsKeptOut() const {
        Sleep(10);
        return !inside_;
    }

 private:
    std::atomic<bool> inside_{false};
    std::thread thread_;
};

struct CriticalSectionTest : testing::Test {
    pagersim::VirtualClock clock;
    CCriticalSection lock;
};

TEST_F(CriticalSectionTest, FreeLockKeepsNobodyOut) {
    const Rival rival(&lock);
    EXPECT_FALSE(rival.IsKeptOut());
}

TEST_F(CriticalSectionTest, IsFreeWhateverItsMemoryHeld) {
    alignas(CCriticalSection) std::byte memory[sizeof(CCriticalSection)];
    memset(memory, 0xff, sizeof memory);
    auto* const made = new (memory) CCriticalSection;
    made->Lock();
    {
        const Rival rival(made);
        EXPECT_TRUE(rival.IsKeptOut());
        made->Unlock();
    }
    made->~CCriticalSection();
}

TEST_F(CriticalSectionTest, OwnerLocksAgainAtOnceAndReleasesWithItsLastUnlock) {
    lock.Lock();
    lock.Lock();
    lock.Lock();
    const Rival rival(&lock);
    EXPECT_TRUE(rival.IsKeptOut());
    lock.Unlock();
    EXPECT_TRUE(rival.IsKeptOut());
    lock.Unlock();
    EXPECT_TRUE(rival.IsKeptOut());
    lock.Unlock();
    EXPECT_FALSE(rival.IsKeptOut());
}

TEST_F(CriticalSectionTest, EarlierOwnerIsKeptOutByALaterOne) {
    lock.Lock();
    lock.Unlock();
    std::atomic<bool> done{false};
    std::thread later([this, &done] {
        lock.Lock();
        Sleep(1000);
        done = true;
        lock.Unlock();
    });
    Sleep(10);
    lock.Lock();
    EXPECT_TRUE(done);
    lock.Unlock();
    later.join();
}

TEST_F(CriticalSectionTest, UnbalancedUnlockIsNotNoticed) {
    lock.Unlock();
    lock.Lock();
    const Rival rival(&lock);
    EXPECT_TRUE(rival.IsKeptOut());
    lock.Unlock();
    EXPECT_FALSE(rival.IsKeptOut());
}

TEST(CriticalSection, OneThreadAtATimeIsInside) {
    CCriticalSection lock;
    int inside = 0;  // plain: the lock is what makes it safe
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&lock, &inside] {
            for (int round = 0; round < 5000; ++round) {
                lock.Lock();
                ++inside;
                lock.Lock();
                ++inside;
                lock.Unlock();
                ++inside;
                lock.Unlock();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(4 * 5000 * 3, inside);
}

}  // namespace
