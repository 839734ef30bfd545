// How far the process that has the turn has gone on by itself: a page of memory that the server and
// all processes of a world share. So it isn't lost with a process that is killed or replaced.
//
// A server outside, such as a database's, can go by it, too: it is asked by who has the turn, so
// the page is right at that moment. PAGERSIM_SHOWN_CLOCK names the file then, which begins with two
// numbers of 8 bytes, as the machine has them: microseconds since the world began, and when that
// was by its wall clock, in microseconds since 1970.
#ifndef PAGERFWD_SIM_WORLD_CLOCK_PAGE_H
#define PAGERFWD_SIM_WORLD_CLOCK_PAGE_H

#include <fcntl.h>
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
        shown_ = page != MAP_FAILED ? static_cast<Shown*>(page) : nullptr;
    }
    ~ClockPage() {
        if (shown_ != nullptr) {
            munmap(shown_, kSize);
        }
    }
    ClockPage(ClockPage&& other) noexcept : shown_(other.shown_) { other.shown_ = nullptr; }
    ClockPage& operator=(ClockPage&& other) noexcept {
        Shown* const mine = shown_;
        shown_ = other.shown_;
        other.shown_ = mine;
        return *this;
    }

    // A file for one; -1: none. name: where others find it; null: nowhere.
    static int MakeFile(const char* name) {
        const int file = name != nullptr ? open(name, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)
                                         : memfd_create("pagersim-clock", MFD_CLOEXEC);
        if (file >= 0 && ftruncate(file, kSize) != 0) {
            close(file);
            return -1;
        }
        return file;
    }

    Micros Get() const { return Micros(shown_ != nullptr ? shown_->now.load() : 0); }
    void Set(Micros now) {
        if (shown_ != nullptr) {
            shown_->now.store(now.count(), std::memory_order_relaxed);
        }
    }
    void SetStart(Micros wall) {
        if (shown_ != nullptr) {
            shown_->start.store(wall.count());
        }
    }

 private:
    static constexpr std::size_t kSize = 4096;
    static_assert(ATOMIC_LLONG_LOCK_FREE != 0);  // where it is aligned, as it is at a page's begin

    struct Shown {
        std::atomic<int64_t> now;
        std::atomic<int64_t> start;
    };
    static_assert(sizeof(Shown) == 16);

    Shown* shown_ = nullptr;
};

}  // namespace pagersim

#endif
