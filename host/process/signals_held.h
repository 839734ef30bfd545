// Keeps signals from the threads that are started meanwhile, and from this one: they come when the
// object ends, to a thread that knows what to do with them.
#ifndef PAGERFWD_HOST_PROCESS_SIGNALS_HELD_H
#define PAGERFWD_HOST_PROCESS_SIGNALS_HELD_H

#include <signal.h>

namespace host {

class SignalsHeld {
 public:
    SignalsHeld() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
    sigset_t before_{};
};

}  // namespace host

#endif
