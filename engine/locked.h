// Holds a lock with the operations Lock and Unlock for a scope.
#ifndef PAGERFWD_ENGINE_LOCKED_H
#define PAGERFWD_ENGINE_LOCKED_H

template <typename Lockable>
class Locked {
 public:
    explicit Locked(Lockable& lockable) : m_lockable(lockable) { m_lockable.Lock(); }
    ~Locked() { m_lockable.Unlock(); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

 private:
    Lockable& m_lockable;
};

#endif
