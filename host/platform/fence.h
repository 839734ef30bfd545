// What this process does before it touches its line: it proves that it still may, and says that it
// is about to. For processes that serve one line of a site of several hosts; others pass.
//
// Threads    Set while one thread runs; passed by any, in a handler of a signal too.
#ifndef PAGERFWD_HOST_PLATFORM_FENCE_H
#define PAGERFWD_HOST_PLATFORM_FENCE_H

#include <functional>

namespace host {

struct Fence {
    std::function<void()> each_time;       // before each opening and each write; ends the process
    std::function<void()> before_opening;  // of the device; may wait
};
void SetFence(Fence fence);

void PassFence();
void PassFenceToOpen();

}  // namespace host

#endif
