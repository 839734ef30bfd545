// What all interposed calls share.
#ifndef PAGERFWD_SIM_PRELOAD_INTERPOSE_H
#define PAGERFWD_SIM_PRELOAD_INTERPOSE_H

#include "sim/preload/real_calls.h"
#include "sim/world/descriptors.h"
#include "sim/world/world.h"

// A function by which this library stands in front of the C library's of that name.
#define PAGERSIM_INTERPOSED extern "C" __attribute__((visibility("default")))

namespace pagersim {

// The line behind a descriptor; null when it is gone or has another connection by now: EIO.
// Requires: locked, Descriptors::ComOf(fd) is not 0.
inline Port* LineBehind(int fd) {
    const LineDescriptor descriptor = Descriptors::Get(fd);
    Port* const line = TheWorld().PortOn(descriptor.com);
    return line != nullptr && line->IsAlive(descriptor.connection) ? line : nullptr;
}

// The calling thread waits for input on these descriptors, lines and real ones, at most for
// `limit`. Answers as poll does. `signals`: as for ppoll.
int WaitForInput(pollfd* descriptors, nfds_t count, Micros limit, const sigset_t* signals);

// The calling thread has looked at these lines without waiting, and found nothing; or it has found
// something, or written. Require: locked, IsServed() before.
void NoteQuietLook(LineSet lines);
void NoteActivity();

// The calling thread looks at the time. On a quiet line that takes a step.
Micros LookAtWallClock();

}  // namespace pagersim

#endif
