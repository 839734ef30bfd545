// Threads that begin and end, and wait for each other's end. Tested by
// tests/unit/sim/threads_test.cpp.
#include "sim/preload/interpose.h"
#include "sim/world/sanitizer.h"

namespace pagersim {
namespace {

void* RunThread(void* record) {
    auto& me = *static_cast<ProgramThread*>(record);
    EnterThread(me);
    // Also when the routine ends the thread itself.
    const struct Leaver {
        ~Leaver() { LeaveThread(); }
    } leaver;
    return me.start(me.argument);
}

bool IsDetached(const pthread_attr_t* attributes) {
    int state = PTHREAD_CREATE_JOINABLE;
    return attributes != nullptr && pthread_attr_getdetachstate(attributes, &state) == 0 &&
           state == PTHREAD_CREATE_DETACHED;
}

int CreateThread(pthread_t* handle, const pthread_attr_t* attributes, void* (*start)(void*),
                 void* argument) {
    if (IsThreadSanitizersOwn(argument)) {
        return Real().pthread_create(handle, attributes, start, argument);
    }
    // The new thread takes the lock first of all, and so begins when its record is complete.
    const Locked locked;
    ProgramThread& record = RegisterThread(start, argument);
    record.detached = IsDetached(attributes);
    const int result = Real().pthread_create(handle, attributes, RunThread, &record);
    if (result == 0) {
        record.handle = *handle;
    } else {
        TheWorld().Threads().Remove(record);
    }
    return result;
}

// Waits for its end in virtual time. Its record, from now on the caller's to remove; null when the
// simulation has nothing to say to this join.
ProgramThread* AwaitEnd(pthread_t handle, bool served) {
    const Locked locked;
    ProgramThread* const thread = TheWorld().Threads().Find(handle);
    if (thread == nullptr || thread == Me() || thread->detached) {
        return nullptr;
    }
    thread->joined = true;
    Wait wait{WaitKind::kJoin};
    wait.object = thread;
    while (served && World::IsActive() && !thread->ended) {
        TheWorld().Threads().WaitFor(*Me(), wait);
    }
    return thread;
}

}  // namespace

PAGERSIM_INTERPOSED int pthread_create(pthread_t* handle, const pthread_attr_t* attributes,
                                       void* (*start)(void*), void* argument) noexcept {
    return CreateThread(handle, attributes, start, argument);
}

// The address sanitizer asks for this version by name.
PAGERSIM_INTERPOSED int CreateThreadForSanitizer(pthread_t* handle,
                                                 const pthread_attr_t* attributes,
                                                 void* (*start)(void*), void* argument) noexcept {
    return CreateThread(handle, attributes, start, argument);
}
__asm__(".symver CreateThreadForSanitizer, pthread_create@GLIBC_2.1");

PAGERSIM_INTERPOSED int pthread_join(pthread_t handle, void** answer) {
    ProgramThread* const thread = AwaitEnd(handle, IsServed());
    const int result = Real().pthread_join(handle, answer);
    if (thread != nullptr) {
        const Locked locked;
        if (result == 0) {
            TheWorld().Threads().Remove(*thread);
        } else {
            thread->joined = false;
        }
    }
    return result;
}

PAGERSIM_INTERPOSED int pthread_detach(pthread_t handle) noexcept {
    {
        const Locked locked;
        if (ProgramThread* const thread = TheWorld().Threads().Find(handle)) {
            thread->detached = true;
            if (thread->ended) {
                TheWorld().Threads().Remove(*thread);
            }
        }
    }
    return Real().pthread_detach(handle);
}

}  // namespace pagersim
