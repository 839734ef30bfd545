// Tested by tests/unit/host/patient_select_test.cpp, with the library by
// tests/e2e/waiting_test.cpp.
#include "host/platform/patient_select.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

namespace host {
namespace {

constexpr int kNone = -1;
constexpr int kLooksBehindAByte = 2;

thread_local int looks_at_once = 0;

// The only descriptor of a set, or kNone.
int OnlyOneIn(const fd_set& set, int limit) {
    int only = kNone;
    for (int fd = 0; fd < limit; ++fd) {
        if (FD_ISSET(fd, &set)) {
            if (only != kNone) {
                return kNone;
            }
            only = fd;
        }
    }
    return only;
}

// What a call looks at without waiting, if it is nothing but one descriptor's input.
int LookedAt(int limit, const fd_set* read, const fd_set* write, const fd_set* except,
             const timeval* timeout) {
    const bool waits = timeout == nullptr || timeout->tv_sec != 0 || timeout->tv_usec != 0;
    const bool only_reads = read != nullptr && write == nullptr && except == nullptr;
    return !waits && only_reads && limit <= FD_SETSIZE ? OnlyOneIn(*read, limit) : kNone;
}

// A terminal that was hung up no longer answers, but with an error that only terminals have.
bool IsTerminal(int fd) {
    return isatty(fd) == 1 || errno == EIO;
}

bool HasBytes(int fd) {
    int count = 0;
    return ioctl(fd, FIONREAD, &count) == 0 && count > 0;
}

// Waits for what `read` holds, or with null for nothing but time.
int LookFor(SystemSelect system, int limit, fd_set* read) {
    timeval patience{0, kPatienceMs * 1000};
    return system(limit, read, nullptr, nullptr, &patience);
}

// A second look at a line that had nothing: 1 when it has by now.
int LookAgain(SystemSelect system, int fd, int limit, fd_set* read) {
    FD_SET(fd, read);
    if (LookFor(system, limit, read) > 0) {
        looks_at_once = kLooksBehindAByte;
        return 1;
    }
    FD_CLR(fd, read);
    return 0;
}

// What a look at a terminal is answered that found this much.
int AnswerFor(SystemSelect system, int fd, int found, int limit, fd_set* read) {
    if (found > 0 && HasBytes(fd)) {
        looks_at_once = kLooksBehindAByte;
        return found;
    }
    if (looks_at_once > 0) {
        --looks_at_once;
        return found;
    }
    if (found > 0) {
        LookFor(system, 0, nullptr);
        return found;
    }
    return LookAgain(system, fd, limit, read);
}

}  // namespace

int PatientSelect(SystemSelect system, int limit, fd_set* read, fd_set* write, fd_set* except,
                  timeval* timeout) {
    const int fd = LookedAt(limit, read, write, except, timeout);
    const int found = system(limit, read, write, except, timeout);
    if (fd == kNone || found < 0) {
        return found;
    }
    const int error = errno;
    const int answer = IsTerminal(fd) ? AnswerFor(system, fd, found, limit, read) : found;
    errno = error;
    return answer;
}

}  // namespace host
