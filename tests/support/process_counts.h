// What the process has at a moment, as the system counts it.
#ifndef PAGERFWD_TESTS_SUPPORT_PROCESS_COUNTS_H
#define PAGERFWD_TESTS_SUPPORT_PROCESS_COUNTS_H

#include <sched.h>

#include <filesystem>
#include <iterator>

namespace test_support {

inline int CountIn(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<int>(std::distance(begin(entries), end(entries)));
}

// With that of the look.
inline int CountDescriptors() {
    return CountIn("/proc/self/fd");
}

inline int CountThreads() {
    return CountIn("/proc/self/task");
}

// Whether there are so many threads at most, soon. One that has ended is there, with its stack,
// until the system has found the time for it, whatever the virtual clock says.
inline bool ComesDownToThreads(int most) {
    constexpr int kLooks = 1'000'000;
    for (int i = 0; i < kLooks; ++i) {
        if (CountThreads() <= most) {
            return true;
        }
        sched_yield();
    }
    return false;
}

}  // namespace test_support

#endif
