// Tested by tests/unit/host/bell_test.cpp, with the library by
// tests/e2e/run_lines_test.cpp.
#include "host/platform/bell.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace host {
namespace {

constexpr int kPauseMs = 60000;

// Open to the very end of the process: the worker may pause as long.
int Bell() {
    static const int bell = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return bell;
}

bool IsPause(const pollfd* descriptors, nfds_t count, int timeout) {
    return count == 1 && descriptors != nullptr && descriptors->events == POLLIN &&
           timeout == kPauseMs;
}

void Silence() {
    eventfd_t rung = 0;
    eventfd_read(Bell(), &rung);
}

}  // namespace

void RingBell() {
    eventfd_write(Bell(), 1);
}

int PollUnlessRung(SystemPoll system, pollfd* descriptors, nfds_t count, int timeout) {
    if (!IsPause(descriptors, count, timeout) || Bell() < 0) {
        return system(descriptors, count, timeout);
    }
    pollfd both[] = {*descriptors, {Bell(), POLLIN, 0}};
    const int ready = system(both, 2, timeout);
    if (ready < 0) {
        return ready;
    }
    descriptors->revents = both[0].revents;
    if (both[1].revents != 0) {
        Silence();
    }
    return both[0].revents != 0 ? 1 : 0;
}

}  // namespace host
