// The lock of the whole system, re-entrant for the thread that holds it.
#ifndef PAGERFWD_LINUX_CRITICALSECTION_H
#define PAGERFWD_LINUX_CRITICALSECTION_H

#include <pthread.h>

#include <atomic>
#include <cstdint>

// A mutex of the default, non-recursive kind, with recursion built on top.
//
// Order      Each Lock is paired with one Unlock by the same thread; the mutex is released by the
//            last. The order between locks stands in ARCHITECTURE.md.
// Threads    Safe from all. Lock waits without limit while another thread holds the mutex.
// Errors     None. An unbalanced Unlock is not noticed.
class CCriticalSection {
 public:
    CCriticalSection();
    ~CCriticalSection();
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    void Lock();
    void Unlock();

 private:
    void Own();

    pthread_mutex_t m_mutex;
    // Read without the mutex, which is sound because a thread looks only for itself: nobody else
    // writes its id, and whoever sees a holder's count also sees the holder's id, written before.
    std::atomic<pthread_t> m_owner{};
    std::atomic<int32_t> m_count{0};
};

#endif
