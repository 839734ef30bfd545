// Whose turn it is, and when time moves. Tested by
// tests/unit/sim/{shared_world,world_server}_test.cpp.
#include "sim/server/world_server.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace pagersim {
namespace {

// The longest from a connection's end to its process's, and from a signal to what comes of it.
constexpr int kDyingMs = 5000;
constexpr int kSignalMs = 5000;

int Listen(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    constexpr int kWaiting = 128;
    if (fd < 0 || bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd, kWaiting) != 0) {
        return -1;
    }
    return fd;
}

// Each message comes with its sender's number.
void TellSender(int fd) {
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
}

int ConnectTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    TellSender(fd);
    if (fd < 0 || connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return fd;
}

pid_t PeerOf(int fd) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

int OpenProcess(pid_t pid) {
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

}  // namespace

WorldServer::WorldServer(const std::string& socket, std::time_t wall, Micros step)
    : path_(socket),
      listener_(Listen(socket)),
      wall_at_start_(Micros(std::chrono::seconds(wall)).count()),
      step_(step) {
    if (listener_.Number() < 0) {
        throw std::system_error(errno, std::generic_category(), socket);
    }
}

WorldServer::~WorldServer() {
    for (auto& line : lines_) {
        line.reset();  // It says so to the members.
    }
    unlink(path_.c_str());
}

void WorldServer::AddLine(int com, std::unique_ptr<FarEnd> far_end) {
    lines_.at(static_cast<std::size_t>(com - 1)) =
        std::make_unique<Line>(*this, com, std::move(far_end));
}

Line* WorldServer::LineOn(int com) {
    return com >= 1 && com <= kLines ? lines_.at(static_cast<std::size_t>(com - 1)).get() : nullptr;
}

void WorldServer::WakeForInput(unsigned lines) {
    for (const auto& member : members_) {
        member->input |= lines;
    }
}

// Who is in the world.

Member& WorldServer::Add(Descriptor socket) {
    auto member = std::make_unique<Member>();
    member->since = ++beginnings_;
    member->socket = std::move(socket);
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
        holder_ = nullptr;
    }
    ++deeds_;
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

// Turns.

void WorldServer::Serve(int other) {
    GoOn();
    if (!members_.empty() || !IsReadable(other)) {
        WaitFor(other);
        GoOn();
    }
}

// As far as it goes without waiting.
void WorldServer::GoOn() {
    for (;;) {
        while (holder_ != nullptr && HearHolder()) {
        }
        if (holder_ != nullptr) {
            return;
        }
        HearOthers();
        const Choice next = ChooseNext();
        idle_ = next.member == nullptr;
        if (idle_) {
            return;
        }
        idle_for_ = Milliseconds{0};
        GiveTurn(next);
    }
}

// Signals take a while, and one that is handled or kills shows in what the process says next: after
// this everybody has said it.
void WorldServer::AwaitSignals() {
    for (const auto& member : members_) {
        const bool counts = member.get() != holder_ && member->pid != 0 && !member->is_aside;
        for (int ms = 0; ms < kSignalMs && counts; ++ms) {
            if (ListenTo(*member) != Voice::kSilent || IsAsleep(*member)) {
                break;
            }
            IsReadable(member->socket.Number(), 1);
        }
    }
}

// Who has come, who has gone, who wants to go on.
void WorldServer::HearOthers() {
    AcceptAll();
    do {
        if (std::exchange(signals_under_way_, false)) {
            AwaitSignals();
        }
        HearEach();
    } while (signals_under_way_);
}

// What a signal does is done before the one who sent it goes on.
void WorldServer::HearSignal() {
    signals_under_way_ = true;
    HearOthers();
}

void WorldServer::HearEach() {
    for (std::size_t i = 0; i < members_.size();) {
        Member& member = *members_[i];
        const Voice voice = &member != holder_ ? ListenTo(member) : Voice::kSilent;
        if (voice == Voice::kEnded) {
            Bury(member);
            continue;
        }
        if (voice == Voice::kSpeaks) {
            member.runs = true;
            member.is_aside = false;
        }
        ++i;
    }
}

WorldServer::Choice WorldServer::ChooseNext() {
    for (;;) {
        const Choice now = ChooseNow();
        if (now.member != nullptr || members_.empty() || TimeStandsStill()) {
            return now;
        }
        Member* const sleeper = EarliestDeadline();
        if (sleeper != nullptr && sleeper->deadline < events_.Next()) {
            now_ = std::max(now_, sleeper->deadline);
            return {sleeper, Why::kAnswer};
        }
        if (events_.Next() == kNever) {
            return {nullptr, Why::kAnswer};
        }
        now_ = std::max(now_, events_.Next());
        RunDueEvents();
    }
}

// At this instant.
WorldServer::Choice WorldServer::ChooseNow() const {
    Member* first = nullptr;
    for (const auto& member : members_) {
        if (CouldGoOn(*member) && (first == nullptr || member->since < first->since)) {
            first = member.get();
        }
    }
    return {first, first != nullptr && MustLook(*first) ? Why::kLook : Why::kAnswer};
}

bool WorldServer::CouldGoOn(const Member& member) const {
    const bool answers = !member.is_aside && (member.runs || (member.flags & kAbsent) == 0);
    return answers && (member.runs || (member.input & member.lines) != 0 || MustLook(member));
}

bool WorldServer::MustLook(const Member& member) const {
    return (member.flags & kWatches) != 0 && member.looked < deeds_;
}

Micros WorldServer::DeadlineOf(const Member& member) {
    return member.runs || (member.flags & kAbsent) != 0 ? kNever : member.deadline;
}

bool WorldServer::TimeStandsStill() const {
    return std::any_of(members_.begin(), members_.end(), [this](const auto& member) {
        return member->is_aside && !AwaitsChild(*member);
    });
}

// As a shell that takes no part does, of a program that does.
bool WorldServer::AwaitsChild(const Member& member) const {
    return member.pid != 0 && IsAsleep(member) &&
           std::any_of(members_.begin(), members_.end(),
                       [&](const auto& other) { return IsParentOf(member, other->pid); });
}

Member* WorldServer::EarliestDeadline() const {
    Member* earliest = nullptr;
    for (const auto& member : members_) {
        const Micros deadline = DeadlineOf(*member);
        if (deadline == kNever) {
            continue;
        }
        if (earliest == nullptr || deadline < earliest->deadline ||
            (deadline == earliest->deadline && member->since < earliest->since)) {
            earliest = member.get();
        }
    }
    return earliest;
}

void WorldServer::RunDueEvents() {
    while (events_.Next() <= now_) {
        events_.RunNext();
    }
}

void WorldServer::GiveTurn(const Choice& choice) {
    Member& member = *choice.member;
    holder_ = &member;
    silence_ = Milliseconds{0};
    member.runs = true;
    member.looked = deeds_;
    if (std::exchange(member.is_owed_turn, false)) {
        SendTo(member, Message(member, choice.why));
    }
}

// What the one whose turn it is says. False: nothing.
bool WorldServer::HearHolder() {
    Member& member = *holder_;
    switch (ListenTo(member)) {
        case Voice::kSilent:
            return false;
        case Voice::kEnded:
            Bury(member);
            return true;
        case Voice::kSpeaks:
            break;
    }
    silence_ = Milliseconds{0};
    if (const auto received = ReceiveFrom(member)) {
        Hear(member, *received);
    }
    return true;
}

void WorldServer::Rest(Member& member, const Request& request) {
    member.runs = false;
    member.is_owed_turn = true;
    member.since = ++beginnings_;
    member.deadline = Micros(request.deadline);
    member.flags = request.number;
    member.lines = request.connection;
    deeds_ += (member.flags & kTouched) != 0 ? 1 : 0;
    member.looked = deeds_;  // It did, before it said this.
    holder_ = nullptr;
}

}  // namespace pagersim
