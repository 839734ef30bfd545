// The line driver: opening, closing, opening again, hanging up. Tested by
// tests/unit/linux/tty_open_test.cpp.
#include "linux/tty.h"

#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>

#include <cstdio>
#include <new>

#include "linux/tty_line.h"

void CheckMagic(const TtyLine* line, int sourceLine) {
    if (line != nullptr && line->magic != kTtyMagic) {
        fprintf(stderr, "Invalid magic: expect %ld got %ld in %s:%d\n",
                static_cast<long>(kTtyMagic), static_cast<long>(line->magic), "./tty.c",
                sourceLine);
    }
}

bool TtyLine::Open() {
    fd = open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd >= FD_SETSIZE) {  // select could not wait for it
        Close();
    }
    return fd >= 0;
}

void TtyLine::Close() {
    if (fd >= 0) {
        close(fd);
        fd = -1;
    }
}

TtyLine* tty_open(const char* device, const char* lockPrefix, const char* lockOptions) {
    if (device == nullptr) {
        return nullptr;
    }
    try {
        auto line = std::make_unique<TtyLine>(device);
        if (!line->lock.Take(device, lockPrefix, lockOptions) || !line->Open() ||
            tcgetattr(line->fd, &line->original) != 0) {
            return nullptr;
        }
        line->settings = line->original;
        return line.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int32_t tty_close(TtyLine* line) {
    CHECK_MAGIC(line);
    const std::unique_ptr<TtyLine> ended(line);
    if (line != nullptr && line->fd >= 0) {
        tcsetattr(line->fd, TCSANOW, &line->original);
    }
    return 0;
}

bool tty_reopen(TtyLine* line, int32_t pauseMs) {
    CHECK_MAGIC(line);
    if (line == nullptr) {
        return false;
    }
    line->Close();
    msleep(pauseMs);
    line->receiveCount = 0;
    if (!line->Open()) {
        return false;
    }
    tcsetattr(line->fd, TCSANOW, &line->settings);
    return true;
}

bool tty_hangup(TtyLine* line, int32_t pauseMs) {
    CHECK_MAGIC(line);
    if (line == nullptr) {
        return false;
    }
    if (IsTracing()) {
        verbout("[Hangup] ");
    }
    termios dropped = line->settings;
    cfsetispeed(&dropped, B0);
    cfsetospeed(&dropped, B0);
    // 0 = applied.
    if (tcsetattr(line->fd, TCSANOW, &dropped) == 0) {
        msleep(pauseMs);
        tcsetattr(line->fd, TCSANOW, &line->settings);
    }
    return tty_reopen(line, pauseMs);
}

int32_t tty_fd(TtyLine* line) {
    CHECK_MAGIC(line);
    return line == nullptr ? -1 : line->fd;
}
