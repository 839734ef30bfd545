// What the tests of the line driver share: lines that close themselves, a terminal that is no
// serial port, and traces that are caught.
#ifndef PAGERFWD_TESTS_UNIT_LINUX_TTY_FIXTURE_H
#define PAGERFWD_TESTS_UNIT_LINUX_TTY_FIXTURE_H

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "linux/tty.h"

inline constexpr char kDevice[] = "/dev/ttyS0";

struct CloseLine {
    void operator()(TtyLine* line) const { tty_close(line); }
};
using Line = std::unique_ptr<TtyLine, CloseLine>;

inline Line OpenLine(const std::string& device) {
    return Line(tty_open(device.c_str(), nullptr, nullptr));
}

// A pseudo-terminal: a real terminal device under a name of its own.
class Pty {
 public:
    Pty() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
        char name[64];
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
            ptsname_r(master_, name, sizeof name) != 0) {
            throw std::runtime_error("no pseudo-terminal");
        }
        path_ = name;
    }
    ~Pty() { HangUp(); }
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    const std::string& Path() const { return path_; }

    // As a modem that is unplugged: what has the terminal open reads nothing more.
    void HangUp() {
        if (master_ >= 0) {
            close(master_);
            master_ = -1;
        }
    }

 private:
    int master_;
    std::string path_;
};

// While it lives, the driver's traces come here.
class CaughtTraces {
 public:
    explicit CaughtTraces(int32_t level = 2) {
        Text().clear();
        verbose = level;
        verbout = Catch;
    }
    ~CaughtTraces() {
        verbose = 1;
        verbout = verbose_out;
    }
    CaughtTraces(const CaughtTraces&) = delete;
    CaughtTraces& operator=(const CaughtTraces&) = delete;

    static std::string& Text() {
        static std::string text;
        return text;
    }

 private:
    static int Catch(const char* format, ...) {
        char piece[1024];
        va_list args;
        va_start(args, format);
        const int length = vsnprintf(piece, sizeof piece, format, args);
        va_end(args);
        Text() += piece;
        return length;
    }
};

#endif
