// The one lock of the simulation.
#include "sim/world/locked.h"

#include <cerrno>

#include "sim/world/futex.h"
#include "sim/world/program_thread.h"
#include "sim/world/sanitizer.h"

namespace pagersim {
namespace {

Lock the_lock;
thread_local int inside = 0;  // how many Locked guards

void Take() {
    the_lock.lock();
    if (Me() != nullptr) {  // Else the sanitizer may not know the thread yet, or no more.
        HideFromThreadSanitizer();
    }
}

void Free() {
    if (Me() != nullptr) {
        ShowToThreadSanitizer();
    }
    the_lock.unlock();
}

}  // namespace

Locked::Locked() : errno_(errno) {
    if (inside++ == 0) {
        Take();
    }
}

Locked::~Locked() {
    if (--inside == 0) {
        Free();
    }
    errno = errno_;
}

Unlocked::Unlocked() {
    Free();
    inside = 0;
}

Unlocked::~Unlocked() {
    inside = 1;
    Take();
}

bool IsInside() {
    return inside > 0;
}

void LockForFork() {
    if (inside == 0) {
        the_lock.lock();
    }
}

void UnlockAfterFork() {
    if (inside == 0) {
        the_lock.unlock();
    }
}

}  // namespace pagersim
