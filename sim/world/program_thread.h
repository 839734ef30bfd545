// A thread of the program, and what it waits for.
#ifndef PAGERFWD_SIM_WORLD_PROGRAM_THREAD_H
#define PAGERFWD_SIM_WORLD_PROGRAM_THREAD_H

#include <poll.h>
#include <pthread.h>
#include <signal.h>

#include <cstddef>
#include <cstdint>

#include "sim/world/futex.h"
#include "sim/world/line_set.h"
#include "sim/world/time.h"

namespace pagersim {

enum class WaitKind {
    kSleep,      // for time only
    kInput,      // for lines, descriptors or time
    kLook,       // one step, on a quiet line
    kLock,       // for another thread's unlock of a mutex or a read-write lock
    kCondition,  // for another thread's signal
    kJoin,       // for another thread's end
    kProcess,    // for what another process of the world does: its end, a lock on a file
    kOutside,    // in a call of the system that the simulation doesn't know
};

// Lives on the waiting thread's stack.
struct Wait {
    WaitKind kind;
    Micros deadline = kNever;
    LineSet lines = 0;                    // bit n: input on COM n+1 ends it
    const pollfd* descriptors = nullptr;  // real ones whose readiness ends it; negative: none
    nfds_t count = 0;
    const void* object = nullptr;            // the mutex, the condition or the thread
    const sigset_t* signals = nullptr;       // what is blocked while it waits; null: as before
    bool (*ready)(void* subject) = nullptr;  // asked when another process has done something:
    bool by_files = false;                   // anything; else it has ended or sent a signal
    void* subject = nullptr;
    uint64_t turn = 0;  // among waits of one kind the lowest comes first; given by the scheduler,
                        // and kept by one who waits again for the same
};

enum class Waking {
    kEvent,     // what it waited for may have come: look again
    kDeadline,  // its time has come
    kSignal,    // a signal was handled
    kStop,      // the simulation ended
};

struct ProgramThread {
    // Constant after creation.
    void* (*start)(void*) = nullptr;
    void* argument = nullptr;
    pthread_t handle{};

    // Guarded by the world's lock. `wait` is null while the thread runs.
    const Wait* wait = nullptr;
    Waking waking = Waking::kEvent;
    bool ended = false;
    bool detached = false;
    bool joined = false;

    // How it is held while it waits: at the gate, or, to have an eye on real descriptors, in poll.
    enum class Held { kNowhere, kAtGate, kInPoll } held = Held::kNowhere;
    Gate gate;
    int alarm = -1;  // an eventfd that ends the poll

    // The thread's own.
    LineSet quiet_lines = 0;  // where its latest look found nothing
    int quiet_looks = 0;      // how many such looks since it last looked at the time
    int time_looks = 0;       // how many looks at the time since it last did anything else
};

// The calling thread's record; null when it isn't registered (yet, or any more).
ProgramThread* Me();
void SetMe(ProgramThread* thread);

}  // namespace pagersim

#endif
