// The pages that an engine takes up when it starts.
#ifndef PAGERFWD_HOST_STORE_PENDING_H
#define PAGERFWD_HOST_STORE_PENDING_H

#include <cstdint>

#include "host/store/connection.h"

namespace host {

// How many events are in state 2, with an alarm in state 2 and a pager that is known. Events hidden
// by a process count: if it has ended, the start brings them back.
int64_t CountPendingPages(Connection& connection);

// Whether there are pages whose alarm has been acknowledged: a running engine drops them within a
// minute.
bool HasAcknowledgedPages(Connection& connection);

}  // namespace host

#endif
