// A lock and a gate on the kernel's own waiting primitive. The simulation stands below the
// program's mutexes, which it watches, and below the sanitizers, which watch it: it can use neither
// theirs nor the C library's.
#ifndef PAGERFWD_SIM_WORLD_FUTEX_H
#define PAGERFWD_SIM_WORLD_FUTEX_H

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <ctime>

namespace pagersim {

// A lock for short times. Not re-entrant.
class Lock {
 public:
    void lock() {
        uint32_t seen = kFree;
        if (word_.compare_exchange_strong(seen, kTaken, std::memory_order_acquire)) {
            return;
        }
        while (word_.exchange(kAwaited, std::memory_order_acquire) != kFree) {
            syscall(SYS_futex, &word_, FUTEX_WAIT_PRIVATE, kAwaited, nullptr, nullptr, 0);
        }
    }

    void unlock() {
        if (word_.exchange(kFree, std::memory_order_release) == kAwaited) {
            syscall(SYS_futex, &word_, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
        }
    }

 private:
    static constexpr uint32_t kFree = 0, kTaken = 1, kAwaited = 2;
    std::atomic<uint32_t> word_{kFree};
};

// Holds one thread until another opens it.
class Gate {
 public:
    void Close() { word_.store(kClosed, std::memory_order_relaxed); }

    void Open() {
        word_.store(kOpen, std::memory_order_release);
        syscall(SYS_futex, &word_, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    }

    enum class Passed { kOpen, kSignal, kLimit };

    // Waits until it is open, a signal was handled, or so much real time is over.
    Passed Pass(const timespec& limit = kAges) {
        while (word_.load(std::memory_order_acquire) == kClosed) {
            if (syscall(SYS_futex, &word_, FUTEX_WAIT_PRIVATE, kClosed, &limit, nullptr, 0) == 0) {
                continue;
            }
            if (errno == EINTR || errno == ETIMEDOUT) {
                return word_.load(std::memory_order_acquire) == kOpen ? Passed::kOpen
                       : errno == EINTR                               ? Passed::kSignal
                                                                      : Passed::kLimit;
            }
        }
        return Passed::kOpen;
    }

 private:
    // A wait with a time-out, if ever so long, isn't started again by the kernel after a signal,
    // whatever the handler's flags say: as in poll and sleep.
    static constexpr timespec kAges{1'000'000'000, 0};
    static constexpr uint32_t kClosed = 0, kOpen = 1;
    std::atomic<uint32_t> word_{kClosed};
};

}  // namespace pagersim

#endif
