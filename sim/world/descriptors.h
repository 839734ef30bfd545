// Which of the program's descriptors are simulated lines.
#ifndef PAGERFWD_SIM_WORLD_DESCRIPTORS_H
#define PAGERFWD_SIM_WORLD_DESCRIPTORS_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "sim/world/line_set.h"

namespace pagersim {

// A line's descriptors are below that.
constexpr int kDescriptorLimit = 4096;

// Whose a descriptor is. Port 0: not one of ours. Aligned so that every compiler sees that it is
// stored at once.
struct alignas(8) LineDescriptor {
    int32_t com;
    uint32_t connection;
};

// Threads    May be used by anybody at any time.
class Descriptors {
 public:
    static LineDescriptor Get(int fd) {
        const auto place = static_cast<size_t>(fd);  // A negative one is beyond the end, too.
        return place < lines_.size() ? lines_[place].load(std::memory_order_relaxed)
                                     : LineDescriptor{0, 0};
    }
    static int ComOf(int fd) { return Get(fd).com; }

    // Its line as a bit, as waits name lines; 0: not one of ours.
    static LineSet BitOf(int fd) { return SetOf(ComOf(fd)); }

    // Requires: 0 <= fd < kDescriptorLimit.
    static void Note(int fd, LineDescriptor line) {
        lines_[static_cast<size_t>(fd)].store(line, std::memory_order_relaxed);
    }
    static void Forget(int fd) { Note(fd, {0, 0}); }

 private:
    static inline std::array<std::atomic<LineDescriptor>, kDescriptorLimit> lines_{};
};

}  // namespace pagersim

#endif
