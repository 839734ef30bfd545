// Tested by tests/unit/host/fence_test.cpp, with the library by tests/proof/hosts_test.cpp.
#include "host/platform/fence.h"

#include <utility>

namespace host {
namespace {

// Files are opened and written to the very end of the process.
Fence& TheFence() {
    static auto& fence = *new Fence;
    return fence;
}

void Do(const std::function<void()>& what) {
    if (what) {
        what();
    }
}

}  // namespace

void SetFence(Fence fence) {
    TheFence() = std::move(fence);
}

void PassFence() {
    Do(TheFence().each_time);
}

void PassFenceToOpen() {
    PassFence();
    Do(TheFence().before_opening);
    PassFence();  // it may have waited
}

}  // namespace host
