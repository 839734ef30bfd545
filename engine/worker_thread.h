// The one thread of the library: started, paused, asked to stop and joined.
#ifndef PAGERFWD_ENGINE_WORKER_THREAD_H
#define PAGERFWD_ENGINE_WORKER_THREAD_H

#include <pthread.h>

#include <atomic>
#include <memory>

#include "engine/wake_signal.h"

// Order      One thread at a time; the body calls AnnounceEnd as the last thing it does.
// Threads    Start and Stop are called by the owner's threads, one at a time; the other three by
//            the thread itself. StopRequested may be called by both.
// Errors     Start answers false, and nothing runs, when the system is out of threads, descriptors
//            or memory.
class WorkerThread {
 public:
    using Body = void* (*)(void*);

    // Joins the thread before it, which must be about to end. The body gets a null argument.
    bool Start(Body body);

    // Asks the thread to stop and waits for its end, so long at most. True: there is no thread any
    // more. False: it goes on; Stop may be called again.
    bool Stop(int timeoutMs);

    bool StopRequested() const;

    // Until the time is over or a stop is asked for.
    void Pause(int timeoutMs);

    void AnnounceEnd();

 private:
    // What a thread and its owner share, from before its start until it is joined.
    struct Run {
        WakeSignal stop;
        WakeSignal ended;
        std::atomic<bool> stopRequested{false};
        pthread_t thread{};
    };

    bool Join(int timeoutMs);

    std::unique_ptr<Run> m_run;  // null: no thread
};

#endif
