// Whose turn it is, and when time moves. Tested by
// tests/unit/sim/{shared_world,world_server}_test.cpp.
#include "sim/server/world_server.h"

#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <utility>

namespace pagersim {
namespace {

constexpr int kMostEvents = 64;

}  // namespace

WorldServer::Choice WorldServer::ChooseNext() {
    for (;;) {
        LookAtDescriptors();
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

// Which of those that rest have something to read, say.
void WorldServer::LookAtDescriptors() {
    std::array<epoll_event, kMostEvents> ready{};
    const int count = epoll_wait(watched_.Number(), ready.data(), kMostEvents, 0);
    for (const auto& member : members_) {
        member->is_ready =
            !member->runs &&
            std::any_of(ready.begin(), ready.begin() + std::max(count, 0),
                        [&](const epoll_event& each) { return each.data.u32 == member->number; });
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
    return member.is_ready || ((member.flags & kWatches) != 0 && member.ends_seen < ends_) ||
           ((member.flags & kWatchesFiles) != 0 && member.looked < deeds_);
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
    return member.pid != 0 && !member.asks_outside && IsAsleep(member) &&
           std::any_of(members_.begin(), members_.end(),
                       [&](const auto& other) { return IsParentOf(member, other->pid); });
}

// It takes part, and is set aside: it waits for a server, or takes its time to end.
bool WorldServer::AnyIsToComeBack() const {
    return std::any_of(members_.begin(), members_.end(), [](const auto& member) {
        return member->is_aside && member->has_spoken && !RunsWithoutUs(*member);
    });
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

void WorldServer::GiveTurn(const Choice& choice) {
    Member& member = *choice.member;
    holder_ = &member;
    silence_ = Milliseconds{0};
    member.runs = true;
    member.looked = deeds_;
    member.ends_seen = ends_;
    member.is_ready = false;
    if (std::exchange(member.is_owed_turn, false)) {
        SendTo(member, Message(member, choice.why));
    }
}

void WorldServer::Rest(Member& member, const Request& request) {
    member.runs = false;
    member.is_owed_turn = true;
    member.since = ++beginnings_;
    member.deadline = Micros(request.deadline);
    member.flags = request.number;
    member.lines = request.lines;
    if ((member.flags & kTouched) != 0) {
        ++deeds_;
        idle_for_ = Milliseconds{0};
    }
    member.looked = deeds_;  // It did, before it said this.
    member.ends_seen = ends_;
    holder_ = nullptr;
}

}  // namespace pagersim
