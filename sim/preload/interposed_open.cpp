// Opening: a name beginning with /dev/ttyS is a simulated line's or nobody's, and so is a link to
// one. Tested by tests/unit/sim/line_test.cpp.
#include <array>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "sim/preload/interpose.h"
#include "sim/world/number.h"

namespace pagersim {
namespace {

constexpr std::string_view kDevices = "/dev/ttyS";

// 1 for "/dev/ttyS0". 0: no port of ours.
int ComOfPath(std::string_view path) {
    const std::optional<int> number = NumberIn(path.substr(kDevices.size()));
    return number && *number < kLines ? *number + 1 : 0;
}

// The port that a name stands for, 0 when it is nobody's; none: it is no serial device's.
std::optional<int> SerialDevice(int folder, const char* path) {
    if (path == nullptr) {
        return std::nullopt;
    }
    const auto com_of = [](std::string_view name) -> std::optional<int> {
        return name.substr(0, kDevices.size()) == kDevices ? std::optional(ComOfPath(name))
                                                           : std::nullopt;
    };
    if (const auto com = com_of(path)) {
        return com;
    }
    const int before = errno;
    std::array<char, PATH_MAX> target{};
    const ssize_t size = readlinkat(folder, path, target.data(), target.size());
    errno = before;
    return size > 0 ? com_of({target.data(), static_cast<size_t>(size)}) : std::nullopt;
}

// Answers as open does.
int OpenLine(int com, int flags) {
    int fd = -1;
    int error = ENOENT;
    {
        const Locked locked;
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
    const auto com = SerialDevice(AT_FDCWD, path);
    return com ? OpenLine(*com, flags) : Real().open(path, flags, mode);
}

int OpenPathAt(int folder, const char* path, int flags, mode_t mode) {
    const auto com = SerialDevice(folder, path);
    return com ? OpenLine(*com, flags) : Real().openat(folder, path, flags, mode);
}

// Streams have buffers of their own below us: a line can't be opened as one.
bool IsRefusedStream(const char* path) {
    const bool refused = SerialDevice(AT_FDCWD, path).has_value();
    errno = refused ? ENOENT : errno;
    return refused;
}

// Whether the device can be opened now. Answers as access does.
int LookForLine(int com) {
    const Locked locked;
    const Port* const line = TheWorld().PortOn(com);
    const bool there = line != nullptr && line->IsThere();
    errno = there ? errno : ENOENT;
    return there ? 0 : -1;
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

PAGERSIM_INTERPOSED int access(const char* path, int mode) noexcept {
    const auto com = SerialDevice(AT_FDCWD, path);
    return com ? LookForLine(*com) : Real().access(path, mode);
}

PAGERSIM_INTERPOSED int faccessat(int folder, const char* path, int mode, int flags) noexcept {
    const auto com = SerialDevice(folder, path);
    return com ? LookForLine(*com) : Real().faccessat(folder, path, mode, flags);
}

PAGERSIM_INTERPOSED FILE* fopen(const char* path, const char* mode) {
    return IsRefusedStream(path) ? nullptr : Real().fopen(path, mode);
}

PAGERSIM_INTERPOSED FILE* fopen64(const char* path, const char* mode) {
    return IsRefusedStream(path) ? nullptr : Real().fopen64(path, mode);
}

PAGERSIM_INTERPOSED FILE* freopen(const char* path, const char* mode, FILE* stream) {
    return IsRefusedStream(path) ? nullptr : Real().freopen(path, mode, stream);
}

PAGERSIM_INTERPOSED FILE* freopen64(const char* path, const char* mode, FILE* stream) {
    return IsRefusedStream(path) ? nullptr : Real().freopen64(path, mode, stream);
}

}  // namespace pagersim
