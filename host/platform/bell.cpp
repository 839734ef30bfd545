// Tested by tests/unit/host/bell_test.cpp, with the library by
// tests/e2e/run_lines_test.cpp.
#include "host/platform/bell.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <ctime>

namespace host {
namespace {

constexpr int kPauseMs = 60000;

// Open to the very end of the process: the worker may pause as long.
int Bell() {
    static const int bell = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return bell;
}

// When the pause in progress ends; 0: there is none.
std::atomic<std::time_t> pause_ends{0};

class Pause {
 public:
    Pause() { pause_ends = std::time(nullptr) + kPauseMs / 1000; }
    ~Pause() { pause_ends = 0; }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
};

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

// Whatever has become of the clock meanwhile.
std::optional<int> PauseLeft() {
    const std::time_t ends = pause_ends;
    if (ends == 0) {
        return std::nullopt;
    }
    return static_cast<int>(std::clamp<std::time_t>(ends - std::time(nullptr), 0, kPauseMs / 1000));
}

int PollUnlessRung(SystemPoll system, pollfd* descriptors, nfds_t count, int timeout) {
    if (!IsPause(descriptors, count, timeout) || Bell() < 0) {
        return system(descriptors, count, timeout);
    }
    const Pause pause;
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
