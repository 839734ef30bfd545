// A wake-up between two threads that one can wait for with a limit, by `poll`: the waiter's time is
// then that of every other wait in the library, also where a simulated clock replaces it.
#ifndef PAGERFWD_ENGINE_WAKE_SIGNAL_H
#define PAGERFWD_ENGINE_WAKE_SIGNAL_H

// Order      Once raised it stays raised until it is lowered.
// Threads    Any thread may raise it, lower it and wait for it.
// Errors     When no descriptors are left, IsOpen is false and nothing else may be called.
class WakeSignal {
 public:
    WakeSignal();
    ~WakeSignal();
    WakeSignal(const WakeSignal&) = delete;
    WakeSignal& operator=(const WakeSignal&) = delete;

    bool IsOpen() const { return m_event >= 0; }

    void Raise();

    // As it was made. Lowered is no mistake.
    void Lower();

    // Whether it was raised within timeoutMs. One single poll of exactly this length, unless a
    // signal handler of the process interrupts it.
    bool Wait(int timeoutMs) const;

 private:
    const int m_event;  // readable: raised
};

#endif
