// The program's threads and the virtual clock that moves when all of them wait.
#ifndef PAGERFWD_SIM_WORLD_SCHEDULER_H
#define PAGERFWD_SIM_WORLD_SCHEDULER_H

#include <poll.h>

#include <atomic>
#include <memory>
#include <vector>

#include "sim/far_end.h"
#include "sim/world/link.h"
#include "sim/world/program_thread.h"
#include "sim/world/timeline.h"

namespace pagersim {

constexpr Milliseconds kPatience{60'000};

// Lets threads wait, and decides who goes on and when.
//
// A thread is either running or waiting. The last one to wait looks who can go on: a thread whose
// real descriptor is ready, else, time jumping there, the earliest event or deadline. At a deadline
// one thread is woken, the others of that instant when it waits again. The waker counts the woken
// thread as running, so that no second jump can happen before it really runs.
//
// In a world of several processes (Share) threads go on only while the process has the turn. When
// its last thread waits it gives the turn up, and time is what the next turn says; one of the
// waiting threads keeps an eye on the link meanwhile.
//
// Threads    Every operation requires a Locked guard, unless it says otherwise.
class Scheduler final : public Timeline {
 public:
    // From now on this process is one of several.
    void Share(Link& link) { link_ = &link; }

    // What an answer of the world's server says of time.
    void Hear(const Reply& reply);

    // Waits for the turn without leaving the calling thread, whatever it is.
    void FetchTurn();

    // Whether there are other processes in the world. No lock needed.
    bool HasCompany() const { return (others_.load() & kCompany) != 0; }

    // Forgets time and events; all registered threads go on.
    void Reset();

    Micros Now() const override {  // No lock needed.
        return Micros(now_.load(std::memory_order_relaxed));
    }
    EventQueue& Events() override { return events_; }

    // Runs what is due by now.
    void RunDueEvents();

    // Registers a thread, as running.
    ProgramThread& Add(std::unique_ptr<ProgramThread> thread);
    void Remove(ProgramThread& thread);

    // A registered thread that hasn't been joined, or null.
    ProgramThread* Find(pthread_t handle);

    bool HasOthers() const { return threads_.size() > 1; }

    // The thread has run to its end.
    void End(ProgramThread& me);

    // After fork, in the child: only `me` is left. Null: none.
    void KeepOnly(ProgramThread* me);

    // Waits; the lock is free meanwhile. What ended the wait is in the result.
    Waking WaitFor(ProgramThread& me, Wait& wait);

    // Waits for another thread's deed, at most for so much real time. Virtual time stands still
    // meanwhile. kEvent or kDeadline.
    Waking WaitForReally(ProgramThread& me, Wait& wait, const timespec& limit);

    // Around a call of the system in which the thread may wait for the world outside. The lock is
    // not held during the call.
    void GoOutside(ProgramThread& me, Wait& wait);
    void ComeBack(ProgramThread& me);

    void WakeForInput(LineSet lines) override;

    // Of those that wait for `object` in this way the first, or all, go on.
    void WakeFirst(WaitKind kind, const void* object);
    void WakeAll(WaitKind kind, const void* object);

    // Some descriptor may have become ready by a call of the program. No lock needed.
    void NoteDescriptorUse() { descriptors_used_.store(true, std::memory_order_relaxed); }

    // When all threads wait for each other, for ever: the real time until the process says so and
    // aborts. 0: it waits on.
    void SetPatience(Milliseconds real) { patience_ = real; }

 private:
    // A thread that polls a quiet line makes a jump a look. Descriptors that the program itself
    // hasn't used since are not asked about at each of them.
    static constexpr int kLooksPerCheck = 16;

    bool HasTurn() const { return link_ == nullptr || link_->HasTurn(); }
    void AwaitGoingOn(ProgramThread& me);
    void Leave(ProgramThread& me, Wait& wait);
    void Wake(ProgramThread& thread, Waking why);
    bool Release(ProgramThread& thread);
    void LetTimePass();
    void RestInWorld();
    bool GoOnAlone(ProgramThread& sleeper);
    bool HasTouched(const ProgramThread* sleeper) const;
    void GiveUpTurn(const ProgramThread* sleeper);
    void TakeTurn(const Reply& turn);
    void LookAtLink();
    void TellWaits() const;
    void LookAfterOthers();
    void JumpTo(Micros when);
    ProgramThread* EarliestDeadline() const;
    bool WakeByDescriptor(bool next_is_look);
    bool WakeByCondition();
    void CollectDescriptors();
    void Hold(ProgramThread& me);
    bool IsAlone() const { return link_ != nullptr && threads_.size() == 1; }
    bool HoldAtLink();
    bool HoldAtGate(ProgramThread& me);
    bool HoldInPoll(ProgramThread& me, bool watches);
    bool IsStuck();
    [[noreturn]] void ReportStuck() const;

    std::vector<std::unique_ptr<ProgramThread>> threads_;
    int running_ = 0;
    uint64_t turns_ = 0;
    EventQueue events_;
    std::atomic<int64_t> now_{0};

    std::vector<pollfd> descriptors_;            // of all waiting threads, one after the other
    std::vector<ProgramThread*> their_threads_;  // whose descriptors_[i] is
    std::atomic<bool> descriptors_used_{false};
    int looks_unchecked_ = 0;

    Link* link_ = nullptr;
    bool watched_ = false;             // a thread has an eye on the link
    bool used_since_ = false;          // a descriptor, since the turn before
    bool ran_ = true;                  // a thread, in this turn
    bool looks_ = false;               // this turn is for a look, which has found nothing yet
    Micros horizon_{0};                // up to it time is this process's own
    std::atomic<uint32_t> others_{0};  // in the world, see Others
    int steps_alone_ = 0;
    Milliseconds patience_ = kPatience;
};

}  // namespace pagersim

#endif
