// What the process that has the turn asks, and what it is answered. Tested by
// tests/unit/sim/shared_world_test.cpp.
#include <algorithm>
#include <cstring>
#include <utility>

#include "sim/server/world_server.h"

namespace pagersim {

void WorldServer::Hear(Member& member, const Received& received) {
    const Request& request = received.request;
    GoOnToClock();
    switch (request.ask) {
        case Question::kJoin:
            return;  // When it joined didn't matter.
        case Question::kStart:
            return Start(member, received);
        case Question::kFork:
            return Fork(member);
        case Question::kChild:
            return Child(member, static_cast<pid_t>(request.number));
        case Question::kRest:
            return Rest(member, request);
        case Question::kWant:
            return;  // It has.
        case Question::kOutside:
            member.asks_outside = request.number > 0;
            return;
        case Question::kSignal:
            HearSignal();
            return SendReply(member);
        case Question::kOpen:
            return Open(member, request.com);
        case Question::kReopen:
        case Question::kClose:
        case Question::kTake:
        case Question::kDrop:
        case Question::kWrite:
        case Question::kSettings:
        case Question::kSet:
            return AskLine(member, received);
    }
}

// A process may have gone on by itself, but not beyond all time.
void WorldServer::GoOnToClock() {
    const Micros when = clock_.Get();
    if (when < kNever / 2) {
        now_ = std::max(now_, when);
    }
    RunDueEvents();
}

// What the program has inherited of lines replaces what the one before it had.
void WorldServer::Start(Member& member, const Received& received) {
    member.has_spoken = true;
    member.asks_outside = false;
    Watch(member, received.sender);
    const Holdings before = std::exchange(member.holdings, {});
    std::string found;
    for (std::size_t i = 0; (i + 1) * sizeof(uint32_t) <= received.payload.size(); ++i) {
        uint32_t number = 0;
        std::memcpy(&number, received.payload.data() + i * sizeof number, sizeof number);
        const Terminal terminal = Find(number);
        found.append(reinterpret_cast<const char*>(&terminal), sizeof terminal);
        if (terminal.com != 0) {
            LineOn(terminal.com)->Reopen(terminal.connection);
            ++member.holdings[{terminal.com, terminal.connection}];
        }
    }
    Drop(before);
    Reply reply = Message(member, Why::kAnswer);
    reply.connection = member.number;
    SendTo(member, reply, found, {watched_.Number(), clock_file_.Number()});
}

// The child has what its parent has, until it says what it has kept.
void WorldServer::Fork(Member& member) {
    AcceptAll();
    if (Member* const child = InvitedBy(member.pid)) {
        child->holdings = member.holdings;
        for (const auto& [what, count] : child->holdings) {
            for (int i = 0; i < count; ++i) {
                LineOn(what.first)->Reopen(what.second);
            }
        }
    }
    SendReply(member);
}

void WorldServer::Child(const Member& member, pid_t pid) {
    if (Member* const child = IsParentOf(member, pid) ? InvitedBy(member.pid) : nullptr) {
        Watch(*child, pid);
    }
}

// Before that no other process goes on. Now: one could.
Micros WorldServer::HorizonFor(const Member& member) const {
    Micros horizon = kNever;
    for (const auto& other : members_) {
        if (other.get() != &member) {
            horizon =
                std::min(horizon, CouldGoOn(*other) || other->is_aside ? now_ : DeadlineOf(*other));
        }
    }
    return horizon;
}

uint32_t WorldServer::OthersOf(const Member& member) const {
    uint32_t others = 0;
    for (const auto& other : members_) {
        if (other.get() != &member) {
            others |= kCompany | ((other->flags & kWatchesFiles) != 0 ? uint32_t{kOnlookers} : 0);
        }
    }
    return others;
}

Reply WorldServer::Message(Member& member, Why why) const {
    Reply reply{};
    reply.now = now_.count();
    reply.wall_at_start = wall_at_start_;
    reply.step = step_.count();
    reply.why = why;
    reply.input = std::exchange(member.input, 0);
    reply.horizon = std::min(HorizonFor(member), events_.Next()).count();
    reply.others = OthersOf(member);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        if (const Line* const line = lines_[i].get()) {
            reply.lines[i] = {line->LatestInput().count(), line->Connection(),
                              static_cast<uint32_t>(line->Readable()), line->TimesSet(),
                              line->IsThere() ? 1U : 0U};
        }
    }
    return reply;
}

void WorldServer::SendReply(Member& member, std::string_view payload) {
    SendTo(member, Message(member, Why::kAnswer), payload);
}

void WorldServer::Refuse(Member& member, int error) {
    Reply reply = Message(member, Why::kAnswer);
    reply.error = error;
    SendTo(member, reply);
}

}  // namespace pagersim
