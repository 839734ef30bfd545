// The settings of lines. Tested by tests/unit/sim/line_test.cpp.
#include <cerrno>
#include <cstdarg>

#include "sim/preload/interpose.h"

namespace pagersim {
namespace {

// Runs `action` on the line behind the descriptor; 0, or -1 and EIO when it is gone.
template <typename Action>
int OnLine(int fd, Action action) {
    bool there = false;
    {
        const Locked locked;
        Port* const line = LineBehind(fd);
        there = line != nullptr;
        if (there) {
            action(*line);
        }
    }
    if (there) {
        return 0;
    }
    errno = EIO;
    return -1;
}

}  // namespace

PAGERSIM_INTERPOSED int tcgetattr(int fd, termios* settings) noexcept {
    if (Descriptors::ComOf(fd) == 0) {
        return Real().tcgetattr(fd, settings);
    }
    return OnLine(fd, [&](Port& line) { *settings = line.Settings(); });
}

PAGERSIM_INTERPOSED int tcsetattr(int fd, int when, const termios* settings) noexcept {
    if (Descriptors::ComOf(fd) == 0) {
        return Real().tcsetattr(fd, when, settings);
    }
    return OnLine(fd, [&](Port& line) {
        if (when == TCSAFLUSH) {
            line.DropInput();
        }
        line.Set(*settings);
    });
}

PAGERSIM_INTERPOSED int tcflush(int fd, int queues) noexcept {
    if (Descriptors::ComOf(fd) == 0) {
        return Real().tcflush(fd, queues);
    }
    return OnLine(fd, [&](Port& line) {
        if (queues != TCOFLUSH) {
            line.DropInput();
        }
    });
}

// What is written is heard at once.
PAGERSIM_INTERPOSED int tcdrain(int fd) {
    if (Descriptors::ComOf(fd) == 0) {
        return Real().tcdrain(fd);
    }
    return OnLine(fd, [](Port&) {});
}

// The pty behind a line answers everything else, and refuses what a pty has not: modem lines.
PAGERSIM_INTERPOSED int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (Descriptors::ComOf(fd) == 0 || request != FIONREAD) {
        return Real().ioctl(fd, request, argument);
    }
    return OnLine(
        fd, [&](Port& line) { *static_cast<int*>(argument) = static_cast<int>(line.Readable()); });
}

}  // namespace pagersim
