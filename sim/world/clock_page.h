// How far the process that has the turn has gone on by itself: a page of memory that the server and
// all processes of a world share. So it isn't lost with a process that is killed or replaced.
#ifndef PAGERFWD_SIM_WORLD_CLOCK_PAGE_H
#define PAGERFWD_SIM_WORLD_CLOCK_PAGE_H

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "sim/world/time.h"

namespace pagersim {

// Errors     Where there is no memory, it shows 0 for ever.
class ClockPage {
 public:
    ClockPage() = default;
    explicit ClockPage(int file) {
        void* const page = mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        micros_ = page != MAP_FAILED ? static_cast<std::atomic<int64_t>*>(page) : nullptr;
    }
    ~ClockPage() {
        if (micros_ != nullptr) {
            munmap(micros_, kSize);
        }
    }
    ClockPage(ClockPage&& other) noexcept : micros_(other.micros_) { other.micros_ = nullptr; }
    ClockPage& operator=(ClockPage&& other) noexcept {
        std::atomic<int64_t>* const mine = micros_;
        micros_ = other.micros_;
        other.micros_ = mine;
        return *this;
    }

    // A file for one; -1: none.
    static int MakeFile() {
        const int file = memfd_create("pagersim-clock", MFD_CLOEXEC);
        if (file >= 0 && ftruncate(file, kSize) != 0) {
            close(file);
            return -1;
        }
        return file;
    }

    Micros Get() const { return Micros(micros_ != nullptr ? micros_->load() : 0); }
    void Set(Micros now) {
        if (micros_ != nullptr) {
            micros_->store(now.count(), std::memory_order_relaxed);
        }
    }

 private:
    static constexpr std::size_t kSize = 4096;
    static_assert(ATOMIC_LLONG_LOCK_FREE != 0);  // where it is aligned, as it is at a page's begin

    std::atomic<int64_t>* micros_ = nullptr;
};

}  // namespace pagersim

#endif
