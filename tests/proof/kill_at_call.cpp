// Kills the process that this is preloaded into before a call that changes a file or says
// something: the one of PAGERFWD_KILL_AT, counted from its first client on. Which call it is
// doesn't matter, so long as every number is tried (web_kill_test.cpp).
#undef _FILE_OFFSET_BITS
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>

namespace {

template <typename Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

std::atomic<bool> counting{false};
std::atomic<int> count{0};

void Count() {
    static const char* const at = std::getenv("PAGERFWD_KILL_AT");
    if (counting && at != nullptr && ++count == std::atoi(at)) {
        kill(getpid(), SIGKILL);
    }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int accept4(int listener, sockaddr* address, socklen_t* size,
                                                   int flags) {
    static const auto next = Next<int (*)(int, sockaddr*, socklen_t*, int)>("accept4");
    const int accepted = next(listener, address, size, flags);
    counting = counting || accepted >= 0;
    return accepted;
}

__attribute__((visibility("default"))) ssize_t pwrite64(int file, const void* bytes, size_t size,
                                                        off64_t at) {
    static const auto next = Next<ssize_t (*)(int, const void*, size_t, off64_t)>("pwrite64");
    Count();
    return next(file, bytes, size, at);
}

__attribute__((visibility("default"))) int fdatasync(int file) {
    static const auto next = Next<int (*)(int)>("fdatasync");
    Count();
    return next(file);
}

__attribute__((visibility("default"))) int fsync(int file) {
    static const auto next = Next<int (*)(int)>("fsync");
    Count();
    return next(file);
}

__attribute__((visibility("default"))) ssize_t send(int socket, const void* bytes, size_t size,
                                                    int flags) {
    static const auto next = Next<ssize_t (*)(int, const void*, size_t, int)>("send");
    Count();
    return next(socket, bytes, size, flags);
}

__attribute__((visibility("default"))) ssize_t sendmsg(int socket, const msghdr* message,
                                                       int flags) {
    static const auto next = Next<ssize_t (*)(int, const msghdr*, int)>("sendmsg");
    Count();
    return next(socket, message, flags);
}

__attribute__((visibility("default"))) ssize_t recvmsg(int socket, msghdr* message, int flags) {
    static const auto next = Next<ssize_t (*)(int, msghdr*, int)>("recvmsg");
    Count();
    return next(socket, message, flags);
}
}
