// Calls of the system in which a thread may wait for what other processes do.
#ifndef PAGERFWD_SIM_PRELOAD_OUTSIDE_H
#define PAGERFWD_SIM_PRELOAD_OUTSIDE_H

#include "sim/preload/interpose.h"

namespace pagersim {

// Waits in a shared world until `wait` is ready, which it wasn't. False: EINTR.
bool AwaitProcesses(Wait& wait);

// Waits in a shared world until the descriptor has `events`, which it hadn't. False: EINTR.
bool AwaitDescriptor(int fd, short events);

// Whether a call on the descriptor, which isn't a line, would have to wait for `events`.
bool MustWait(int fd, short events);

// Makes a call that waits for others until `ready()`. In a shared world it waits there first; one
// that a process has to itself has no others in it: for its clock the thread waits, and is outside.
// `by_files`: what it waits for may come with anything that others do to files.
template <typename Ready, typename Call>
auto CallWhen(Ready ready, Call call, bool by_files = false) -> decltype(call()) {
    if (!IsServed() || ready()) {
        return call();
    }
    if (!TheWorld().IsShared()) {
        const Outside outside;
        return call();
    }
    Wait wait{WaitKind::kProcess};
    wait.subject = &ready;
    wait.by_files = by_files;
    wait.ready = [](void* subject) { return (*static_cast<Ready*>(subject))(); };
    return AwaitProcesses(wait) ? call() : -1;
}

// The same for a call on a descriptor.
template <typename Call>
auto CallOn(int fd, short events, Call call) -> decltype(call()) {
    if (!IsServed() || !MustWait(fd, events)) {
        return call();
    }
    if (!TheWorld().IsShared()) {
        const Outside outside;
        return call();
    }
    return AwaitDescriptor(fd, events) ? call() : -1;
}

// fcntl's three ways to lock a part of a file, and to free it. `real`: fcntl or fcntl64, whose
// locks have different layouts.
using FileControl = int (*)(int fd, int command, ...);
int LockByFcntl(FileControl real, int fd, int command, void* lock);

}  // namespace pagersim

#endif
