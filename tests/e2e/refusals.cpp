// A system that refuses, for a program that this is preloaded into; moments are seconds since 1970:
//   PAGERFWD_FULL_DISK="FROM TO"       no file grows from one moment to the other
//   PAGERFWD_REFUSED_WRITES="FROM TO"  ... and none of the store's is written to at all
//   PAGERFWD_NO_OTHER_ROOM="FROM TO"   ... unless the room of the last writes has been given
//   PAGERFWD_NO_ROOM="FROM TO"         no disk has room, but what is written there is taken
//   PAGERFWD_STALLED_LINE="FROM TO"    no terminal takes a byte
//   PAGERFWD_TAKEN_LINE="FROM TO"      no serial device can be opened, as if another had it
//   PAGERFWD_REFUSED_THREADS=N         the first N threads of the library can't be started
//   PAGERFWD_SET_CLOCK="AT BY"         the clock is set at a moment, by so many seconds
#undef _FILE_OFFSET_BITS  // or open would be open64, which the library doesn't call
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "tests/proof/file_calls.h"

namespace {

template <typename Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

std::time_t TimeBefore() {
    static const auto next = Next<std::time_t (*)(std::time_t*)>("time");
    return next(nullptr);
}

// By how much the clock is set now.
std::time_t SetBy() {
    const char* const set = std::getenv("PAGERFWD_SET_CLOCK");
    long at = 0;
    long by = 0;
    return set != nullptr && std::sscanf(set, "%ld %ld", &at, &by) == 2 && TimeBefore() >= at ? by
                                                                                              : 0;
}

bool IsNow(const char* variable) {
    const char* const moments = std::getenv(variable);
    long from = 0;
    long to = 0;
    return moments != nullptr && std::sscanf(moments, "%ld %ld", &from, &to) == 2 &&
           TimeBefore() >= from && TimeBefore() < to;
}

// From the folder of the node, and from that of a line.
constexpr const char* kLastRoom = "pagerfwd.db-room";
constexpr const char* kFromALine = "../../pagerfwd.db-room";

bool KeepsLastRoom() {
    return access(kLastRoom, F_OK) == 0 || access(kFromALine, F_OK) == 0;
}

bool IsRefused(proof::FileDeed deed, int file, int64_t end) {
    return IsNow("PAGERFWD_REFUSED_WRITES") ||
           (IsNow("PAGERFWD_NO_OTHER_ROOM") && KeepsLastRoom()) ||
           (IsNow("PAGERFWD_FULL_DISK") && proof::WouldGrow(deed, file, end));
}

// The trace and the figures grow with each write; what is said to whoever reads it stays.
bool IsGrowing(int file) {
    struct stat status {};
    return file > STDERR_FILENO && fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

std::atomic<int> threads_to_refuse{0};

// The simulation has threads of its own.
bool IsInLibrary(const void* code) {
    Dl_info object{};
    return dladdr(code, &object) != 0 && std::strstr(object.dli_fname, "libPagerFwd") != nullptr;
}

__attribute__((constructor)) void Begin() {
    proof::SetFileRefusal(IsRefused);
    const char* const threads = std::getenv("PAGERFWD_REFUSED_THREADS");
    threads_to_refuse = threads == nullptr ? 0 : std::atoi(threads);
}

}  // namespace

extern "C" {
std::time_t time(std::time_t* out) noexcept {
    const std::time_t now = TimeBefore() + SetBy();
    if (out != nullptr) {
        *out = now;
    }
    return now;
}

int gettimeofday(timeval* now, void* zone) noexcept {
    static const auto next = Next<int (*)(timeval*, void*)>("gettimeofday");
    const int result = next(now, zone);
    now->tv_sec += SetBy();
    return result;
}

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    static const auto next = Next<int (*)(clockid_t, timespec*)>("clock_gettime");
    const int result = next(clock, now);
    now->tv_sec += clock == CLOCK_REALTIME ? SetBy() : 0;
    return result;
}

ssize_t write(int file, const void* bytes, size_t size) {
    static const auto next = Next<ssize_t (*)(int, const void*, size_t)>("write");
    if (IsGrowing(file) && (IsNow("PAGERFWD_FULL_DISK") || IsNow("PAGERFWD_REFUSED_WRITES"))) {
        errno = ENOSPC;
        return -1;
    }
    if (IsNow("PAGERFWD_STALLED_LINE") && file > STDERR_FILENO && isatty(file) != 0) {
        errno = EAGAIN;
        return -1;
    }
    return next(file, bytes, size);
}

int open(const char* path, int flags, ...) {
    static const auto next = Next<int (*)(const char*, int, ...)>("open");
    if (std::strncmp(path, "/dev/ttyS", 9) == 0 && IsNow("PAGERFWD_TAKEN_LINE")) {
        errno = EBUSY;
        return -1;
    }
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return next(path, flags, mode);
}

int statvfs64(const char* path, struct statvfs64* status) {
    static const auto next = Next<int (*)(const char*, struct statvfs64*)>("statvfs64");
    const int result = next(path, status);
    if (IsNow("PAGERFWD_NO_ROOM")) {
        status->f_bavail = 0;
    }
    return result;
}

int pthread_create(pthread_t* handle, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) {
    static const auto next =
        Next<int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
    const bool refused = IsInLibrary(__builtin_return_address(0)) && threads_to_refuse-- > 0;
    return refused ? EAGAIN : next(handle, attributes, start, argument);
}
}
