// What a signal asks for, made into something that a wait can end with: SIGTERM and SIGINT for the
// end, SIGHUP for reading anew.
//
// Ownership  One object per process. When it ends, the signals do again what they did before.
// Threads    One waits.
// Errors     std::system_error, where the system has no descriptor left.
#ifndef PAGERFWD_HOST_PROCESS_STOP_SIGNAL_H
#define PAGERFWD_HOST_PROCESS_STOP_SIGNAL_H

#include <signal.h>

#include <chrono>

namespace host {

class StopSignal {
 public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    // Waits so long, or until the end is asked for. True: it is.
    bool WaitFor(std::chrono::milliseconds longest);

    // Whether reading anew was asked for since the last call.
    static bool TakeHangUp();

    bool IsAskedFor() { return WaitFor(std::chrono::milliseconds{0}); }

    // Can be read as soon as the end is asked for, for a wait that ends with other things too.
    static int Descriptor();

 private:
    struct sigaction term_ {};
    struct sigaction interrupt_ {};
    struct sigaction hang_up_ {};
};

}  // namespace host

#endif
