// The turn of a process in a shared world: taken, given up, done without. Tested by
// tests/unit/sim/shared_world_test.cpp.
#include "sim/world/scheduler.h"

#include <utility>

#include "sim/world/world.h"

namespace pagersim {
namespace {

// A process that needs nobody for long leaves the others a turn all the same: somebody may have
// come from outside.
constexpr int kStepsAlone = 256;

}  // namespace

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
        if (std::exchange(looks_, false)) {
            link_->Watched().Renew();  // There was nothing.
        }
        if (sleeper == nullptr || !GoOnAlone(*sleeper)) {
            GiveUpTurn(sleeper);
        }
    }
}

// A step of time that concerns nobody else.
bool Scheduler::GoOnAlone(ProgramThread& sleeper) {
    if (sleeper.wait->deadline >= horizon_ ||
        ((others_ & kOnlookers) != 0 && HasTouched(&sleeper)) || ++steps_alone_ >= kStepsAlone ||
        link_->Watched().OthersAreReady()) {
        return false;
    }
    ran_ = false;
    JumpTo(sleeper.wait->deadline);
    link_->SetNow(Now());
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
    LineSet lines = 0;
    for (const auto& thread : threads_) {
        if (thread->wait == nullptr) {
            continue;
        }
        const bool is_outside = thread->wait->kind == WaitKind::kOutside;
        flags &= is_outside ? ~0U : ~uint32_t{kAbsent};
        flags |= is_outside || thread->wait->count > 0 ? uint32_t{kOutside} : 0;
        flags |= thread->wait->ready == nullptr ? 0U
                 : thread->wait->by_files       ? uint32_t{kWatchesFiles}
                                                : uint32_t{kWatches};
        lines |= thread->wait->lines;
    }
    flags |= HasTouched(sleeper) ? uint32_t{kTouched} : 0;
    used_since_ = false;
    ran_ = false;
    CollectDescriptors();
    link_->Watched().Set(descriptors_);
    link_->Rest(sleeper != nullptr ? sleeper->wait->deadline.count() : kNever.count(), flags,
                lines);
}

void Scheduler::Hear(const Reply& reply) {
    now_.store(reply.now, std::memory_order_relaxed);
    link_->SetNow(Micros(reply.now));
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
        looks_ = true;
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

// For the one who has an eye on it.
void Scheduler::LookAtLink() {
    Reply turn{};
    if (!HasTurn() && link_->ReceiveTurn(turn, false)) {
        TakeTurn(turn);
    }
}

}  // namespace pagersim
