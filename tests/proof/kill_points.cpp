// Kills processes of a site at armed points (kill_points.h). Preloaded into a node and its lines;
// any other program that has it goes on undisturbed.
#include "tests/proof/kill_points.h"

#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <string_view>

#include "host/lines/line_exit.h"
#include "tests/proof/file_calls.h"
#include "tests/proof/shared_plan.h"

namespace proof {
namespace {

KillPoints* points = nullptr;
size_t own_role = kNoRole;

// What asks a modem is no line.
size_t OwnRole() {
    const ProcessRole own = FindRole();
    return own.asks ? kNoRole : own.role;
}

// Not by the function of the C library: the simulation looks on at that one.
void KillProcess(pid_t process) {
    syscall(SYS_kill, process, SIGKILL);
}

void KillVictims() {
    const uint32_t victims = points->victims;
    ++points->kills;
    for (size_t role = 0; role < kRoles; ++role) {
        const bool is_meant = (victims & (1U << role)) != 0;
        const int32_t process =
            is_meant && role != own_role ? points->processes[role].exchange(0) : 0;
        if (process > 0) {
            KillProcess(process);
        }
    }
    points->processes[own_role] = 0;
    KillProcess(getpid());
}

// A child that has yet to become another program is none of them.
void Pass(PointKind kind) {
    const bool is_armed = points != nullptr && points->left > 0 && points->role == own_role &&
                          points->kind == static_cast<uint32_t>(kind) &&
                          points->processes[own_role] == getpid();
    if (is_armed && --points->left == 0) {
        KillVictims();
    }
}

void PassFile(FileDeed deed, int /*fd*/) {
    Pass(deed == FileDeed::kWrite ? PointKind::kStoreWrite : PointKind::kStoreSync);
}

// Whether a PostgreSQL is at the other end.
bool LeadsToServer(int socket) {
    sockaddr_un address{};
    socklen_t size = sizeof address;
    return getpeername(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
           address.sun_family == AF_UNIX &&
           std::string_view(address.sun_path).find("/.s.PGSQL.") != std::string_view::npos;
}

void PassServer(PointKind kind, int socket) {
    if (points != nullptr && points->left > 0 && LeadsToServer(socket)) {
        Pass(kind);
    }
}

template <typename Function>
Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

__attribute__((constructor)) void Begin() {
    own_role = OwnRole();
    points = own_role == kNoRole ? nullptr : FindPlan<KillPoints>(kPointsVariable);
    if (points != nullptr) {
        points->processes[own_role] = getpid();
        SetFileHooks(PassFile, PassFile);
    }
}

// So that nobody is taken for it who gets its number.
__attribute__((destructor)) void End() {
    int32_t own = getpid();
    if (points != nullptr) {
        points->processes[own_role].compare_exchange_strong(own, 0);
    }
}

}  // namespace
}  // namespace proof

using proof::Next;
using proof::Pass;
using proof::PassServer;
using proof::PointKind;

extern "C" {
ssize_t write(int file, const void* bytes, size_t size) {
    static const auto next = Next<ssize_t (*)(int, const void*, size_t)>("write");
    Pass(PointKind::kOtherWrite);
    const ssize_t written = next(file, bytes, size);
    Pass(PointKind::kOtherWrite);
    return written;
}

// A line whose node's lease is over ends so, wherever it is.
void _exit(int status) {
    static const auto next = Next<void (*)(int)>("_exit");
    if (status == static_cast<int>(host::LineExit::kLeaseOver) && proof::points != nullptr) {
        ++proof::points->fenced[proof::own_role];
    }
    next(status);
    __builtin_unreachable();
}

// As libpq asks a server, and hears it.
ssize_t send(int socket, const void* bytes, size_t size, int flags) {
    static const auto next = Next<ssize_t (*)(int, const void*, size_t, int)>("send");
    PassServer(PointKind::kStoreWrite, socket);
    const ssize_t sent = next(socket, bytes, size, flags);
    PassServer(PointKind::kStoreWrite, socket);
    return sent;
}

ssize_t recv(int socket, void* bytes, size_t size, int flags) {
    static const auto next = Next<ssize_t (*)(int, void*, size_t, int)>("recv");
    PassServer(PointKind::kStoreSync, socket);
    const ssize_t received = next(socket, bytes, size, flags);
    PassServer(PointKind::kStoreSync, socket);
    return received;
}

// The way to the simulation's server.
ssize_t sendmsg(int socket, const msghdr* message, int flags) {
    static const auto next = Next<ssize_t (*)(int, const msghdr*, int)>("sendmsg");
    Pass(PointKind::kWorld);
    const ssize_t sent = next(socket, message, flags);
    Pass(PointKind::kWorld);
    return sent;
}
}
