// Who goes on when nobody runs, and to which instant time jumps for it. Tested by
// tests/unit/sim/{clock,wait}_test.cpp.
#include "sim/world/scheduler.h"

#include <algorithm>

#include "sim/preload/real_calls.h"

namespace pagersim {
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

}  // namespace pagersim
