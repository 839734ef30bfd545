// Mutexes, read-write locks and conditions: a thread that waits for another waits in the
// simulation, so that time can pass meanwhile. Tested by tests/unit/sim/locks_test.cpp.
#include <atomic>
#include <cerrno>

#include "sim/preload/interpose.h"

namespace pagersim {
namespace {

// How many threads wait in the simulation for any lock, for any condition. A waiter counts itself
// before it looks a last time, the other side looks here after it has changed something: one of
// them sees the other.
std::atomic<int> lock_waiters{0};
std::atomic<int> condition_waiters{0};

class Counted {
 public:
    explicit Counted(std::atomic<int>& counter) : counter_(counter) { ++counter_; }
    ~Counted() { --counter_; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

 private:
    std::atomic<int>& counter_;
};

bool Any(const std::atomic<int>& counter) {
    std::atomic_thread_fence(std::memory_order_seq_cst);
    return counter.load() != 0;
}

// Tries until it works, and waits in the simulation in between; EBUSY when that has ended.
template <typename Object>
int LockInWorld(Object* object, int (*attempt)(Object*)) {
    const Locked locked;
    const Counted counted(lock_waiters);
    Wait wait{WaitKind::kLock};
    wait.object = object;
    for (;;) {
        const int result = attempt(object);
        if (result != EBUSY || !World::IsActive()) {
            return result;
        }
        TheWorld().Threads().WaitFor(*Me(), wait);
    }
}

// Locks by `attempt` in the simulation, by `lock` outside it.
template <typename Object>
int LockBy(Object* object, int (*attempt)(Object*), int (*lock)(Object*)) {
    if (!IsServed()) {
        return lock(object);
    }
    int result = attempt(object);
    if (result == EBUSY) {
        result = LockInWorld(object, attempt);
    }
    return result == EBUSY ? lock(object) : result;
}

// A mutex that answers its owner's second lock itself must get to see it.
bool AnswersItself(const pthread_mutex_t* mutex) {
    return (mutex->__data.__kind & 3) == PTHREAD_MUTEX_ERRORCHECK_NP &&
           mutex->__data.__owner == gettid();
}

int LockMutex(pthread_mutex_t* mutex) {
    if (AnswersItself(mutex)) {
        return Real().pthread_mutex_lock(mutex);
    }
    return LockBy<pthread_mutex_t>(mutex, Real().pthread_mutex_trylock, Real().pthread_mutex_lock);
}

// After an unlock: those who wait for the lock try again, for a mutex the first of them.
void WakeLockWaiters(const void* object, bool all) {
    if (!Any(lock_waiters)) {
        return;
    }
    const Locked locked;
    if (all) {
        TheWorld().Threads().WakeAll(WaitKind::kLock, object);
    } else {
        TheWorld().Threads().WakeFirst(WaitKind::kLock, object);
    }
}

int UnlockMutex(pthread_mutex_t* mutex) {
    const int result = Real().pthread_mutex_unlock(mutex);
    WakeLockWaiters(mutex, false);
    return result;
}

// Frees the mutex, waits by `waiter`, takes the mutex again. ETIMEDOUT or 0.
template <typename Waiter>
int WaitForCondition(pthread_cond_t* condition, pthread_mutex_t* mutex, Waiter waiter) {
    Waking waking = Waking::kEvent;
    {
        const Locked locked;
        const Counted counted(condition_waiters);
        Wait wait{WaitKind::kCondition};
        wait.object = condition;
        UnlockMutex(mutex);  // Who signals after this needs our lock to find us: we wait by then.
        waking = waiter(wait);
    }
    LockMutex(mutex);
    return waking == Waking::kDeadline ? ETIMEDOUT : 0;
}

int WaitForCondition(pthread_cond_t* condition, pthread_mutex_t* mutex, Micros deadline) {
    return WaitForCondition(condition, mutex, [deadline](Wait& wait) {
        wait.deadline = deadline;
        return TheWorld().Threads().WaitFor(*Me(), wait);
    });
}

// The wall clock's time in virtual time.
Micros VirtualDeadline(const timespec& wall) {
    const Micros since1970 = ToMicros(wall.tv_sec, wall.tv_nsec);
    return since1970 == kNever ? kNever : since1970 - TheWorld().WallNow() + TheWorld().Now();
}

// How long it is until then by a clock that is real; at least 0.
timespec RealTimeUntil(clockid_t clock, const timespec& until) {
    timespec now{};
    Real().clock_gettime(clock, &now);
    constexpr long kSecond = 1'000'000'000;
    timespec left{until.tv_sec - now.tv_sec, until.tv_nsec - now.tv_nsec};
    if (left.tv_nsec < 0) {
        left.tv_nsec += kSecond;
        --left.tv_sec;
    }
    return left.tv_sec < 0 ? timespec{0, 0} : left;
}

int WaitForConditionUntil(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                          const timespec& until) {
    if (clock == CLOCK_REALTIME) {
        return WaitForCondition(condition, mutex, VirtualDeadline(until));
    }
    return WaitForCondition(condition, mutex, [&](Wait& wait) {
        return TheWorld().Threads().WaitForReally(*Me(), wait, RealTimeUntil(clock, until));
    });
}

// The clock that a condition was made with.
clockid_t ClockOf(const pthread_cond_t* condition) {
    constexpr unsigned kMonotonicBit = 2;
    return (condition->__data.__wrefs & kMonotonicBit) != 0 ? CLOCK_MONOTONIC : CLOCK_REALTIME;
}

void WakeConditionWaiters(pthread_cond_t* condition, bool all) {
    if (!Any(condition_waiters)) {
        return;
    }
    const Locked locked;
    if (all) {
        TheWorld().Threads().WakeAll(WaitKind::kCondition, condition);
    } else {
        TheWorld().Threads().WakeFirst(WaitKind::kCondition, condition);
    }
}

}  // namespace

PAGERSIM_INTERPOSED int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    return LockMutex(mutex);
}

PAGERSIM_INTERPOSED int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
    return UnlockMutex(mutex);
}

PAGERSIM_INTERPOSED int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept {
    return LockBy<pthread_rwlock_t>(lock, Real().pthread_rwlock_tryrdlock,
                                    Real().pthread_rwlock_rdlock);
}

PAGERSIM_INTERPOSED int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
    return LockBy<pthread_rwlock_t>(lock, Real().pthread_rwlock_trywrlock,
                                    Real().pthread_rwlock_wrlock);
}

PAGERSIM_INTERPOSED int pthread_rwlock_unlock(pthread_rwlock_t* lock) noexcept {
    const int result = Real().pthread_rwlock_unlock(lock);
    WakeLockWaiters(lock, true);
    return result;
}

PAGERSIM_INTERPOSED int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    if (!IsServed()) {
        return Real().pthread_cond_wait(condition, mutex);
    }
    return WaitForCondition(condition, mutex, kNever);
}

PAGERSIM_INTERPOSED int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                               const timespec* until) {
    if (!IsServed()) {
        return Real().pthread_cond_timedwait(condition, mutex, until);
    }
    return WaitForConditionUntil(condition, mutex, ClockOf(condition), *until);
}

PAGERSIM_INTERPOSED int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                               clockid_t clock, const timespec* until) {
    if (!IsServed()) {
        return Real().pthread_cond_clockwait(condition, mutex, clock, until);
    }
    return WaitForConditionUntil(condition, mutex, clock, *until);
}

PAGERSIM_INTERPOSED int pthread_cond_signal(pthread_cond_t* condition) noexcept {
    WakeConditionWaiters(condition, false);
    return Real().pthread_cond_signal(condition);
}

PAGERSIM_INTERPOSED int pthread_cond_broadcast(pthread_cond_t* condition) noexcept {
    WakeConditionWaiters(condition, true);
    return Real().pthread_cond_broadcast(condition);
}

}  // namespace pagersim
