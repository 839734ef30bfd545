// Tells the service manager how the engine is doing: "READY=1", "STOPPING=1", "STATUS=...", as one
// datagram to the socket that the environment variable NOTIFY_SOCKET names.
//
// Errors     None: without a manager, or with one that has gone, nothing happens. One that doesn't
//            listen, so that its socket is full, misses the message; nobody waits for it.
#ifndef PAGERFWD_HOST_PROCESS_SYSTEMD_H
#define PAGERFWD_HOST_PROCESS_SYSTEMD_H

#include <ctime>
#include <optional>
#include <string>

namespace host {

bool HasManager();
void NotifyManager(const std::string& message);

// Tells a manager that watches (WATCHDOG_USEC) that the engine goes on: "WATCHDOG=1", twice in the
// time after which it would be ended as stuck.
class Heartbeat {
 public:
    Heartbeat();
    void Beat();

 private:
    std::optional<std::time_t> between_;  // seconds; none: nobody watches
    std::time_t last_ = 0;
};

}  // namespace host

#endif
