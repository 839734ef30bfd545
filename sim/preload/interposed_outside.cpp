// Calls in which a thread may wait for something outside the program: for its clock it waits, too.
// A call that needn't wait takes no time. Tested by tests/unit/sim/outside_test.cpp.
#include <sys/epoll.h>

#include "sim/preload/interpose.h"

namespace pagersim {

bool MayWaitOutside(int fd) {
    if (!IsServed() || (fcntl(fd, F_GETFL) & O_NONBLOCK) != 0) {
        return false;
    }
    pollfd look{fd, POLLIN, 0};
    return Real().poll(&look, 1, 0) == 0;
}

namespace {

template <typename Call>
auto RunOutside(bool outside, Call call) {
    if (!outside) {
        return call();
    }
    const Outside guard;
    return call();
}

bool MayWaitInReceive(int fd, int flags) {
    return (flags & MSG_DONTWAIT) == 0 && MayWaitOutside(fd);
}

bool ChildIsReady(pid_t child) {
    siginfo_t info{};
    const idtype_t kind = child > 0 ? P_PID : P_ALL;
    return waitid(kind, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid != 0;
}

bool SignalIsPending(const sigset_t* signals) {
    sigset_t pending;
    sigset_t both;
    return sigpending(&pending) == 0 && sigandset(&both, &pending, signals) == 0 &&
           sigisemptyset(&both) == 0;
}

}  // namespace

PAGERSIM_INTERPOSED int accept(int fd, sockaddr* peer, socklen_t* size) {
    return RunOutside(MayWaitOutside(fd), [&] { return Real().accept(fd, peer, size); });
}

PAGERSIM_INTERPOSED int accept4(int fd, sockaddr* peer, socklen_t* size, int flags) {
    return RunOutside(MayWaitOutside(fd), [&] { return Real().accept4(fd, peer, size, flags); });
}

PAGERSIM_INTERPOSED ssize_t recv(int fd, void* buffer, size_t size, int flags) {
    return RunOutside(MayWaitInReceive(fd, flags),
                      [&] { return Real().recv(fd, buffer, size, flags); });
}

PAGERSIM_INTERPOSED ssize_t recvfrom(int fd, void* buffer, size_t size, int flags, sockaddr* peer,
                                     socklen_t* peer_size) {
    return RunOutside(MayWaitInReceive(fd, flags),
                      [&] { return Real().recvfrom(fd, buffer, size, flags, peer, peer_size); });
}

PAGERSIM_INTERPOSED ssize_t recvmsg(int fd, msghdr* message, int flags) {
    return RunOutside(MayWaitInReceive(fd, flags),
                      [&] { return Real().recvmsg(fd, message, flags); });
}

PAGERSIM_INTERPOSED pid_t waitpid(pid_t child, int* status, int options) {
    const bool waits = (options & WNOHANG) == 0 && IsServed() && !ChildIsReady(child);
    return RunOutside(waits, [&] { return Real().waitpid(child, status, options); });
}

PAGERSIM_INTERPOSED int sigwait(const sigset_t* signals, int* signal) {
    return RunOutside(!SignalIsPending(signals), [&] { return Real().sigwait(signals, signal); });
}

PAGERSIM_INTERPOSED int sigwaitinfo(const sigset_t* signals, siginfo_t* info) {
    return RunOutside(!SignalIsPending(signals), [&] { return Real().sigwaitinfo(signals, info); });
}

PAGERSIM_INTERPOSED int sigsuspend(const sigset_t* signals) {
    const Outside outside;
    return Real().sigsuspend(signals);
}

PAGERSIM_INTERPOSED int pause() {
    const Outside outside;
    return Real().pause();
}

}  // namespace pagersim
