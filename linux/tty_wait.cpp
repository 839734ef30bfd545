// The line driver: its two waits, both on select. Tested by tests/unit/linux/tty_wait_test.cpp.
#include <sys/select.h>

#include <algorithm>
#include <cerrno>

#include "linux/tty.h"

namespace {

timeval ToTimeval(int32_t ms) {
    const int32_t wait = std::max(ms, 0);
    timeval time{};
    time.tv_sec = wait / 1000;
    time.tv_usec = wait % 1000 * 1000;
    return time;
}

}  // namespace

void msleep(int32_t ms) {
    if (ms <= 0) {
        return;
    }
    // Linux leaves the time left in `left`, so that signals don't make the pause longer.
    timeval left = ToTimeval(ms);
    while (select(0, nullptr, nullptr, nullptr, &left) < 0 && errno == EINTR) {
    }
}

int32_t data_ready(int32_t fd, int32_t* waitMs) {
    if (fd < 0 || fd >= FD_SETSIZE) {
        return -1;
    }
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    timeval left = ToTimeval(*waitMs);
    const int ready = select(fd + 1, &readable, nullptr, nullptr, &left);
    if (ready > 0) {
        *waitMs = static_cast<int32_t>(left.tv_sec * 1000 + left.tv_usec / 1000);
    }
    return ready;
}
