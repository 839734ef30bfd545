// Who waits, who goes on, and when. Tested by tests/unit/sim/{clock,threads,descriptors}_test.cpp.
#include "sim/world/scheduler.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "sim/preload/real_calls.h"
#include "sim/world/locked.h"
#include "sim/world/world.h"

namespace pagersim {
namespace {

// A thread that polls a quiet line makes a jump a look. Descriptors that the program itself hasn't
// used since are not asked about at each of them.
constexpr int kLooksPerCheck = 16;

// A process that needs nobody for long leaves the others a turn all the same: somebody may have
// come from outside.
constexpr int kStepsAlone = 256;

// What other processes do may come to nobody's notice: a child that none of the world has started.
constexpr Milliseconds kBetweenLooks{100};

bool EndsBySignal(WaitKind kind) {
    return kind == WaitKind::kSleep || kind == WaitKind::kInput || kind == WaitKind::kProcess;
}

timespec ToTimespec(Milliseconds span) {
    return {static_cast<time_t>(span.count() / 1000),
            static_cast<long>(span.count() % 1000 * 1'000'000)};
}

const char* NameOf(WaitKind kind) {
    switch (kind) {
        case WaitKind::kSleep:
            return "sleeps";
        case WaitKind::kInput:
            return "waits for input";
        case WaitKind::kLook:
            return "looks at a quiet line";
        case WaitKind::kLock:
            return "waits for lock";
        case WaitKind::kCondition:
            return "waits for condition";
        case WaitKind::kJoin:
            return "waits for the end of thread";
        case WaitKind::kProcess:
            return "waits for another process";
        case WaitKind::kOutside:
            return "is in a call of the system";
    }
    return "";
}

}  // namespace

void Scheduler::Reset() {
    events_.Clear();
    now_ = 0;
    patience_ = kPatience;
    for (auto& thread : threads_) {
        thread->quiet_lines = 0;
        thread->quiet_looks = 0;
        thread->time_looks = 0;
        if (thread->wait != nullptr && thread->wait->kind != WaitKind::kOutside) {
            Wake(*thread, Waking::kStop);
        }
    }
}

void Scheduler::RunDueEvents() {
    while (events_.Next() <= Now()) {
        events_.RunNext();
    }
}

ProgramThread& Scheduler::Add(std::unique_ptr<ProgramThread> thread) {
    threads_.push_back(std::move(thread));
    ++running_;
    return *threads_.back();
}

void Scheduler::Remove(ProgramThread& thread) {
    if (!thread.ended) {
        --running_;
    }
    const auto it = std::find_if(threads_.begin(), threads_.end(),
                                 [&](const auto& each) { return each.get() == &thread; });
    if (it != threads_.end()) {
        threads_.erase(it);
    }
}

ProgramThread* Scheduler::Find(pthread_t handle) {
    for (auto& thread : threads_) {
        if (!thread->joined && pthread_equal(thread->handle, handle) != 0) {
            return thread.get();
        }
    }
    return nullptr;
}

void Scheduler::End(ProgramThread& me) {
    me.ended = true;
    --running_;
    if (me.alarm >= 0) {
        Real().close(me.alarm);
    }
    WakeAll(WaitKind::kJoin, &me);
    if (me.detached && !me.joined) {
        Remove(me);
    }
    LookAfterOthers();
}

void Scheduler::KeepOnly(ProgramThread* me) {
    // The others' records stay behind: their threads don't exist in this process.
    for (auto& thread : threads_) {
        if (thread.get() == me) {
            std::swap(threads_.front(), thread);
        }
    }
    for (auto& thread : threads_) {
        if (thread->alarm >= 0) {
            Real().close(thread->alarm);  // It is the parent's too.
            thread->alarm = -1;
        }
    }
    threads_.resize(me != nullptr ? 1 : 0);
    running_ = me != nullptr && !me->ended ? 1 : 0;
}

Waking Scheduler::WaitFor(ProgramThread& me, Wait& wait) {
    me.quiet_lines = 0;
    me.quiet_looks = 0;
    me.time_looks = 0;
    Leave(me, wait);
    AwaitGoingOn(me);
    return me.waking;
}

void Scheduler::AwaitGoingOn(ProgramThread& me) {
    while (me.wait != nullptr || !HasTurn()) {
        LetTimePass();
        if (me.wait != nullptr || !HasTurn()) {
            Hold(me);
        }
    }
}

Waking Scheduler::WaitForReally(ProgramThread& me, Wait& wait, const timespec& limit) {
    Leave(me, wait);
    ++running_;  // for time it isn't waiting
    me.gate.Close();
    me.held = ProgramThread::Held::kAtGate;
    {
        const Unlocked unlocked;
        me.gate.Pass(limit);
    }
    me.held = ProgramThread::Held::kNowhere;
    if (me.wait == nullptr) {
        --running_;  // It was counted twice.
        return me.waking;
    }
    me.wait = nullptr;
    return Waking::kDeadline;
}

void Scheduler::GoOutside(ProgramThread& me, Wait& wait) {
    Leave(me, wait);
    LookAfterOthers();
}

void Scheduler::ComeBack(ProgramThread& me) {
    me.wait = nullptr;
    ++running_;
    ran_ = true;
    if (!HasTurn()) {
        link_->Want();
        AwaitGoingOn(me);
    }
}

void Scheduler::WakeForInput(unsigned lines) {
    for (auto& thread : threads_) {
        if (thread->wait != nullptr && (thread->wait->lines & lines) != 0) {
            Wake(*thread, Waking::kEvent);
        }
    }
}

void Scheduler::WakeFirst(WaitKind kind, const void* object) {
    ProgramThread* first = nullptr;
    for (auto& thread : threads_) {
        if (thread->wait != nullptr && thread->wait->kind == kind &&
            thread->wait->object == object &&
            (first == nullptr || thread->wait->turn < first->wait->turn)) {
            first = thread.get();
        }
    }
    if (first != nullptr) {
        Wake(*first, Waking::kEvent);
    }
}

void Scheduler::WakeAll(WaitKind kind, const void* object) {
    for (auto& thread : threads_) {
        if (thread->wait != nullptr && thread->wait->kind == kind &&
            thread->wait->object == object) {
            Wake(*thread, Waking::kEvent);
        }
    }
}

void Scheduler::Leave(ProgramThread& me, Wait& wait) {
    me.wait = &wait;
    if (wait.turn == 0) {
        wait.turn = ++turns_;
    }
    --running_;
}

void Scheduler::Wake(ProgramThread& thread, Waking why) {
    thread.wait = nullptr;
    thread.waking = why;
    ++running_;
    ran_ = true;
    if (HasTurn()) {
        Release(thread);
    } else {
        link_->Want();
    }
}

// As long as nobody runs: the next who can, does. Afterwards nobody runs only if there is no event
// and no deadline left.
void Scheduler::LetTimePass() {
    if (link_ != nullptr) {
        RestInWorld();
        return;
    }
    while (running_ == 0) {
        ProgramThread* const sleeper = EarliestDeadline();
        if (WakeByDescriptor(sleeper != nullptr && sleeper->wait->kind == WaitKind::kLook)) {
            return;
        }
        const Micros event = events_.Next();
        if (sleeper != nullptr && sleeper->wait->deadline < event) {
            JumpTo(sleeper->wait->deadline);
            Wake(*sleeper, Waking::kDeadline);
        } else if (event != kNever) {
            JumpTo(event);
            RunDueEvents();
        } else {
            return;
        }
    }
}

// In a world of several processes: what can go on now does, else the turn goes to the others.
void Scheduler::RestInWorld() {
    while (running_ == 0 && HasTurn()) {
        ProgramThread* const sleeper = EarliestDeadline();
        const bool is_look = sleeper != nullptr && sleeper->wait->kind == WaitKind::kLook;
        if (WakeByDescriptor(is_look) || WakeByCondition()) {
            return;
        }
        if (sleeper != nullptr && sleeper->wait->deadline <= Now()) {
            Wake(*sleeper, Waking::kDeadline);
            return;
        }
        if (sleeper == nullptr || !GoOnAlone(*sleeper)) {
            GiveUpTurn(sleeper);
        }
    }
}

// A step of time that concerns nobody else.
bool Scheduler::GoOnAlone(ProgramThread& sleeper) {
    if (sleeper.wait->deadline >= horizon_ ||
        ((others_ & kOnlookers) != 0 && HasTouched(&sleeper)) || ++steps_alone_ >= kStepsAlone) {
        return false;
    }
    ran_ = false;
    JumpTo(sleeper.wait->deadline);
    link_->SetNow(Now().count());
    Wake(sleeper, Waking::kDeadline);
    return true;
}

// Something that others can see, as far as is known.
bool Scheduler::HasTouched(const ProgramThread* sleeper) const {
    const bool is_look = sleeper != nullptr && sleeper->wait->kind == WaitKind::kLook;
    return used_since_ || (ran_ && !is_look);
}

void Scheduler::GiveUpTurn(const ProgramThread* sleeper) {
    uint32_t flags = kAbsent;
    uint32_t lines = 0;
    for (const auto& thread : threads_) {
        if (thread->wait == nullptr) {
            continue;
        }
        const bool is_outside = thread->wait->kind == WaitKind::kOutside;
        flags &= is_outside ? ~0U : ~uint32_t{kAbsent};
        flags |= is_outside || thread->wait->count > 0 ? uint32_t{kOutside} : 0;
        flags |= thread->wait->count > 0 || thread->wait->ready != nullptr ? uint32_t{kWatches} : 0;
        lines |= thread->wait->lines;
    }
    flags |= HasTouched(sleeper) ? uint32_t{kTouched} : 0;
    used_since_ = false;
    ran_ = false;
    link_->Rest(sleeper != nullptr ? sleeper->wait->deadline.count() : kNever.count(), flags,
                lines);
}

void Scheduler::Hear(const Reply& reply) {
    now_.store(reply.now, std::memory_order_relaxed);
    link_->SetNow(reply.now);
    horizon_ = Micros(reply.horizon);
    others_ = reply.others;
    steps_alone_ = 0;
    WakeForInput(reply.input);
}

// Those who were to go on before it came do so now.
void Scheduler::TakeTurn(const Reply& turn) {
    if (turn.why == Why::kTell) {
        TellWaits();
    }
    if (turn.why == Why::kLook) {
        looks_unchecked_ = kLooksPerCheck;
    }
    for (auto& thread : threads_) {
        if (thread->wait == nullptr) {
            Release(*thread);
        }
    }
    TheWorld().Hear(turn);
}

void Scheduler::FetchTurn() {
    if (HasTurn()) {
        return;
    }
    link_->Want();
    Reply turn{};
    link_->ReceiveTurn(turn, true);
    TakeTurn(turn);
    LookAfterOthers();
}

bool Scheduler::WakeByCondition() {
    for (auto& thread : threads_) {
        if (thread->wait != nullptr && thread->wait->ready != nullptr &&
            thread->wait->ready(thread->wait->subject)) {
            Wake(*thread, Waking::kEvent);
            return true;
        }
    }
    return false;
}

bool Scheduler::HasConditions() const {
    return std::any_of(threads_.begin(), threads_.end(), [](const auto& thread) {
        return thread->wait != nullptr && thread->wait->ready != nullptr;
    });
}

// For one who leaves without being held here: if nobody runs now, somebody held must watch.
void Scheduler::LookAfterOthers() {
    LetTimePass();
    if (running_ > 0) {
        return;
    }
    // It finds that it still waits, and that nobody runs.
    for (auto& thread : threads_) {
        if (Release(*thread)) {
            return;
        }
    }
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

void Scheduler::JumpTo(Micros when) {
    if (when > Now()) {
        now_.store(when.count(), std::memory_order_relaxed);
    }
}

ProgramThread* Scheduler::EarliestDeadline() const {
    ProgramThread* earliest = nullptr;
    for (const auto& thread : threads_) {
        if (thread->wait == nullptr || thread->wait->deadline == kNever) {
            continue;
        }
        if (earliest == nullptr || thread->wait->deadline < earliest->wait->deadline ||
            (thread->wait->deadline == earliest->wait->deadline &&
             thread->wait->turn < earliest->wait->turn)) {
            earliest = thread.get();
        }
    }
    return earliest;
}

bool Scheduler::WakeByDescriptor(bool next_is_look) {
    const bool used = descriptors_used_.exchange(false, std::memory_order_relaxed);
    used_since_ = used_since_ || used;
    if (next_is_look && !used && ++looks_unchecked_ < kLooksPerCheck) {
        return false;
    }
    looks_unchecked_ = 0;
    CollectDescriptors();
    if (descriptors_.empty() || Real().poll(descriptors_.data(), descriptors_.size(), 0) <= 0) {
        return false;
    }
    for (size_t i = 0; i < descriptors_.size(); ++i) {
        if (descriptors_[i].revents != 0) {
            Wake(*their_threads_[i], Waking::kEvent);
            return true;
        }
    }
    return false;
}

void Scheduler::CollectDescriptors() {
    descriptors_.clear();
    their_threads_.clear();
    for (const auto& thread : threads_) {
        if (thread->wait == nullptr) {
            continue;
        }
        for (nfds_t i = 0; i < thread->wait->count; ++i) {
            if (thread->wait->descriptors[i].fd < 0) {
                continue;
            }
            descriptors_.push_back(thread->wait->descriptors[i]);
            their_threads_.push_back(thread.get());
        }
    }
}

void Scheduler::Hold(ProgramThread& me) {
    const bool watches = link_ == nullptr ? running_ == 0 : !HasTurn() && !watched_;
    const bool signals = me.wait != nullptr && me.wait->signals != nullptr;
    const bool undisturbed = watches || signals ? HoldInPoll(me, watches) : HoldAtGate(me);
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

// Nothing is going to happen in virtual time, or in this process before its turn: really waits
// until one of all threads' descriptors is ready, the turn comes, or another thread is back. False:
// a signal was handled.
bool Scheduler::HoldInPoll(ProgramThread& me, bool watches) {
    if (me.alarm < 0) {
        me.alarm = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    }
    const bool stuck = link_ == nullptr && watches && patience_ > Milliseconds::zero() && IsStuck();
    std::vector<pollfd> watched;
    if (watches && running_ == 0) {
        CollectDescriptors();
        watched = descriptors_;
    }
    watched.push_back({me.alarm, POLLIN, 0});
    watched_ = watches && link_ != nullptr;
    if (watched_) {
        watched.push_back({link_->Descriptor(), POLLIN, 0});
    }
    const timespec limit = ToTimespec(stuck ? patience_ : kBetweenLooks);
    const bool limited = stuck || (watched_ && HasConditions());
    const sigset_t* const signals = me.wait != nullptr ? me.wait->signals : nullptr;

    me.held = ProgramThread::Held::kInPoll;
    int ready = 0;
    bool interrupted = false;
    {
        const Unlocked unlocked;
        ready = Real().ppoll(watched.data(), watched.size(), limited ? &limit : nullptr, signals);
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

// For the one who has an eye on it.
void Scheduler::LookAtLink() {
    Reply turn{};
    if (!HasTurn() && link_->ReceiveTurn(turn, false)) {
        TakeTurn(turn);
    } else if (!HasTurn() && running_ == 0 && !WakeByDescriptor(false)) {
        WakeByCondition();
    }
}

bool Scheduler::IsStuck() {
    CollectDescriptors();
    return running_ == 0 && descriptors_.empty() && events_.Next() == kNever &&
           std::all_of(threads_.begin(), threads_.end(), [](const auto& thread) {
               return thread->ended ||
                      (thread->wait != nullptr && thread->wait->deadline == kNever &&
                       thread->wait->kind != WaitKind::kOutside);
           });
}

void Scheduler::ReportStuck() const {
    std::fprintf(stderr, "pagersim: after %lld ms all threads wait for each other, for ever:\n",
                 static_cast<long long>(Now().count() / 1000));
    TellWaits();
    std::abort();
}

void Scheduler::TellWaits() const {
    for (const auto& thread : threads_) {
        if (thread->wait != nullptr) {
            std::fprintf(stderr, "  thread %#llx %s %p\n",
                         static_cast<unsigned long long>(thread->handle),
                         NameOf(thread->wait->kind), thread->wait->object);
        }
    }
}

}  // namespace pagersim
