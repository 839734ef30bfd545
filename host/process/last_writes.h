// What a process still has to write when it ends.
#ifndef PAGERFWD_HOST_PROCESS_LAST_WRITES_H
#define PAGERFWD_HOST_PROCESS_LAST_WRITES_H

#include <string>

#include "host/process/operator_log.h"
#include "host/store/pool.h"

namespace host {

// What a full disk has refused is kept in memory, and ends with the process: it is written now,
// into the room that was kept for it (files/last_room.h). Tells the operator if that fails, too.
void WriteLast(Lease& lease, const std::string& database, OperatorLog& log);

}  // namespace host

#endif
