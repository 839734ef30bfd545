// What processes say: the one whose turn it is, and the others between turns. Tested by
// tests/unit/sim/{shared_world,world_server}_test.cpp.
#include "sim/server/world_server.h"

#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <utility>

namespace pagersim {
namespace {

// The longest from a signal to what comes of it.
constexpr int kSignalMs = 5000;

constexpr int kMostEvents = 256;

}  // namespace

// What the one whose turn it is says. False: nothing.
bool WorldServer::HearHolder() {
    Member& member = *holder_;
    if (const auto received = ReceiveFrom(member)) {
        silence_ = Milliseconds{0};
        Hear(member, *received);
        return true;
    }
    const Voice voice = ListenTo(member);
    if (voice == Voice::kEnded) {
        Bury(member);
    }
    return voice != Voice::kSilent;  // It may have said something that is no question.
}

// Whoever came first in real time comes first in none of the world's.
bool WorldServer::AllHaveJoined() {
    if (awaited_ == 0) {
        return true;
    }
    HearOthers();
    std::for_each(members_.begin(), members_.end(), [](const auto& member) { HearName(*member); });
    const auto named = std::count_if(members_.begin(), members_.end(),
                                     [](const auto& member) { return !member->name.empty(); });
    if (static_cast<std::size_t>(named) < awaited_) {
        return false;
    }
    awaited_ = 0;
    std::stable_sort(members_.begin(), members_.end(),
                     [](const auto& a, const auto& b) { return a->name < b->name; });
    for (const auto& member : members_) {
        member->since = ++beginnings_;
    }
    return true;
}

void WorldServer::HearName(Member& member) {
    if (member.name.empty()) {
        const auto received = ReceiveFrom(member);
        if (received && received->request.ask == Question::kJoin) {
            member.name = received->payload;
        }
    }
}

// Who has come, who has gone, who wants to go on.
void WorldServer::HearOthers() {
    do {
        if (std::exchange(signals_under_way_, false)) {
            AwaitSignals();
        }
        HearEach();
    } while (signals_under_way_);
}

void WorldServer::HearEach() {
    FindAudible();
    for (std::size_t i = 0; i < members_.size();) {
        Member& member = *members_[i];
        const bool counts = &member != holder_ && member.is_audible;
        const Voice voice = counts ? ListenTo(member) : Voice::kSilent;
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

// One look at all that could be. A new one is.
void WorldServer::FindAudible() {
    for (const auto& member : members_) {
        member->is_audible = false;
    }
    std::array<epoll_event, kMostEvents> events{};
    const int count = epoll_wait(ears_.Number(), events.data(), kMostEvents, 0);
    for (int i = 0; i < count; ++i) {
        const uint32_t number = events.at(static_cast<std::size_t>(i)).data.u32;
        if (number == kNewcomer) {
            AcceptAll();
        }
        for (const auto& member : members_) {
            member->is_audible = member->is_audible || member->number == number;
        }
    }
}

void WorldServer::ListenAlso(int fd, uint32_t number) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u32 = number;
    epoll_ctl(ears_.Number(), EPOLL_CTL_ADD, fd, &event);
}

// What a signal does is done before the one who sent it goes on.
void WorldServer::HearSignal() {
    signals_under_way_ = true;
    ++ends_;
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
