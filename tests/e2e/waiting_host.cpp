// A process that loads the library as pagerfwd does, with pagerfwd's own select, and whose one
// serial port is any terminal. Sends a test page by it.
// Usage: waiting_host LIBRARY DATABASE TERMINAL
#include <fcntl.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string>

#include "host/library/library.h"

namespace {

const char* terminal = nullptr;

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (std::strncmp(path, "/dev/ttyS", 9) != 0) {
        return openat(AT_FDCWD, path, flags, mode);
    }
    if (std::strcmp(path, "/dev/ttyS0") != 0) {
        errno = ENOENT;
        return -1;
    }
    return openat(AT_FDCWD, terminal, flags);
}

int main(int, char** argv) {
    terminal = argv[3];
    const host::Library library(argv[1]);
    int32_t noAlarm = 0;
    FwdSpecialInfoStr info{argv[2], &noAlarm, nullptr, nullptr};
    std::string name = "any", number = "5550111", port = "COM 1", type = "4", hours;
    return library.TestPager(&info, name.data(), number.data(), port.data(), type.data(),
                             hours.data());
}
