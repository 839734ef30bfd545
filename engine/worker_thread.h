// The one thread of the library: started, paused, asked to stop and reaped.
#ifndef PAGERFWD_ENGINE_WORKER_THREAD_H
#define PAGERFWD_ENGINE_WORKER_THREAD_H

#include <pthread.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include "engine/wake_signal.h"

// Order      Prepare, then one thread after the other, then Release. The body calls AnnounceEnd as
//            the last thing it does.
// Threads    Prepare, Release, Start, Stop and LetGo are called by the owner's threads, one at a
//            time; the others by the thread itself. StopRequested may be called by all.
// Errors     As said at each.
class WorkerThread {
 public:
    using Body = void* (*)(void*);

    // Makes all that a thread needs but the thread. Throws std::bad_alloc when the system has no
    // memory or no descriptors for it. Requires: no thread.
    void Prepare();

    // Gives it back. Requires: no thread.
    void Release();

    // Never waits: a thread before it must be on its way out, and is left to that. The body gets a
    // null argument. False: the system has no thread to give, and nothing runs.
    bool Start(Body body);

    // Asks the thread to stop and waits for its end, so long at most. True: there is no thread any
    // more. False: it goes on; Stop may be called again.
    bool Stop(int timeoutMs);

    // Leaves a thread that is on its way out to end by itself.
    void LetGo();

    bool StopRequested() const;

    // Until the time is over or a stop is asked for.
    void Pause(int timeoutMs);

    void AnnounceEnd();

 private:
    // What a thread and its owner share.
    struct Signals {
        bool AreOpen() const { return stop.IsOpen() && ended.IsOpen(); }

        WakeSignal stop;
        WakeSignal ended;
        std::atomic<bool> stopRequested{false};
    };

    bool HasThread();
    std::optional<pthread_t> TakeThread();  // there is none afterwards

    std::unique_ptr<Signals> m_signals;  // constant from Prepare to Release
    std::mutex m_lock;
    std::optional<pthread_t> m_thread;  // guarded by m_lock
};

#endif
