// Whose turn it is, and when time moves. Tested by
// tests/unit/sim/{shared_world,world_server}_test.cpp.
#include "sim/server/world_server.h"

#include <algorithm>
#include <utility>

namespace pagersim {

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

void WorldServer::Rest(Member& member, const Request& request) {
    member.runs = false;
    member.is_owed_turn = true;
    member.since = ++beginnings_;
    member.deadline = Micros(request.deadline);
    member.flags = request.number;
    member.lines = request.lines;
    deeds_ += (member.flags & kTouched) != 0 ? 1 : 0;
    member.looked = deeds_;  // It did, before it said this.
    holder_ = nullptr;
}

}  // namespace pagersim
