// The line driver: sending, receiving, draining. Tested by tests/unit/linux/tty_io_test.cpp.
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <optional>

#include "linux/tty_line.h"

namespace {

constexpr int32_t kFullDevicePauseMs = 200;

bool IsOpen(const TtyLine* line) {
    return line != nullptr && line->fd >= 0;
}

// A vanished device may be back; reopens counts the tries since a byte last went through.
bool Reopen(TtyLine* line, int32_t* reopens) {
    return ++*reopens <= kMostReopens && tty_reopen(line, 0);
}

// Whether a write that failed with this error is worth another try.
bool CanGoOn(TtyLine* line, int error, int32_t* reopens) {
    switch (error) {
        case EIO:
            return Reopen(line, reopens);
        case EAGAIN:
            msleep(kFullDevicePauseMs);
            return true;
        case EINTR:
            return true;
        default:
            return false;
    }
}

int32_t SendAll(TtyLine* line, const char* bytes, int32_t count) {
    int32_t sent = 0;
    int32_t reopens = 0;
    while (sent < count) {
        const ssize_t written = write(line->fd, bytes + sent, static_cast<size_t>(count - sent));
        if (written > 0) {
            sent += static_cast<int32_t>(written);
            reopens = 0;
        } else if (written == 0 || !CanGoOn(line, errno, &reopens)) {
            break;
        }
    }
    return sent;
}

// Reads what fits behind the bytes already there.
void FillReceiveBuffer(TtyLine* line) {
    if (line->received == nullptr) {
        line->received.reset(new (std::nothrow) ReceiveBuffer);
    }
    if (line->received == nullptr) {
        return;
    }
    const auto held = static_cast<size_t>(line->receiveCount);
    const ssize_t got =
        read(line->fd, line->received->data() + held, line->received->size() - held);
    if (got > 0) {
        line->receiveCount += static_cast<int32_t>(got);
    }
}

// Moves up to size bytes out of the receive buffer, the oldest first.
int32_t TakeReceived(TtyLine* line, void* buffer, int32_t size) {
    const int32_t taken = std::min(size, line->receiveCount);
    if (taken <= 0) {
        return 0;
    }
    char* const held = line->received->data();
    memcpy(buffer, held, static_cast<size_t>(taken));
    line->receiveCount -= taken;
    memmove(held, held + taken, static_cast<size_t>(line->receiveCount));
    return taken;
}

int64_t MillisecondsNow() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return int64_t{1000} * now.tv_sec + now.tv_usec / 1000;
}

// How long a device may go on sending. A quiet line never asks. A clock that is set forward
// meanwhile ends it early, which leaves some noise.
class NoiseLimit {
 public:
    bool IsReached() {
        const int64_t now = MillisecondsNow();
        const bool setBack = m_firstByte > now;  // the clock: all begins anew
        if (!m_firstByte || setBack) {
            m_firstByte = now;
        }
        return now - *m_firstByte >= kLongestDrainMs;
    }

 private:
    std::optional<int64_t> m_firstByte;
};

// Reads a readable device empty. False when there is nothing to wait for: it has sent for too long,
// or it is readable without a byte to read, as a line that was hung up, or has vanished for good.
bool DiscardWaiting(TtyLine* line, int32_t* reopens, NoiseLimit* limit) {
    bool any = false;
    char byte = 0;
    ssize_t got = 0;
    while ((got = read(line->fd, &byte, 1)) == 1) {
        any = true;
        *reopens = 0;
        if (IsTracing()) {
            verbout("%s", mkprint(&byte, 1));
        }
        if (limit->IsReached()) {
            return false;
        }
    }
    if (got < 0 && errno == EIO) {
        return Reopen(line, reopens);
    }
    return any;
}

}  // namespace

int32_t tty_send(TtyLine* line, const void* bytes, int32_t count) {
    CHECK_MAGIC(line);
    if (!IsOpen(line) || bytes == nullptr) {
        return -1;
    }
    if (IsTracing()) {
        verbout("[Send] %s", mkprint(bytes, count));
    }
    const int32_t sent = SendAll(line, static_cast<const char*>(bytes), count);
    if (IsTracing()) {
        verbout("\n");
    }
    return sent;
}

int32_t tty_data_ready(TtyLine* line, int32_t waitMs) {
    CHECK_MAGIC(line);
    if (line == nullptr) {
        return 0;
    }
    if (data_ready(line->fd, &waitMs) > 0) {
        FillReceiveBuffer(line);
    }
    return line->receiveCount;
}

int32_t tty_receive(TtyLine* line, void* buffer, int32_t size) {
    if (!IsOpen(line) || buffer == nullptr) {
        return -1;
    }
    if (IsTracing()) {
        verbout("[Receive] ");
    }
    tty_data_ready(line, 0);
    const int32_t taken = TakeReceived(line, buffer, size);
    if (IsTracing()) {
        if (taken > 0) {
            verbout(" got %s", mkprint(buffer, taken));
        } else {
            verbout(" timeout");
        }
    }
    return taken;
}

void tty_mdrain(TtyLine* line, int32_t waitMs) {
    CHECK_MAGIC(line);
    if (line == nullptr) {
        return;
    }
    if (IsTracing()) {
        verbout("[Drain] ");
    }
    int32_t reopens = 0;
    NoiseLimit limit;
    int32_t left = waitMs;
    while (data_ready(line->fd, &left) > 0 && DiscardWaiting(line, &reopens, &limit)) {
        left = waitMs;
    }
}

void tty_drain(TtyLine* line, int32_t waitSeconds) {
    CHECK_MAGIC(line);
    const int64_t waitMs = int64_t{1000} * waitSeconds;
    tty_mdrain(line, static_cast<int32_t>(std::clamp<int64_t>(waitMs, 0, INT32_MAX)));
}
