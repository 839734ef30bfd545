// What processes say: the one whose turn it is, and the others between turns. Tested by
// tests/unit/sim/{shared_world,world_server}_test.cpp.
#include "sim/server/world_server.h"

#include <utility>

namespace pagersim {
namespace {

// The longest from a signal to what comes of it.
constexpr int kSignalMs = 5000;

}  // namespace

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

// What a signal does is done before the one who sent it goes on.
void WorldServer::HearSignal() {
    signals_under_way_ = true;
    HearOthers();
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

}  // namespace pagersim
