// pwrite, fsync and fdatasync, which is how the store's files are written.
#include "tests/proof/file_calls.h"

#include <dlfcn.h>
#include <errno.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace proof {
namespace {

std::atomic<FileHook> hook_before{nullptr};
std::atomic<FileHook> hook_after{nullptr};
std::atomic<FileRefusal> refusal{nullptr};
bool skips_syncs = false;
thread_local bool within = false;

template <typename Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void Call(FileHook hook, bool outermost, FileDeed deed, int fd) {
    if (outermost && hook != nullptr) {
        hook(deed, fd);
    }
}

bool IsRefused(bool outermost, FileDeed deed, int fd, int64_t end) {
    const FileRefusal refuses = refusal;
    return outermost && refuses != nullptr && refuses(deed, fd, end);
}

template <typename Work>
auto Watched(FileDeed deed, int fd, int64_t end, Work work) {
    const bool outermost = !within;
    within = true;
    Call(hook_before, outermost, deed, fd);
    const bool refused = IsRefused(outermost, deed, fd, end);
    const auto result = refused ? decltype(work()){-1} : work();
    const int error = refused ? ENOSPC : errno;
    Call(hook_after, outermost, deed, fd);
    within = !outermost;
    errno = error;
    return result;
}

}  // namespace

void SetFileHooks(FileHook before, FileHook after) {
    hook_before = before;
    hook_after = after;
}

void SetFileRefusal(FileRefusal refuses) {
    refusal = refuses;
}

bool WouldGrow(FileDeed /*deed*/, int fd, int64_t end) {
    struct stat status {};
    return fstat(fd, &status) == 0 && end > status.st_size;
}

void SkipSyncs() {
    skips_syncs = true;
}

}  // namespace proof

using proof::FileDeed;
using proof::Next;
using proof::Watched;

extern "C" {
ssize_t pwrite(int fd, const void* bytes, size_t size, off_t offset) {
    static const auto next = Next<ssize_t (*)(int, const void*, size_t, off_t)>("pwrite");
    return Watched(FileDeed::kWrite, fd, offset + static_cast<int64_t>(size),
                   [=] { return next(fd, bytes, size, offset); });
}

ssize_t pwrite64(int fd, const void* bytes, size_t size, int64_t offset) {
    static const auto next = Next<ssize_t (*)(int, const void*, size_t, int64_t)>("pwrite64");
    return Watched(FileDeed::kWrite, fd, offset + static_cast<int64_t>(size),
                   [=] { return next(fd, bytes, size, offset); });
}

int fsync(int fd) {
    static const auto next = Next<int (*)(int)>("fsync");
    return Watched(FileDeed::kSync, fd, 0, [=] { return proof::skips_syncs ? 0 : next(fd); });
}

int fdatasync(int fd) {
    static const auto next = Next<int (*)(int)>("fdatasync");
    return Watched(FileDeed::kSync, fd, 0, [=] { return proof::skips_syncs ? 0 : next(fd); });
}
}
