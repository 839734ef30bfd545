// poll and select, on lines and real descriptors alike. Tested by tests/unit/sim/wait_test.cpp.
#include <sys/select.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <vector>

#include "sim/preload/interpose.h"
#include "sim/preload/outside_sockets.h"

namespace pagersim {
namespace {

// What a look at all descriptors of a wait saw.
struct Seen {
    int ready = 0;       // how many; -1: see errno
    LineSet lines = 0;   // the lines among them
    bool input = false;  // one has something to read
};

short ReadyOnLine(int fd, short events) {
    const Port* const line = LineBehind(fd);
    if (line == nullptr) {  // As the kernel answers for a terminal that is gone.
        return static_cast<short>(POLLHUP | POLLERR | (events & (POLLIN | POLLOUT)));
    }
    return static_cast<short>((line->Readable() > 0 ? events & (POLLIN | POLLRDNORM) : 0) |
                              (events & (POLLOUT | POLLWRNORM)));
}

// Looks once, without waiting. `real` receives the descriptors that aren't lines, at the same
// places; it stays empty if there are none.
Seen LookAt(pollfd* descriptors, nfds_t count, const sigset_t* signals, std::vector<pollfd>& real) {
    Seen seen;
    for (nfds_t i = 0; i < count; ++i) {
        pollfd& each = descriptors[i];
        each.revents = 0;
        if (const LineSet line = Descriptors::BitOf(each.fd)) {
            seen.lines |= line;
            each.revents = ReadyOnLine(each.fd, each.events);
            seen.ready += each.revents != 0 ? 1 : 0;
            // A line that is gone can be read from for ever, and has nothing.
            seen.input = seen.input || (each.revents & (POLLIN | POLLHUP)) == POLLIN;
        } else if (each.fd >= 0) {
            if (real.empty()) {
                real.assign(count, pollfd{-1, 0, 0});
            }
            real[i] = each;
        }
    }
    if (real.empty() && signals == nullptr) {
        return seen;
    }
    const timespec none{};
    const int ready = Real().ppoll(real.data(), real.size(), &none, signals);
    if (ready < 0) {
        return {-1, seen.lines, false};
    }
    for (nfds_t i = 0; i < real.size(); ++i) {
        if (real[i].fd >= 0) {
            descriptors[i].revents = real[i].revents;
        }
    }
    seen.ready += ready;
    return seen;
}

bool AnyIsOutside(const pollfd* descriptors, nfds_t count) {
    return std::any_of(descriptors, descriptors + count,
                       [](const pollfd& each) { return OutsideSockets::Has(each.fd); });
}

// Tells the others of a shared world, where there are any.
class AskingOutside {
 public:
    AskingOutside() {
        const Locked locked;
        if (TheWorld().IsShared()) {
            TheWorld().Shared().BeginAskingOutside();
        }
    }
    ~AskingOutside() {
        const Locked locked;
        if (TheWorld().IsShared()) {
            TheWorld().Shared().EndAskingOutside();
        }
    }
    AskingOutside(const AskingOutside&) = delete;
    AskingOutside& operator=(const AskingOutside&) = delete;
};

// The thread works, for all that the world knows: time stands still meanwhile, and the limit is one
// of real time.
int AskOutside(pollfd* descriptors, nfds_t count, Micros limit, const sigset_t* signals) {
    const AskingOutside asking;
    const timespec time{static_cast<time_t>(limit.count() / 1'000'000),
                        static_cast<long>(limit.count() % 1'000'000 * 1000)};
    return Real().ppoll(descriptors, count, limit == kNever ? nullptr : &time, signals);
}

Micros After(Micros limit) {
    return limit == kNever ? kNever : TheWorld().Now() + limit;
}

}  // namespace

int WaitForInput(pollfd* descriptors, nfds_t count, Micros limit, const sigset_t* signals) {
    if (AnyIsOutside(descriptors, count)) {
        return AskOutside(descriptors, count, limit, signals);
    }
    int result = 0;
    int error = 0;
    {
        const Locked locked;
        Scheduler& threads = TheWorld().Threads();
        Wait wait{WaitKind::kInput};
        wait.deadline = After(limit);
        wait.signals = signals;
        std::vector<pollfd> real;
        for (;;) {
            threads.RunDueEvents();
            const Seen seen = LookAt(descriptors, count, signals, real);
            if (seen.ready < 0) {
                error = errno;
            }
            result = seen.ready;
            if (seen.input) {
                NoteActivity();
            }
            if (seen.ready != 0) {
                break;
            }
            if (limit == Micros::zero() && seen.lines != 0) {
                NoteQuietLook(seen.lines);
            }
            if (TheWorld().Now() >= wait.deadline || !World::IsActive()) {
                break;
            }
            wait.lines = seen.lines;
            wait.descriptors = real.data();
            wait.count = real.size();
            if (threads.WaitFor(*Me(), wait) == Waking::kSignal) {
                result = -1;
                error = EINTR;
                break;
            }
        }
    }
    if (result < 0) {
        errno = error;
    }
    return result;
}

namespace {

Micros FromMilliseconds(int milliseconds) {
    return milliseconds < 0 ? kNever : Micros(Milliseconds(milliseconds));
}

Micros FromTimespec(const timespec* time) {
    return time == nullptr ? kNever : ToMicros(time->tv_sec, time->tv_nsec);
}

Micros FromTimeval(const timeval* time) {
    return time == nullptr ? kNever : ToMicros(time->tv_sec, time->tv_usec * 1000);
}

// select's three sets as a list for poll.
class SelectSets {
 public:
    SelectSets(int limit, fd_set* read, fd_set* write, fd_set* except)
        : read_(read), write_(write), except_(except) {
        limit = std::min(limit, static_cast<int>(FD_SETSIZE));
        for (int fd = 0; fd < limit; ++fd) {
            const int events = (Has(read, fd) ? POLLIN : 0) | (Has(write, fd) ? POLLOUT : 0) |
                               (Has(except, fd) ? POLLPRI : 0);
            if (events != 0) {
                list_[count_++] = {fd, static_cast<short>(events), 0};
            }
        }
    }

    pollfd* List() { return list_.data(); }
    nfds_t Count() const { return count_; }

    bool HasBadDescriptor() const {
        return std::any_of(list_.begin(), list_.begin() + count_,
                           [](const pollfd& each) { return (each.revents & POLLNVAL) != 0; });
    }

    // Leaves in the sets what is ready; how many bits that are.
    int Answer() {
        int bits = 0;
        for (nfds_t i = 0; i < count_; ++i) {
            const pollfd& each = list_[i];
            bits += Keep(read_, each, POLLIN, POLLIN | POLLRDNORM | POLLHUP | POLLERR);
            bits += Keep(write_, each, POLLOUT, POLLOUT | POLLWRNORM | POLLERR);
            bits += Keep(except_, each, POLLPRI, POLLPRI);
        }
        return bits;
    }

 private:
    static bool Has(const fd_set* set, int fd) { return set != nullptr && FD_ISSET(fd, set); }

    static int Keep(fd_set* set, const pollfd& each, int asked, int answers) {
        if ((each.events & asked) == 0) {
            return 0;
        }
        if ((each.revents & answers) != 0) {
            return 1;
        }
        FD_CLR(each.fd, set);
        return 0;
    }

    fd_set* read_;
    fd_set* write_;
    fd_set* except_;
    std::array<pollfd, FD_SETSIZE> list_;  // the first count_ are set
    nfds_t count_ = 0;
};

int SelectInWorld(int limit, fd_set* read, fd_set* write, fd_set* except, Micros wait,
                  const sigset_t* signals) {
    SelectSets sets(limit, read, write, except);
    const int ready = WaitForInput(sets.List(), sets.Count(), wait, signals);
    if (ready < 0) {
        return -1;
    }
    if (sets.HasBadDescriptor()) {
        errno = EBADF;
        return -1;
    }
    return sets.Answer();
}

int Poll(pollfd* descriptors, nfds_t count, int timeout) {
    if (!IsServed()) {
        return Real().poll(descriptors, count, timeout);
    }
    return WaitForInput(descriptors, count, FromMilliseconds(timeout), nullptr);
}

}  // namespace

PAGERSIM_INTERPOSED int poll(pollfd* descriptors, nfds_t count, int timeout) {
    return Poll(descriptors, count, timeout);
}

PAGERSIM_INTERPOSED int __poll_chk(pollfd* descriptors, nfds_t count, int timeout, size_t size) {
    if (size / sizeof *descriptors < count) {
        abort();
    }
    return Poll(descriptors, count, timeout);
}

PAGERSIM_INTERPOSED int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout,
                              const sigset_t* signals) {
    if (!IsServed()) {
        return Real().ppoll(descriptors, count, timeout, signals);
    }
    return WaitForInput(descriptors, count, FromTimespec(timeout), signals);
}

// A set of descriptors is itself one that can be waited for. It must not hold lines.
PAGERSIM_INTERPOSED int epoll_wait(int set, epoll_event* events, int room, int timeout) {
    if (IsServed() && timeout != 0) {
        pollfd look{set, POLLIN, 0};
        const int ready = WaitForInput(&look, 1, FromMilliseconds(timeout), nullptr);
        if (ready <= 0) {
            return ready;
        }
    }
    return Real().epoll_wait(set, events, room, IsServed() ? 0 : timeout);
}

PAGERSIM_INTERPOSED int select(int limit, fd_set* read, fd_set* write, fd_set* except,
                               timeval* timeout) {
    if (!IsServed()) {
        return Real().select(limit, read, write, except, timeout);
    }
    if (timeout != nullptr && (timeout->tv_sec < 0 || timeout->tv_usec < 0)) {
        errno = EINVAL;
        return -1;
    }
    const Micros wait = FromTimeval(timeout);
    const Micros start = TheWorld().Now();
    const int ready = SelectInWorld(limit, read, write, except, wait, nullptr);
    if (timeout != nullptr && wait != kNever) {  // As on Linux: what is left of it.
        const Micros left = std::max(Micros::zero(), wait - (TheWorld().Now() - start));
        timeout->tv_sec = static_cast<time_t>(left.count() / 1'000'000);
        timeout->tv_usec = static_cast<suseconds_t>(left.count() % 1'000'000);
    }
    return ready;
}

PAGERSIM_INTERPOSED int pselect(int limit, fd_set* read, fd_set* write, fd_set* except,
                                const timespec* timeout, const sigset_t* signals) {
    if (!IsServed()) {
        return Real().pselect(limit, read, write, except, timeout, signals);
    }
    return SelectInWorld(limit, read, write, except, FromTimespec(timeout), signals);
}

}  // namespace pagersim
