// Waiting in real time: for the one whose turn it is, for whoever comes back, and for ever. Tested
// by tests/unit/sim/{shared_world,world_server}_test.cpp.
#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <cstdio>

#include "sim/server/world_server.h"

namespace pagersim {
namespace {

// How often a holder that says nothing is looked at, and how long it may be asleep.
constexpr Milliseconds kGlance{50};
constexpr Milliseconds kLongSilence{250};

// How long one may take to say what it waits for.
constexpr int kTellingMs = 5000;

}  // namespace

// Until one of them has something to say, or `other` is readable.
void WorldServer::WaitFor(int other) {
    std::vector<pollfd> watched = {{other, POLLIN, 0}};
    if (awaited_ != 0) {
        watched.push_back({listener_.Number(), POLLIN, 0});
    } else if (holder_ == nullptr) {
        watched.push_back({ears_.Number(), POLLIN, 0});
        watched.push_back({AnyReady() ? -1 : watched_.Number(), POLLIN, 0});
    } else {
        watched.push_back({holder_->socket.Number(), POLLIN, 0});
        watched.push_back({holder_->process.Number(), POLLIN, 0});
        watched.push_back({holder_->has_spoken ? -1 : listener_.Number(), POLLIN, 0});
    }
    const bool is_quiet =
        poll(watched.data(), watched.size(), static_cast<int>(kGlance.count())) == 0;
    if (awaited_ == 0 && holder_ == nullptr && is_quiet) {
        idle_for_ += kGlance;
        TellIfStuck();
        LetAllLook();
    }
    if (holder_ != nullptr) {
        DoubtHolder();
    }
}

// What others do may come to nobody's notice: a child that none of the world has started.
void WorldServer::LetAllLook() {
    ++deeds_;
    ++ends_;
}

// One that can't be given the turn all the same.
bool WorldServer::AnyReady() const {
    return std::any_of(members_.begin(), members_.end(),
                       [](const auto& member) { return member->is_ready; });
}

// One that hasn't said anything yet, and whose child does, takes no part. One that is asleep for
// long waits for something that the simulation doesn't know.
void WorldServer::DoubtHolder() {
    Member& member = *holder_;
    if (ListenTo(member) != Voice::kSilent) {
        return;
    }
    silence_ += kGlance;
    const bool is_over = silence_ >= kLongSilence;
    const bool is_parent = !member.has_spoken && IsReadable(listener_.Number());
    if (is_parent ||
        (is_over && (!member.has_spoken || RunsWithoutUs(member) || IsAsleep(member)))) {
        member.is_aside = true;
        holder_ = nullptr;
    }
}

void WorldServer::TellIfStuck() {
    const bool is_time = idle_for_ >= patience_ && idle_for_ - kGlance < patience_;
    if (patience_ <= Milliseconds{0} || !is_time) {
        return;
    }
    for (const auto& member : members_) {
        if (member->is_aside) {
            std::fprintf(stderr, "pagersim: time stands still: %s takes no part in it\n",
                         NameOf(*member).c_str());
            return;
        }
    }
    if (IsStuck()) {
        ReportStuck();
    }
}

bool WorldServer::IsStuck() const {
    return events_.Next() == kNever &&
           std::all_of(members_.begin(), members_.end(), [](const auto& member) {
               return !member->runs && member->deadline == kNever &&
                      (member->flags & (kOutside | kAbsent)) == 0;
           });
}

void WorldServer::ReportStuck() {
    std::fprintf(stderr, "pagersim: after %lld ms all threads wait for each other, for ever:\n",
                 static_cast<long long>(now_.count() / 1000));
    const std::vector<pid_t> all = Participants();
    for (const pid_t pid : all) {
        const auto it = std::find_if(members_.begin(), members_.end(),
                                     [=](const auto& member) { return member->pid == pid; });
        if (it == members_.end()) {
            continue;  // It has ended meanwhile.
        }
        std::fprintf(stderr, " process %s\n", NameOf(**it).c_str());
        GiveTurn({it->get(), Why::kTell});
        while (holder_ != nullptr && IsReadable(holder_->socket.Number(), kTellingMs) &&
               HearHolder()) {
        }
        holder_ = nullptr;
    }
    SignalParticipants(SIGABRT);
}

}  // namespace pagersim
