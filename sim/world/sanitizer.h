// What the thread sanitizer has to know, where it is there.
#ifndef PAGERFWD_SIM_WORLD_SANITIZER_H
#define PAGERFWD_SIM_WORLD_SANITIZER_H

extern "C" {
[[gnu::weak]] void __tsan_ignore_thread_begin();
[[gnu::weak]] void __tsan_ignore_thread_end();
}

namespace pagersim {

// The simulation's own memory is guarded by a lock that the sanitizer can't see. It is told to look
// away rather than to take the lock for one: each interposed call would then order the program's
// threads, and hide its races.
inline void HideFromThreadSanitizer() {
    if (__tsan_ignore_thread_begin != nullptr) {
        __tsan_ignore_thread_begin();
    }
}

inline void ShowToThreadSanitizer() {
    if (__tsan_ignore_thread_end != nullptr) {
        __tsan_ignore_thread_end();
    }
}

// The thread sanitizer has a thread of its own, which is none of the program's. It starts the
// program's by a routine of its own, too, but always with an argument.
inline bool IsThreadSanitizersOwn(const void* thread_argument) {
    return __tsan_ignore_thread_begin != nullptr && thread_argument == nullptr;
}

}  // namespace pagersim

#endif
