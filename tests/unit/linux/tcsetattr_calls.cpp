// tcsetattr of a device that can refuse its settings.
#include "tests/unit/linux/tcsetattr_calls.h"

#include <termios.h>

#include <cerrno>

extern "C" {
int __real_tcsetattr(int fd, int action, const termios* settings);
int __wrap_tcsetattr(int fd, int action, const termios* settings);

int __wrap_tcsetattr(int fd, int action, const termios* settings) {
    TcsetattrCalls::applied_how = action;
    if (TcsetattrCalls::refusals > 0) {
        --TcsetattrCalls::refusals;
        errno = EINVAL;
        return -1;
    }
    return __real_tcsetattr(fd, action, settings);
}
}
