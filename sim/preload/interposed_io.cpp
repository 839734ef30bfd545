// Reading and writing of lines, copying and closing of their descriptors. Tested by
// tests/unit/sim/line_test.cpp.
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <string_view>

#include "sim/preload/outside.h"
#include "sim/preload/outside_sockets.h"

namespace pagersim {
namespace {

// Requires: a line's descriptor.
void ForgetDescriptor(int fd) {
    const Locked locked;
    const LineDescriptor descriptor = Descriptors::Get(fd);
    Descriptors::Forget(fd);
    if (Port* const line = TheWorld().PortOn(descriptor.com)) {
        line->Close(descriptor.connection);
    }
}

void Duplicated(int from, int to) {
    if (to < 0 || to >= kDescriptorLimit) {
        return;
    }
    if (Descriptors::ComOf(to) != 0 && from != to) {
        ForgetDescriptor(to);
    }
    if (Descriptors::ComOf(from) == 0 || from == to) {
        return;
    }
    const Locked locked;
    const LineDescriptor descriptor = Descriptors::Get(from);
    Descriptors::Note(to, descriptor);
    if (Port* const line = TheWorld().PortOn(descriptor.com)) {
        line->Reopen(descriptor.connection);
    }
}

// When a read in non-canonical mode may return, by its two parameters. See termios(3).
struct ReadRule {
    size_t enough;    // so many bytes end it at once
    Micros patience;  // after that long without a byte it ends too
    bool from_start;  // patience counts from the call, not from the first byte
};

ReadRule RuleFor(const termios& settings, size_t size) {
    const size_t least = settings.c_cc[VMIN];
    const Micros tenths = Milliseconds(100) * settings.c_cc[VTIME];
    if (least == 0) {
        return {1, tenths, true};
    }
    return {std::min(least, size), tenths > Micros::zero() ? tenths : kNever, false};
}

// When the read has waited long enough; kNever: not by time.
Micros DeadlineOf(const ReadRule& rule, const Port& line, Micros start) {
    if (rule.patience == kNever || (!rule.from_start && line.Readable() == 0)) {
        return kNever;
    }
    return (rule.from_start ? start : std::max(start, line.LatestInput())) + rule.patience;
}

bool IsNonBlocking(int fd) {
    return (fcntl(fd, F_GETFL) & O_NONBLOCK) != 0;
}

// The bytes that are there, for whoever can't wait or needn't.
ssize_t TakeNow(Port& line, char* buffer, size_t size, bool served) {
    const size_t count = line.Take(buffer, size);
    if (!served) {
        return static_cast<ssize_t>(count);
    }
    if (count > 0) {
        NoteActivity();
    } else {
        NoteQuietLook(line.Bit());
    }
    return static_cast<ssize_t>(count);
}

// The number of bytes, or a negative error code. Requires: locked.
ssize_t ReadLine(int fd, char* buffer, size_t size, bool served) {
    World& world = TheWorld();
    const Micros start = world.Now();
    for (;;) {
        world.Threads().RunDueEvents();
        Port* const line = LineBehind(fd);
        if (line == nullptr) {
            // A program that polls a vanished device must not make time stand still.
            if (served) {
                NoteQuietLook(Descriptors::BitOf(fd));
            }
            return -EIO;
        }
        const ReadRule rule = RuleFor(line->Settings(), size);
        const Micros deadline = DeadlineOf(rule, *line, start);
        if (!served || line->Readable() >= rule.enough || world.Now() >= deadline) {
            return TakeNow(*line, buffer, size, served);
        }
        if (IsNonBlocking(fd)) {
            const ssize_t count = TakeNow(*line, buffer, size, served);
            return count > 0 ? count : -EAGAIN;
        }
        Wait wait{WaitKind::kInput};
        wait.deadline = deadline;
        wait.lines = line->Bit();
        if (world.Threads().WaitFor(*Me(), wait) == Waking::kSignal) {
            return -EINTR;
        }
    }
}

// The number of bytes, or a negative error code. Requires: locked.
ssize_t WriteLine(int fd, std::string_view bytes, bool served) {
    if (served) {
        NoteActivity();
    }
    TheWorld().Threads().RunDueEvents();
    Port* const line = LineBehind(fd);
    if (line == nullptr) {
        return -EIO;
    }
    line->Write(bytes);
    return static_cast<ssize_t>(bytes.size());
}

// The system's convention from ours.
ssize_t Answer(ssize_t result) {
    if (result >= 0) {
        return result;
    }
    errno = static_cast<int>(-result);
    return -1;
}

ssize_t ReadReal(int fd, void* buffer, size_t size) {
    return CallOn(fd, POLLIN, [&] { return Real().read(fd, buffer, size); });
}

// Writing to it may have to wait for a reader in the same world, who has to get on meanwhile.
bool MayFillUp(int fd) {
    struct stat status {};
    return TheWorld().IsShared() && IsServed() && fstat(fd, &status) == 0 &&
           (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)) &&
           (fcntl(fd, F_GETFL) & O_NONBLOCK) == 0;
}

ssize_t WriteReal(int fd, const char* bytes, size_t size) {
    if (!MayFillUp(fd)) {
        return Real().write(fd, bytes, size);
    }
    size_t written = 0;
    while (written < size) {
        const size_t part = std::min<size_t>(size - written, PIPE_BUF);
        const ssize_t count =
            CallOn(fd, POLLOUT, [&] { return Real().write(fd, bytes + written, part); });
        if (count < 0) {
            return written > 0 ? static_cast<ssize_t>(written) : -1;
        }
        written += static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(written);
}

bool IsLockCommand(int command) {
    return command == F_SETLK || command == F_SETLKW || command == F_SETLK64 ||
           command == F_SETLKW64 || command == F_OFD_SETLK || command == F_OFD_SETLKW;
}

// The link to a shared world isn't the program's: for it there is no such descriptor.
bool IsOurs(int fd) {
    return TheWorld().IsShared() && TheWorld().Shared().Owns(fd);
}

// The program is about to have a descriptor there: what is ours gives way, what it waits for goes.
void MakeRoom(int from, int wanted) {
    if (!TheWorld().IsShared() || from == wanted) {
        return;
    }
    const Locked locked;
    TheWorld().Shared().Watched().Forget(wanted);
    if (IsOurs(wanted)) {
        TheWorld().Shared().MoveAway(wanted);
    }
}

// Requires: not a line's.
void BeforeClosing(int fd) {
    OutsideSockets::Forget(fd);
    TheWorld().Threads().NoteDescriptorUse();
    if (TheWorld().IsShared()) {
        const Locked locked;
        TheWorld().Shared().Watched().Forget(fd);
    }
}

}  // namespace

PAGERSIM_INTERPOSED int close(int fd) {
    if (IsOurs(fd)) {
        errno = EBADF;
        return -1;
    }
    if (Descriptors::ComOf(fd) != 0) {
        ForgetDescriptor(fd);
    } else {
        BeforeClosing(fd);
    }
    return Real().close(fd);
}

PAGERSIM_INTERPOSED int close_range(unsigned first, unsigned last, int flags) noexcept {
    constexpr int kCloseOnExec = CLOSE_RANGE_CLOEXEC;
    if ((flags & kCloseOnExec) != 0) {
        const int result = Real().close_range(first, last, flags);
        if (TheWorld().IsShared()) {
            TheWorld().Shared().StayInherited();
        }
        return result;
    }
    // For a thread with descriptors of its own: an empty range unshares them and closes none.
    if (flags != 0 && Real().close_range(~0U, ~0U, flags) != 0) {
        return -1;
    }
    const unsigned end = std::min<unsigned>(last, kDescriptorLimit - 1);
    for (unsigned fd = first; fd <= end; ++fd) {
        close(static_cast<int>(fd));
    }
    return last > end ? Real().close_range(std::max(first, end + 1), last, 0) : 0;
}

PAGERSIM_INTERPOSED void closefrom(int first) noexcept {
    close_range(static_cast<unsigned>(std::max(first, 0)), ~0U, 0);
}

PAGERSIM_INTERPOSED int dup(int fd) noexcept {
    const int copy = Real().dup(fd);
    Duplicated(fd, copy);
    return copy;
}

PAGERSIM_INTERPOSED int dup2(int fd, int wanted) noexcept {
    MakeRoom(fd, wanted);
    const int copy = Real().dup2(fd, wanted);
    Duplicated(fd, copy);
    return copy;
}

PAGERSIM_INTERPOSED int dup3(int fd, int wanted, int flags) noexcept {
    MakeRoom(fd, wanted);
    const int copy = Real().dup3(fd, wanted, flags);
    Duplicated(fd, copy);
    return copy;
}

PAGERSIM_INTERPOSED int fcntl(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (IsLockCommand(command)) {
        return LockByFcntl(Real().fcntl, fd, command, argument);
    }
    const int result = Real().fcntl(fd, command, argument);
    if (command == F_DUPFD || command == F_DUPFD_CLOEXEC) {
        Duplicated(fd, result);
    }
    return result;
}

PAGERSIM_INTERPOSED int fcntl64(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (IsLockCommand(command)) {
        return LockByFcntl(Real().fcntl64, fd, command, argument);
    }
    const int result = Real().fcntl64(fd, command, argument);
    if (command == F_DUPFD || command == F_DUPFD_CLOEXEC) {
        Duplicated(fd, result);
    }
    return result;
}

PAGERSIM_INTERPOSED ssize_t read(int fd, void* buffer, size_t size) {
    if (Descriptors::ComOf(fd) == 0) {
        return ReadReal(fd, buffer, size);
    }
    const bool served = IsServed();
    ssize_t result = 0;
    {
        const Locked locked;
        result = ReadLine(fd, static_cast<char*>(buffer), size, served);
    }
    return Answer(result);
}

PAGERSIM_INTERPOSED ssize_t __read_chk(int fd, void* buffer, size_t size, size_t room) {
    if (size > room) {
        abort();
    }
    return read(fd, buffer, size);
}

PAGERSIM_INTERPOSED ssize_t write(int fd, const void* bytes, size_t size) {
    if (Descriptors::ComOf(fd) == 0) {
        const ssize_t written = WriteReal(fd, static_cast<const char*>(bytes), size);
        TheWorld().Threads().NoteDescriptorUse();
        return written;
    }
    const bool served = IsServed();
    ssize_t result = 0;
    {
        const Locked locked;
        result = WriteLine(fd, {static_cast<const char*>(bytes), size}, served);
    }
    return Answer(result);
}

}  // namespace pagersim
