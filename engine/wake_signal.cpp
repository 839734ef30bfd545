// A wake-up made of a pipe that nobody reads: a byte in it is the raised signal.
// Tested by tests/unit/engine/wake_signal_test.cpp.
#include "engine/wake_signal.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace {

// What is left of a wait that began at `start`. A wall clock that was set back costs no more than a
// wait in full.
int MillisecondsLeft(int timeoutMs, time_t start) {
    const time_t seconds = std::clamp<time_t>(time(nullptr) - start, 0, timeoutMs / 1000);
    return timeoutMs - static_cast<int>(seconds) * 1000;
}

}  // namespace

WakeSignal::WakeSignal() {
    if (pipe(m_ends) != 0) {
        m_ends[0] = m_ends[1] = -1;
        return;
    }
    for (const int end : m_ends) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
}

WakeSignal::~WakeSignal() {
    if (!IsOpen()) {
        return;
    }
    close(m_ends[0]);
    close(m_ends[1]);
}

void WakeSignal::Raise() {
    const char byte = 0;
    while (write(m_ends[1], &byte, 1) < 0 && errno == EINTR) {
    }
}

bool WakeSignal::Wait(int timeoutMs) const {
    const time_t start = time(nullptr);
    pollfd readable{m_ends[0], POLLIN, 0};
    int ready = poll(&readable, 1, timeoutMs);
    while (ready < 0 && errno == EINTR) {
        ready = poll(&readable, 1, MillisecondsLeft(timeoutMs, start));
    }
    return ready > 0;
}
