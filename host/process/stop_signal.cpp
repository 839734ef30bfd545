// Signals through a pipe. Tested by tests/unit/host/stop_signal_test.cpp.
#include "host/process/stop_signal.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace host {
namespace {

int ends[2] = {-1, -1};  // read and write; the handler can't be given them
volatile std::sig_atomic_t hung_up = 0;

// It ends a wait by coming.
void HandleHangUp(int) {
    hung_up = 1;
}

void Handle(int) {
    const int error = errno;
    const char byte = 0;
    // A pipe that is full says it already.
    static_cast<void>(!write(ends[1], &byte, 1));
    errno = error;
}

}  // namespace

StopSignal::StopSignal() {
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "a pipe for signals");
    }
    struct sigaction action {};
    action.sa_handler = Handle;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGTERM, &action, &term_);
    sigaction(SIGINT, &action, &interrupt_);
    action.sa_handler = HandleHangUp;
    sigaction(SIGHUP, &action, &hang_up_);
}

StopSignal::~StopSignal() {
    sigaction(SIGTERM, &term_, nullptr);
    sigaction(SIGINT, &interrupt_, nullptr);
    sigaction(SIGHUP, &hang_up_, nullptr);
    close(ends[0]);
    close(ends[1]);
}

bool StopSignal::TakeHangUp() {
    const bool asked = hung_up != 0;
    hung_up = 0;
    return asked;
}

int StopSignal::Descriptor() {
    return ends[0];
}

bool StopSignal::WaitFor(std::chrono::milliseconds longest) {
    pollfd asked{ends[0], POLLIN, 0};
    // The byte stays in the pipe: every later look sees it too, and so does this one where the
    // signal has ended it.
    int found = 0;
    do {
        found = poll(&asked, 1, static_cast<int>(longest.count()));
    } while (found < 0 && errno == EINTR);
    return found > 0;
}

}  // namespace host
