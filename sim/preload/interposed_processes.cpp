// Processes that begin, end and signal each other, as far as a shared world must know of it: a
// child is in it before its parent goes on. Tested by tests/unit/sim/shared_world_test.cpp.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "sim/preload/outside.h"

namespace pagersim {
namespace {

// Around a call that makes a process which is a program of its own. Locked: there is one connection
// for a child to come, so one thread at a time may make one.
class ChildToCome {
 public:
    ChildToCome() {
        if (TheWorld().IsShared()) {
            locked_.emplace();
            TheWorld().PrepareChild();
        }
    }
    ~ChildToCome() {
        if (locked_) {
            TheWorld().Shared().ForgetChild();
        }
    }
    ChildToCome(const ChildToCome&) = delete;
    ChildToCome& operator=(const ChildToCome&) = delete;

    void HasPid(pid_t pid) const {
        if (locked_) {
            TheWorld().Tell({Question::kChild, 0, 0, static_cast<uint32_t>(pid), 0, 0});
        }
    }

 private:
    std::optional<Locked> locked_;
};

int Sent(int result) {
    if (result == 0 && TheWorld().IsShared()) {
        const Locked locked;
        TheWorld().Ask({Question::kSignal, 0, 0, 0, 0, 0});
    }
    return result;
}

// Makes a call that waits for children.
template <typename Call>
auto CallForChild(idtype_t kind, id_t which, int options, Call call) -> decltype(call()) {
    if ((options & WNOHANG) != 0) {
        return call();
    }
    const int states = WEXITED | (options & (WSTOPPED | WCONTINUED));
    const auto ready = [=] {
        siginfo_t info{};
        return Real().waitid(kind, which, &info, states | WNOHANG | WNOWAIT) != 0 ||
               info.si_pid != 0;
    };
    return CallWhen(ready, call);
}

template <typename Call>
auto CallForChild(pid_t child, int options, Call call) -> decltype(call()) {
    const idtype_t kind = child > 0 ? P_PID : child == -1 ? P_ALL : P_PGID;
    const pid_t which = child > 0 ? child : child < -1 ? -child : getpgrp();
    return CallForChild(kind, static_cast<id_t>(which), options, call);
}

// As the C library's: it ends when the child does, whatever signals come.
int StatusOf(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return status;
}

// What the calling process doesn't want to hear while a command of its runs.
class HushedSignals {
 public:
    HushedSignals() {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGINT, &ignore, &interrupt_);
        sigaction(SIGQUIT, &ignore, &quit_);
        sigset_t child;
        sigemptyset(&child);
        sigaddset(&child, SIGCHLD);
        pthread_sigmask(SIG_BLOCK, &child, &mask_);
    }
    ~HushedSignals() {
        sigaction(SIGINT, &interrupt_, nullptr);
        sigaction(SIGQUIT, &quit_, nullptr);
        pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    }
    HushedSignals(const HushedSignals&) = delete;
    HushedSignals& operator=(const HushedSignals&) = delete;

    // With the signals as they were before.
    int Spawn(pid_t* child, const char* command) const {
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        posix_spawnattr_setsigmask(&attributes, &mask_);
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGINT);
        sigaddset(&defaults, SIGQUIT);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        const char* const arguments[] = {"sh", "-c", command, nullptr};
        const int error = posix_spawn(child, "/bin/sh", nullptr, &attributes,
                                      const_cast<char**>(arguments), environ);
        posix_spawnattr_destroy(&attributes);
        return error;
    }

 private:
    struct sigaction interrupt_ {
    }, quit_{};
    sigset_t mask_{};
};

}  // namespace

// A child that has its parent's memory and blocks it can't be told from its parent.
PAGERSIM_INTERPOSED pid_t vfork() noexcept {
    return TheWorld().IsShared() ? fork() : Real().fork();
}

// One that runs no handlers of fork wouldn't come into the world by ours.
PAGERSIM_INTERPOSED pid_t _Fork() noexcept {
    return TheWorld().IsShared() ? fork() : Real()._Fork();
}

PAGERSIM_INTERPOSED int posix_spawn(pid_t* child, const char* path,
                                    const posix_spawn_file_actions_t* actions,
                                    const posix_spawnattr_t* attributes, char* const* arguments,
                                    char* const* environment) {
    const ChildToCome to_come;
    pid_t pid = 0;
    const int error = Real().posix_spawn(&pid, path, actions, attributes, arguments, environment);
    if (error == 0) {
        to_come.HasPid(pid);
        if (child != nullptr) {
            *child = pid;
        }
    }
    return error;
}

PAGERSIM_INTERPOSED int posix_spawnp(pid_t* child, const char* file,
                                     const posix_spawn_file_actions_t* actions,
                                     const posix_spawnattr_t* attributes, char* const* arguments,
                                     char* const* environment) {
    const ChildToCome to_come;
    pid_t pid = 0;
    const int error = Real().posix_spawnp(&pid, file, actions, attributes, arguments, environment);
    if (error == 0) {
        to_come.HasPid(pid);
        if (child != nullptr) {
            *child = pid;
        }
    }
    return error;
}

PAGERSIM_INTERPOSED FILE* popen(const char* command, const char* mode) {
    FILE* pipe = nullptr;
    int error = 0;
    {
        const ChildToCome to_come;
        pipe = Real().popen(command, mode);
        error = errno;
    }
    errno = error;
    return pipe;
}

PAGERSIM_INTERPOSED int system(const char* command) {
    if (!TheWorld().IsShared() || command == nullptr) {
        return Real().system(command);
    }
    constexpr int kNotRun = 127 << 8;
    const HushedSignals hushed;
    pid_t child = 0;
    return hushed.Spawn(&child, command) == 0 ? StatusOf(child) : kNotRun;
}

PAGERSIM_INTERPOSED int kill(pid_t process, int signal) noexcept {
    return Sent(Real().kill(process, signal));
}

PAGERSIM_INTERPOSED int sigqueue(pid_t process, int signal, const sigval value) noexcept {
    return Sent(Real().sigqueue(process, signal, value));
}

PAGERSIM_INTERPOSED int killpg(pid_t group, int signal) noexcept {
    return Sent(Real().killpg(group, signal));
}

PAGERSIM_INTERPOSED pid_t waitpid(pid_t child, int* status, int options) {
    return CallForChild(child, options, [&] { return Real().waitpid(child, status, options); });
}

PAGERSIM_INTERPOSED pid_t wait(int* status) {
    return waitpid(-1, status, 0);
}

PAGERSIM_INTERPOSED pid_t wait4(pid_t child, int* status, int options, rusage* usage) noexcept {
    return CallForChild(child, options,
                        [&] { return Real().wait4(child, status, options, usage); });
}

PAGERSIM_INTERPOSED pid_t wait3(int* status, int options, rusage* usage) noexcept {
    return wait4(-1, status, options, usage);
}

PAGERSIM_INTERPOSED int waitid(idtype_t kind, id_t which, siginfo_t* info, int options) {
    return CallForChild(kind, which, options,
                        [&] { return Real().waitid(kind, which, info, options); });
}

}  // namespace pagersim
