// Tells the service manager how the engine is doing: "READY=1", "STOPPING=1", "STATUS=...", as one
// datagram to the socket that the environment variable NOTIFY_SOCKET names.
//
// Errors     None: without a manager, or with one that has gone, nothing happens.
#ifndef PAGERFWD_HOST_SERVICE_NOTIFY_H
#define PAGERFWD_HOST_SERVICE_NOTIFY_H

#include <string>

namespace host {

bool HasManager();
void NotifyManager(const std::string& message);

}  // namespace host

#endif
