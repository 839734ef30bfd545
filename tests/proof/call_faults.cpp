// Lets calls of a site's processes fail as planned (call_faults.h). Preloaded into a node and its
// lines, in front of the simulation, whose own calls go on; any other program that has it goes on
// undisturbed.
#include "tests/proof/call_faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "tests/proof/shared_plan.h"

namespace proof {
namespace {

CallFaults* faults = nullptr;
size_t own_role = kNoRole;
uintptr_t simulation_begin = 0;
uintptr_t simulation_end = 0;

bool IsSimulation(const void* caller) {
    const auto at = reinterpret_cast<uintptr_t>(caller);
    return at >= simulation_begin && at < simulation_end;
}

int FindSimulation(dl_phdr_info* object, size_t /*size*/, void* /*data*/) {
    if (std::strstr(object->dlpi_name, "pagersim-preload") == nullptr) {
        return 0;
    }
    simulation_begin = object->dlpi_addr;
    for (size_t i = 0; i < object->dlpi_phnum; ++i) {
        const auto& part = object->dlpi_phdr[i];
        const uintptr_t end = object->dlpi_addr + part.p_vaddr + part.p_memsz;
        simulation_end = part.p_type == PT_LOAD && end > simulation_end ? end : simulation_end;
    }
    return 1;
}

bool IsChosen(int32_t number) {
    if (faults->lasting == 0) {
        const int32_t behind = number - faults->first;
        return behind == 0 || (behind > 0 && faults->every > 0 && behind % faults->every == 0);
    }
    if (number < faults->first) {
        return false;
    }
    int64_t none = 0;
    const int64_t now = std::time(nullptr);
    faults->until.compare_exchange_strong(none, now + faults->lasting);
    return now < faults->until;
}

// Whether the call is to fail; with which error, says errno then.
bool Fails(CallKind kind, const void* caller) {
    if (faults == nullptr || IsSimulation(caller)) {
        return false;
    }
    const int before = errno;
    const auto which = static_cast<uint32_t>(kind);
    const int32_t number = ++faults->made[own_role][which];
    const bool fails =
        (faults->roles & (1U << own_role)) != 0 && faults->kind == which && IsChosen(number);
    faults->failed += fails ? 1 : 0;
    errno = fails ? faults->error.load() : before;
    return fails;
}

template <typename Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

__attribute__((constructor)) void Begin() {
    own_role = FindRole().role;
    dl_iterate_phdr(FindSimulation, nullptr);
    faults = own_role == kNoRole ? nullptr : FindPlan<CallFaults>(kFaultsVariable);
}

}  // namespace
}  // namespace proof

using proof::CallKind;
using proof::Fails;
using proof::Next;

#define CALLER __builtin_return_address(0)

// A call whose arguments are fixed: it fails with -1.
#define PROOF_CALL(kind, result, name, parameters, arguments)       \
    result name parameters {                                        \
        /* A type: NOLINTNEXTLINE(bugprone-macro-parentheses) */    \
        static const auto next = Next<result(*) parameters>(#name); \
        return Fails(kind, CALLER) ? -1 : next arguments;           \
    }

// open and the like, whose mode is only there where a file may be made.
#define PROOF_OPEN(name)                                                       \
    int name(const char* path, int flags, ...) {                               \
        static const auto next = Next<int (*)(const char*, int, ...)>(#name);  \
        va_list rest;                                                          \
        va_start(rest, flags);                                                 \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0; \
        va_end(rest);                                                          \
        return Fails(CallKind::kOpen, CALLER) ? -1 : next(path, flags, mode);  \
    }

#define PROOF_FILE(name)                                                           \
    FILE* name(const char* path, const char* mode) {                               \
        static const auto next = Next<FILE* (*)(const char*, const char*)>(#name); \
        return Fails(CallKind::kOpen, CALLER) ? nullptr : next(path, mode);        \
    }

#define PROOF_SPAWN(name)                                                                  \
    int name(pid_t* child, const char* program, const posix_spawn_file_actions_t* actions, \
             const posix_spawnattr_t* attributes, char* const* arguments,                  \
             char* const* environment) {                                                   \
        static const auto next =                                                           \
            Next<int (*)(pid_t*, const char*, const posix_spawn_file_actions_t*,           \
                         const posix_spawnattr_t*, char* const*, char* const*)>(#name);    \
        return Fails(CallKind::kSpawn, CALLER)                                             \
                   ? errno                                                                 \
                   : next(child, program, actions, attributes, arguments, environment);    \
    }

// Only the locks that a store asks for; those of whole processes tell by another error.
#define PROOF_CONTROL(name)                                                                    \
    int name(int file, int command, ...) {                                                     \
        static const auto next = Next<int (*)(int, int, ...)>(#name);                          \
        va_list rest;                                                                          \
        va_start(rest, command);                                                               \
        void* const argument = va_arg(rest, void*);                                            \
        va_end(rest);                                                                          \
        const bool locks = command == F_SETLK || command == F_SETLK64;                         \
        const bool unlocks = locks && static_cast<struct flock*>(argument)->l_type == F_UNLCK; \
        return locks && !unlocks && Fails(CallKind::kLock, CALLER)                             \
                   ? -1                                                                        \
                   : next(file, command, argument);                                            \
    }

extern "C" {
PROOF_SPAWN(posix_spawn)
PROOF_SPAWN(posix_spawnp)

PROOF_CALL(CallKind::kPipe, int, pipe2, (int* ends, int flags) noexcept, (ends, flags))
PROOF_CALL(CallKind::kPipe, int, socketpair,
           (int domain, int type, int protocol, int* ends) noexcept, (domain, type, protocol, ends))
PROOF_CALL(CallKind::kPipe, int, memfd_create, (const char* name, unsigned flags) noexcept,
           (name, flags))
PROOF_CALL(CallKind::kPipe, int, eventfd, (unsigned count, int flags) noexcept, (count, flags))

PROOF_OPEN(open)
PROOF_OPEN(open64)
PROOF_FILE(fopen)
PROOF_FILE(fopen64)
PROOF_CALL(CallKind::kOpen, int, mkostemp, (char* name, int flags), (name, flags))
PROOF_CALL(CallKind::kOpen, int, mkostemp64, (char* name, int flags), (name, flags))
// By a name that there is none of, so that the reason can be asked for.
void* dlopen(const char* name, int flags) noexcept {
    static const auto next = Next<void* (*)(const char*, int)>("dlopen");
    return next(Fails(CallKind::kOpen, CALLER) ? "/nowhere" : name, flags);
}

PROOF_CALL(CallKind::kRead, ssize_t, pread, (int file, void* to, size_t size, off_t at),
           (file, to, size, at))
PROOF_CALL(CallKind::kRead, ssize_t, pread64, (int file, void* to, size_t size, off64_t at),
           (file, to, size, at))
PROOF_CALL(CallKind::kWrite, ssize_t, pwrite, (int file, const void* from, size_t size, off_t at),
           (file, from, size, at))
PROOF_CALL(CallKind::kWrite, ssize_t, pwrite64,
           (int file, const void* from, size_t size, off64_t at), (file, from, size, at))
PROOF_CALL(CallKind::kWrite, int, ftruncate, (int file, off_t size) noexcept, (file, size))
PROOF_CALL(CallKind::kWrite, int, ftruncate64, (int file, off64_t size) noexcept, (file, size))
PROOF_CALL(CallKind::kSync, int, fsync, (int file), (file))
PROOF_CALL(CallKind::kSync, int, fdatasync, (int file), (file))

PROOF_CONTROL(fcntl)
PROOF_CONTROL(fcntl64)
}
