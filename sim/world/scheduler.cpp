// Threads that wait and are woken. Tested by
// tests/unit/sim/{clock,threads,descriptors}_test.cpp.
#include "sim/world/scheduler.h"

#include <algorithm>

#include "sim/preload/real_calls.h"
#include "sim/world/locked.h"

namespace pagersim {

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

void Scheduler::WakeForInput(LineSet lines) {
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
    looks_ = false;
    if (HasTurn()) {
        Release(thread);
    } else {
        link_->Want();
    }
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

}  // namespace pagersim
