#include "bench/device.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace {

constexpr const char kDevices[] = "/dev/ttyS";
constexpr const char kStandInFor[] = "/dev/ttyS0";

std::string& Device() {
    static std::string device;
    return device;
}

}  // namespace

void bench::StandIn(const std::string& device) {
    Device() = device;
}

extern "C" int __real_open(const char* path, int flags, ...);
extern "C" int __wrap_open(const char* path, int flags, ...);

extern "C" int __wrap_open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (std::strncmp(path, kDevices, sizeof kDevices - 1) != 0) {
        return __real_open(path, flags, mode);
    }
    if (Device().empty() || std::strcmp(path, kStandInFor) != 0) {
        errno = ENOENT;
        return -1;
    }
    return __real_open(Device().c_str(), flags, mode);
}
