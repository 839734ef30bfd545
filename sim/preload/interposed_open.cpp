// Opening: a name beginning with /dev/ttyS is a simulated line's or nobody's. Tested by
// tests/unit/sim/line_test.cpp.
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "sim/preload/interpose.h"

namespace pagersim {
namespace {

constexpr std::string_view kDevices = "/dev/ttyS";

bool IsSerialDevice(const char* path) {
    return path != nullptr && std::strncmp(path, kDevices.data(), kDevices.size()) == 0;
}

// 1 for /dev/ttyS0. 0: no port of ours.
int ComOfPath(std::string_view path) {
    path.remove_prefix(kDevices.size());
    return path.size() == 1 && path[0] >= '0' && path[0] < '0' + kLines ? path[0] - '0' + 1 : 0;
}

// Answers as open does.
int OpenLine(const char* path, int flags) {
    int fd = -1;
    int error = ENOENT;
    {
        const Locked locked;
        const int com = ComOfPath(path);
        if (Port* const line = TheWorld().PortOn(com)) {
            uint32_t connection = 0;
            fd = line->Open(flags, connection);
            error = errno;
            if (fd >= kDescriptorLimit) {
                line->Close(connection);
                Real().close(fd);
                fd = -1;
                error = EMFILE;
            }
            if (fd >= 0) {
                Descriptors::Note(fd, {com, connection});
            }
        }
    }
    if (fd < 0) {
        errno = error;
    }
    return fd;
}

bool TakesMode(int flags) {
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

// In a function of variable arguments: declares `mode`, the last of them if the flags ask for one.
#define PAGERSIM_TAKE_MODE(flags)         \
    mode_t mode = 0;                      \
    if (TakesMode(flags)) {               \
        va_list arguments;                \
        va_start(arguments, flags);       \
        mode = va_arg(arguments, mode_t); \
        va_end(arguments);                \
    }

int OpenPath(const char* path, int flags, mode_t mode) {
    return IsSerialDevice(path) ? OpenLine(path, flags) : Real().open(path, flags, mode);
}

int OpenPathAt(int folder, const char* path, int flags, mode_t mode) {
    return IsSerialDevice(path) ? OpenLine(path, flags) : Real().openat(folder, path, flags, mode);
}

// Streams have buffers of their own below us: a line can't be opened as one.
FILE* RefuseStream() {
    errno = ENOENT;
    return nullptr;
}

}  // namespace

PAGERSIM_INTERPOSED int open(const char* path, int flags, ...) {
    PAGERSIM_TAKE_MODE(flags)
    return OpenPath(path, flags, mode);
}

PAGERSIM_INTERPOSED int open64(const char* path, int flags, ...) {
    PAGERSIM_TAKE_MODE(flags)
    return OpenPath(path, flags | O_LARGEFILE, mode);
}

PAGERSIM_INTERPOSED int __open_2(const char* path, int flags) {
    return OpenPath(path, flags, 0);
}

PAGERSIM_INTERPOSED int __open64_2(const char* path, int flags) {
    return OpenPath(path, flags | O_LARGEFILE, 0);
}

PAGERSIM_INTERPOSED int openat(int folder, const char* path, int flags, ...) {
    PAGERSIM_TAKE_MODE(flags)
    return OpenPathAt(folder, path, flags, mode);
}

PAGERSIM_INTERPOSED int openat64(int folder, const char* path, int flags, ...) {
    PAGERSIM_TAKE_MODE(flags)
    return OpenPathAt(folder, path, flags | O_LARGEFILE, mode);
}

PAGERSIM_INTERPOSED int creat(const char* path, mode_t mode) {
    return OpenPath(path, O_CREAT | O_WRONLY | O_TRUNC, mode);
}

PAGERSIM_INTERPOSED int creat64(const char* path, mode_t mode) {
    return OpenPath(path, O_CREAT | O_WRONLY | O_TRUNC | O_LARGEFILE, mode);
}

PAGERSIM_INTERPOSED int __openat_2(int folder, const char* path, int flags) {
    return OpenPathAt(folder, path, flags, 0);
}

PAGERSIM_INTERPOSED int __openat64_2(int folder, const char* path, int flags) {
    return OpenPathAt(folder, path, flags | O_LARGEFILE, 0);
}

PAGERSIM_INTERPOSED FILE* fopen(const char* path, const char* mode) {
    return IsSerialDevice(path) ? RefuseStream() : Real().fopen(path, mode);
}

PAGERSIM_INTERPOSED FILE* fopen64(const char* path, const char* mode) {
    return IsSerialDevice(path) ? RefuseStream() : Real().fopen64(path, mode);
}

PAGERSIM_INTERPOSED FILE* freopen(const char* path, const char* mode, FILE* stream) {
    return IsSerialDevice(path) ? RefuseStream() : Real().freopen(path, mode, stream);
}

PAGERSIM_INTERPOSED FILE* freopen64(const char* path, const char* mode, FILE* stream) {
    return IsSerialDevice(path) ? RefuseStream() : Real().freopen64(path, mode, stream);
}

}  // namespace pagersim
