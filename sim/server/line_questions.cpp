// What the process that has the turn asks of lines. Tested by tests/unit/sim/shared_world_test.cpp.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "sim/server/world_server.h"
#include "sim/world/open_terminals.h"

namespace pagersim {

Terminal WorldServer::Find(uint32_t terminal) {
    for (int com = 1; com <= kLines; ++com) {
        Line* const line = LineOn(com);
        if (line != nullptr && line->Connection() != 0 &&
            TerminalNumber(*line->Terminal()) == terminal) {
            return {com, line->Connection()};
        }
    }
    return {0, 0};
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

}  // namespace pagersim
