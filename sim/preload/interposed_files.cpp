// Locks on files, which processes of a shared world wait for. Tested by
// tests/unit/sim/shared_world_test.cpp.
#include <sys/file.h>

#include <cerrno>

#include "sim/preload/outside.h"

namespace pagersim {
namespace {

// Tries by `attempt`, which doesn't wait, until the file isn't locked by another.
template <typename Attempt>
int LockFile(Attempt attempt) {
    int result = 0;
    int error = 0;
    const auto ready = [&] {
        result = attempt();
        error = errno;
        return result == 0 || (error != EAGAIN && error != EACCES);
    };
    const auto answer = [&] {
        errno = error;
        return result;
    };
    return CallWhen(ready, answer, true);
}

bool WaitsInWorld() {
    return TheWorld().IsShared() && IsServed();
}

}  // namespace

PAGERSIM_INTERPOSED int flock(int fd, int operation) noexcept {
    TheWorld().Threads().NoteDescriptorUse();
    if (!WaitsInWorld() || (operation & (LOCK_NB | LOCK_UN)) != 0) {
        return Real().flock(fd, operation);
    }
    return LockFile([=] { return Real().flock(fd, operation | LOCK_NB); });
}

PAGERSIM_INTERPOSED int lockf(int fd, int operation, off_t size) {
    if (!WaitsInWorld() || operation != F_LOCK) {
        return Real().lockf(fd, operation, size);
    }
    return LockFile([=] { return Real().lockf(fd, F_TLOCK, size); });
}

int LockByFcntl(FileControl real, int fd, int command, void* lock) {
    TheWorld().Threads().NoteDescriptorUse();  // A lock may have become free.
    const int attempt = command == F_SETLKW       ? F_SETLK
                        : command == F_SETLKW64   ? F_SETLK64
                        : command == F_OFD_SETLKW ? F_OFD_SETLK
                                                  : 0;
    if (attempt == 0 || !WaitsInWorld()) {
        return real(fd, command, lock);
    }
    return LockFile([=] { return real(fd, attempt, lock); });
}

}  // namespace pagersim
