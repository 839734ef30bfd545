// A wake-up made of an event counter: above zero, it is raised.
// Tested by tests/unit/engine/wake_signal_test.cpp.
#include "engine/wake_signal.h"

#include <poll.h>
#include <sys/eventfd.h>
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

WakeSignal::WakeSignal() : m_event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeSignal::~WakeSignal() {
    if (IsOpen()) {
        close(m_event);
    }
}

void WakeSignal::Raise() {
    eventfd_write(m_event, 1);
}

void WakeSignal::Lower() {
    eventfd_t raised = 0;
    eventfd_read(m_event, &raised);
}

bool WakeSignal::Wait(int timeoutMs) const {
    const time_t start = time(nullptr);
    pollfd readable{m_event, POLLIN, 0};
    int ready = poll(&readable, 1, timeoutMs);
    while (ready < 0 && errno == EINTR) {
        ready = poll(&readable, 1, MillisecondsLeft(timeoutMs, start));
    }
    return ready > 0;
}
