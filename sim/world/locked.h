// The one lock of the simulation.
#ifndef PAGERFWD_SIM_WORLD_LOCKED_H
#define PAGERFWD_SIM_WORLD_LOCKED_H

namespace pagersim {

// Holds the lock, and keeps errno. Inside another one in the same thread it does nothing.
class Locked {
 public:
    Locked();
    ~Locked();
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

 private:
    const int errno_;
};

// Frees the lock while the thread really waits. Requires: directly inside one Locked.
class Unlocked {
 public:
    Unlocked();
    ~Unlocked();
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;
};

// Whether the calling thread is inside a Locked: it runs the simulation's code or a far end's.
bool IsInside();

// Around fork, in the thread that forks.
void LockForFork();
void UnlockAfterFork();

}  // namespace pagersim

#endif
