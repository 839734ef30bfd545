// Calls in which a thread may wait for something outside the program. One that needn't wait takes
// no time. Tested by tests/unit/sim/outside_test.cpp.
#include "sim/preload/outside.h"
#include "sim/preload/outside_sockets.h"

#include <cerrno>

namespace pagersim {
namespace {

constexpr int kSignals = 64;

// Whether all the program's handlers let such a call go on behind them.
bool HandlersLetCallsGoOn() {
    for (int signal = 1; signal <= kSignals; ++signal) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_DFL &&
            action.sa_handler != SIG_IGN && (action.sa_flags & SA_RESTART) == 0) {
            return false;
        }
    }
    return true;
}

bool SignalIsPending(const sigset_t* signals) {
    sigset_t pending;
    sigset_t both;
    return sigpending(&pending) == 0 && sigandset(&both, &pending, signals) == 0 &&
           sigisemptyset(&both) == 0;
}

}  // namespace

bool AwaitProcesses(Wait& wait) {
    Waking waking = Waking::kSignal;
    while (waking == Waking::kSignal) {
        const Locked locked;
        waking = TheWorld().Threads().WaitFor(*Me(), wait);
        if (waking == Waking::kSignal && !HandlersLetCallsGoOn()) {
            break;
        }
    }
    if (waking == Waking::kSignal) {
        errno = EINTR;
    }
    return waking != Waking::kSignal;
}

bool AwaitDescriptor(int fd, short events) {
    pollfd look{fd, events, 0};
    while (WaitForInput(&look, 1, kNever, nullptr) < 0) {
        if (errno != EINTR || !HandlersLetCallsGoOn()) {
            return false;
        }
    }
    return true;
}

bool MustWait(int fd, short events) {
    if ((fcntl(fd, F_GETFL) & O_NONBLOCK) != 0) {
        return false;
    }
    pollfd look{fd, events, 0};
    return Real().poll(&look, 1, 0) == 0;
}

namespace {

// A call that receives.
template <typename Call>
auto Receive(int fd, int flags, Call call) -> decltype(call()) {
    return (flags & MSG_DONTWAIT) != 0 ? call() : CallOn(fd, POLLIN, call);
}

}  // namespace

PAGERSIM_INTERPOSED int connect(int fd, const sockaddr* address, socklen_t size) {
    if (IsServed() && OutsideSockets::IsNamed(address, size)) {
        OutsideSockets::Note(fd);
    }
    return Real().connect(fd, address, size);
}

PAGERSIM_INTERPOSED int accept(int fd, sockaddr* peer, socklen_t* size) {
    return CallOn(fd, POLLIN, [&] { return Real().accept(fd, peer, size); });
}

PAGERSIM_INTERPOSED int accept4(int fd, sockaddr* peer, socklen_t* size, int flags) {
    return CallOn(fd, POLLIN, [&] { return Real().accept4(fd, peer, size, flags); });
}

PAGERSIM_INTERPOSED ssize_t recv(int fd, void* buffer, size_t size, int flags) {
    return Receive(fd, flags, [&] { return Real().recv(fd, buffer, size, flags); });
}

PAGERSIM_INTERPOSED ssize_t recvfrom(int fd, void* buffer, size_t size, int flags, sockaddr* peer,
                                     socklen_t* peer_size) {
    return Receive(fd, flags,
                   [&] { return Real().recvfrom(fd, buffer, size, flags, peer, peer_size); });
}

PAGERSIM_INTERPOSED ssize_t recvmsg(int fd, msghdr* message, int flags) {
    return Receive(fd, flags, [&] { return Real().recvmsg(fd, message, flags); });
}

PAGERSIM_INTERPOSED int sigwait(const sigset_t* signals, int* signal) {
    const auto ready = [=] { return SignalIsPending(signals); };
    return CallWhen(ready, [&] { return Real().sigwait(signals, signal); });
}

PAGERSIM_INTERPOSED int sigwaitinfo(const sigset_t* signals, siginfo_t* info) {
    const auto ready = [=] { return SignalIsPending(signals); };
    return CallWhen(ready, [&] { return Real().sigwaitinfo(signals, info); });
}

// Nothing but a signal ends these two, as it ends a wait for no descriptor.
PAGERSIM_INTERPOSED int sigsuspend(const sigset_t* signals) {
    return IsServed() ? WaitForInput(nullptr, 0, kNever, signals) : Real().sigsuspend(signals);
}

PAGERSIM_INTERPOSED int pause() {
    return IsServed() ? WaitForInput(nullptr, 0, kNever, nullptr) : Real().pause();
}

}  // namespace pagersim
