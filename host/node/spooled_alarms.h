// Alarms that waited in the spool while the database was away (intake/spool.h), taken up by a node
// and told to its operator. Tested by tests/e2e/run_postgres_test.cpp.
#ifndef PAGERFWD_HOST_NODE_SPOOLED_ALARMS_H
#define PAGERFWD_HOST_NODE_SPOOLED_ALARMS_H

#include <string>

#include "host/intake/spool.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"

namespace host {

// Throws StoreError: they wait on then.
inline void TakeUpSpooled(const Spool& spool, Connection& connection, OperatorLog& log) {
    const TakenUp taken = spool.TakeUp(connection);
    if (taken.alarms > 0) {
        log.Info(std::to_string(taken.alarms) + " alarm(s) taken up that had waited");
    }
    for (const std::string& why : taken.refused) {
        log.Error("an alarm that waited can't be taken up: " + why);
    }
}

}  // namespace host

#endif
