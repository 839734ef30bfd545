// Who is in the world: how processes come and go. Tested by
// tests/unit/sim/{shared_world,world_server}_test.cpp.
#include "sim/server/world_server.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "sim/server/local_socket.h"

namespace pagersim {
namespace {

// The longest from a connection's end to its process's.
constexpr int kDyingMs = 5000;

int OpenProcess(pid_t pid) {
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

}  // namespace

Member& WorldServer::Add(Descriptor socket) {
    auto member = std::make_unique<Member>();
    member->since = ++beginnings_;
    member->number = ++numbers_;
    member->socket = std::move(socket);
    ListenAlso(member->socket.Number(), member->number);
    members_.push_back(std::move(member));
    return *members_.back();
}

void WorldServer::AcceptAll() {
    for (;;) {
        Descriptor socket(
            accept4(listener_.Number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (socket.Number() < 0) {
            return;
        }
        if (PeerOf(socket.Number()) == 0) {
            continue;
        }
        TellSender(socket.Number());
        Add(std::move(socket));
    }
}

// The latest that the process has connected and that hasn't spoken.
Member* WorldServer::InvitedBy(pid_t pid) {
    for (auto each = members_.rbegin(); each != members_.rend(); ++each) {
        if (!(*each)->has_spoken && (*each)->pid == 0 && PeerOf((*each)->socket.Number()) == pid) {
            return each->get();
        }
    }
    return nullptr;
}

Descriptor WorldServer::Invite() {
    Descriptor end(ConnectTo(path_));
    AcceptAll();
    return end;
}

void WorldServer::Invited(pid_t pid, bool takes_part) {
    if (Member* const member = InvitedBy(getpid())) {
        Watch(*member, pid);
        member->is_aside = !takes_part;
    }
}

void WorldServer::Watch(Member& member, pid_t pid) {
    if (member.pid != pid) {
        member.pid = pid;
        member.process = Descriptor(OpenProcess(pid));
        ListenAlso(member.process.Number(), member.number);
    }
}

std::vector<pid_t> WorldServer::Participants() const {
    std::vector<pid_t> pids;
    for (const auto& member : members_) {
        if (member->pid != 0 && !member->is_aside) {
            pids.push_back(member->pid);
        }
    }
    return pids;
}

void WorldServer::SignalParticipants(int signal) const {
    for (const auto& member : members_) {
        if (!member->is_aside) {
            SignalTo(*member, signal);
        }
    }
}

// Its lines are closed, and whoever waits for its end can see it.
void WorldServer::Bury(Member& member) {
    IsReadable(member.process.Number(), kDyingMs);
    const auto it = std::find_if(members_.begin(), members_.end(),
                                 [&](const auto& each) { return each.get() == &member; });
    const std::unique_ptr<Member> dead = std::move(*it);
    members_.erase(it);
    if (holder_ == dead.get()) {
        GoOnToClock();
        holder_ = nullptr;
    }
    stopped_ = stopped_ || (last_ != 0 && dead->pid == last_);
    ++deeds_;
    ++ends_;
    signals_under_way_ =
        true;  // To its parent; and of what it did before, one that took no part said nothing.
    Drop(dead->holdings);
}

void WorldServer::Drop(const Holdings& holdings) {
    for (const auto& [what, count] : holdings) {
        Line* const line = LineOn(what.first);
        for (int i = 0; i < count && line != nullptr; ++i) {
            line->Close(what.second);
        }
    }
}

}  // namespace pagersim
