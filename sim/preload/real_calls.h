// The C library's own functions, behind the ones that this library puts in front of them.
#ifndef PAGERFWD_SIM_PRELOAD_REAL_CALLS_H
#define PAGERFWD_SIM_PRELOAD_REAL_CALLS_H

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace pagersim {

// Every name in front of which we stand. The conditions are versioned apart: the oldest version of
// them, which a plain look-up may find, has another layout.
// clang-format off
#define PAGERSIM_REAL_CALLS(X) \
    X(open) X(openat) X(creat) X(fopen) X(fopen64) X(freopen) X(freopen64) X(access) X(faccessat) X(close) X(dup) \
    X(dup2) X(dup3) X(fcntl) X(fcntl64) X(ioctl) X(read) X(write) X(poll) X(ppoll) X(select) \
    X(pselect) X(epoll_wait) X(tcgetattr) X(tcsetattr) X(tcflush) X(tcdrain) X(sleep) \
    X(gettimeofday) X(time) X(clock_gettime) X(pthread_create) X(pthread_join) X(pthread_detach) \
    X(pthread_mutex_lock) X(pthread_mutex_trylock) X(pthread_mutex_unlock) \
    X(pthread_rwlock_rdlock) X(pthread_rwlock_tryrdlock) X(pthread_rwlock_wrlock) \
    X(pthread_rwlock_trywrlock) X(pthread_rwlock_unlock) X(pthread_cond_clockwait) X(accept) \
    X(accept4) X(connect) X(recv) X(recvfrom) X(recvmsg) X(waitpid) X(wait4) X(waitid) X(sigwait) \
    X(sigwaitinfo) X(sigsuspend) X(pause) X(close_range) X(fork) X(posix_spawn) X(posix_spawnp) \
    X(popen) X(system) X(kill) X(killpg) X(sigqueue) X(_Fork) X(nanosleep) X(usleep) X(clock_nanosleep) X(flock) \
    X(lockf)
// clang-format on
#define PAGERSIM_REAL_CONDITION_CALLS(X) \
    X(pthread_cond_wait) X(pthread_cond_timedwait) X(pthread_cond_signal) X(pthread_cond_broadcast)

struct RealCalls {
#define PAGERSIM_MEMBER(name) decltype(&::name) name;  // NOLINT(bugprone-macro-parentheses)
    PAGERSIM_REAL_CALLS(PAGERSIM_MEMBER)
    PAGERSIM_REAL_CONDITION_CALLS(PAGERSIM_MEMBER)
#undef PAGERSIM_MEMBER
};

// May be called at any time, also before this library's own start-up code has run.
const RealCalls& Real();

}  // namespace pagersim

#endif
