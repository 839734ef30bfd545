// What the process that has the turn asks, and what it is answered. Tested by
// tests/unit/sim/shared_world_test.cpp.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "sim/server/world_server.h"
#include "sim/world/open_terminals.h"

namespace pagersim {

void WorldServer::Hear(Member& member, const Received& received) {
    const Request& request = received.request;
    GoOnTo(Micros(request.now));
    switch (request.ask) {
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
void WorldServer::GoOnTo(Micros when) {
    if (when < kNever / 2) {
        now_ = std::max(now_, when);
    }
    RunDueEvents();
}

// What the program has inherited of lines replaces what the one before it had.
void WorldServer::Start(Member& member, const Received& received) {
    member.has_spoken = true;
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
    SendReply(member, found);
}

Terminal WorldServer::Find(uint32_t terminal) {
    for (int com = 1; com <= kLines; ++com) {
        Line* const line = LineOn(com);
        uint32_t number = 0;
        if (line != nullptr && line->Connection() != 0 &&
            IsTerminalName(line->Terminal()->c_str(), number) && number == terminal) {
            return {com, line->Connection()};
        }
    }
    return {0, 0};
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

void WorldServer::Open(Member& member, int com) {
    Line* const line = LineOn(com);
    errno = ENOENT;
    const std::string* const terminal = line != nullptr ? line->Terminal() : nullptr;
    if (terminal == nullptr) {
        return Refuse(member, errno);
    }
    const uint32_t connection = line->Connect();
    ++member.holdings[{com, connection}];
    Reply reply = Message(member, Why::kAnswer);
    reply.connection = connection;
    SendTo(member, reply, *terminal);
}

// One descriptor less. False: it has none.
bool WorldServer::Release(Member& member, const Holdings::key_type& what) {
    const auto held = member.holdings.find(what);
    if (held == member.holdings.end()) {
        return false;
    }
    if (--held->second == 0) {
        member.holdings.erase(held);
    }
    return true;
}

void WorldServer::AskLine(Member& member, const Received& received) {
    const Request& request = received.request;
    Line* const line = LineOn(request.com);
    if (line == nullptr) {
        return Refuse(member, ENOENT);
    }
    std::string payload;
    switch (request.ask) {
        case Question::kReopen:
            line->Reopen(request.connection);
            ++member.holdings[{request.com, request.connection}];
            break;
        case Question::kClose:
            if (!Release(member, {request.com, request.connection})) {
                return Refuse(member, EBADF);
            }
            line->Close(request.connection);
            break;
        case Question::kTake:
            payload.resize(std::min<std::size_t>(request.number, kMostPayload));
            payload.resize(line->Take(payload.data(), payload.size()));
            break;
        case Question::kDrop:
            line->DropInput();
            break;
        case Question::kWrite:
            line->Write(received.payload);
            break;
        case Question::kSettings: {
            const PackedSettings packed = Packed(line->Settings());
            payload.assign(reinterpret_cast<const char*>(&packed), sizeof packed);
            break;
        }
        case Question::kSet: {
            PackedSettings packed{};
            std::memcpy(&packed, received.payload.data(),
                        std::min(received.payload.size(), sizeof packed));
            line->Set(Unpacked(packed));
            break;
        }
        default:
            break;
    }
    SendReply(member, payload);
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
            others |= kCompany | ((other->flags & kWatches) != 0 ? uint32_t{kOnlookers} : 0);
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
                              static_cast<uint32_t>(line->Readable()), line->TimesSet()};
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
