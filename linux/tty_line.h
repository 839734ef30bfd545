// Inside the line driver: the line object and what its source files share. Not for callers.
#ifndef PAGERFWD_LINUX_TTY_LINE_H
#define PAGERFWD_LINUX_TTY_LINE_H

#include <termios.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "linux/tty.h"
#include "linux/tty_lock.h"

constexpr uint32_t kTtyMagic = 0x74747900;  // "tty" and a zero, read as a number

using ReceiveBuffer = std::array<char, 128>;

struct TtyLine {
    explicit TtyLine(const char* path) : device(path) {}
    ~TtyLine() { Close(); }
    TtyLine(const TtyLine&) = delete;
    TtyLine& operator=(const TtyLine&) = delete;

    bool Open();
    void Close();

    uint32_t magic = kTtyMagic;  // first, where a wrong pointer shows
    TtyLock lock;
    std::string device;
    termios settings{};  // as tty_setup made them, put back by tty_reopen and tty_hangup
    termios original{};  // as read at the open, put back at the close
    int32_t fd = -1;     // -1 when closed
    std::unique_ptr<ReceiveBuffer> received;  // null until first needed
    int32_t receiveCount = 0;
};

// One line on standard error when the line doesn't carry the magic; a null line carries none.
#define CHECK_MAGIC(line) CheckMagic(line, __LINE__)
void CheckMagic(const TtyLine* line, int sourceLine);

inline bool IsTracing() {
    return verbose >= 2 && verbout != nullptr;
}

// How often in a row a device that answers EIO is opened again without a byte in between. A device
// that opens but never works must not keep its user here for ever.
constexpr int32_t kMostReopens = 10;

#endif
