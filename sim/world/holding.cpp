// How a thread is held in real time while it waits in virtual time. Tested by
// tests/unit/sim/{outside,threads,wait}_test.cpp.
#include "sim/world/scheduler.h"

#include <sys/eventfd.h>

#include "sim/preload/real_calls.h"
#include "sim/world/locked.h"

namespace pagersim {
namespace {

bool EndsBySignal(WaitKind kind) {
    return kind == WaitKind::kSleep || kind == WaitKind::kInput || kind == WaitKind::kProcess;
}

timespec ToTimespec(Milliseconds span) {
    return {static_cast<time_t>(span.count() / 1000),
            static_cast<long>(span.count() % 1000 * 1'000'000)};
}

}  // namespace

void Scheduler::Hold(ProgramThread& me) {
    const bool watches = link_ == nullptr ? running_ == 0 : !HasTurn() && !watched_;
    const bool signals = me.wait != nullptr && me.wait->signals != nullptr;
    const bool undisturbed = watches && !signals && IsAlone() ? HoldAtLink()
                             : watches || signals             ? HoldInPoll(me, watches)
                                                              : HoldAtGate(me);
    if (!undisturbed && me.wait != nullptr && EndsBySignal(me.wait->kind)) {
        Wake(me, Waking::kSignal);
    }
}

bool Scheduler::HoldAtGate(ProgramThread& me) {
    me.gate.Close();
    me.held = ProgramThread::Held::kAtGate;
    auto passed = Gate::Passed::kOpen;
    {
        const Unlocked unlocked;
        passed = me.gate.Pass();
    }
    me.held = ProgramThread::Held::kNowhere;
    return passed != Gate::Passed::kSignal;
}

// In a shared world, where this process has no other thread that could want it.
bool Scheduler::HoldAtLink() {
    Reply turn{};
    bool comes = false;
    {
        const Unlocked unlocked;
        comes = link_->AwaitTurn(turn);
    }
    if (comes) {
        TakeTurn(turn);
    }
    return comes;
}

// Nothing is going to happen in virtual time: really waits until one of all threads' descriptors is
// ready or another thread is back. Or nothing in this process before its turn: until that comes.
// False: a signal was handled.
bool Scheduler::HoldInPoll(ProgramThread& me, bool watches) {
    if (me.alarm < 0) {
        me.alarm = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    }
    const bool stuck = link_ == nullptr && watches && patience_ > Milliseconds::zero() && IsStuck();
    std::vector<pollfd> watched;
    if (watches && link_ == nullptr) {
        CollectDescriptors();
        watched = descriptors_;
    }
    watched.push_back({me.alarm, POLLIN, 0});
    watched_ = watches && link_ != nullptr;
    if (watched_) {
        watched.push_back({link_->Descriptor(), POLLIN, 0});
    }
    const timespec limit = ToTimespec(patience_);
    const sigset_t* const signals = me.wait != nullptr ? me.wait->signals : nullptr;

    me.held = ProgramThread::Held::kInPoll;
    int ready = 0;
    bool interrupted = false;
    {
        const Unlocked unlocked;
        ready = Real().ppoll(watched.data(), watched.size(), stuck ? &limit : nullptr, signals);
        interrupted = ready < 0 && errno == EINTR;
    }
    me.held = ProgramThread::Held::kNowhere;

    eventfd_t rung = 0;
    eventfd_read(me.alarm, &rung);
    if (watches && link_ != nullptr) {
        watched_ = false;
        LookAtLink();
    }
    if (stuck && ready == 0 && IsStuck()) {
        ReportStuck();
    }
    return !interrupted;
}

// Ends the hold, not the wait. False: it isn't held.
bool Scheduler::Release(ProgramThread& thread) {
    switch (thread.held) {
        case ProgramThread::Held::kNowhere:
            return false;
        case ProgramThread::Held::kAtGate:
            thread.gate.Open();
            return true;
        case ProgramThread::Held::kInPoll:
            eventfd_write(thread.alarm, 1);
            return true;
    }
    return false;
}

}  // namespace pagersim
