// What a node that begins finds pending from before: it is put in order, and the operator told.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_NODE_PENDING_PAGES_H
#define PAGERFWD_HOST_NODE_PENDING_PAGES_H

#include <chrono>
#include <optional>

#include "host/process/operator_log.h"
#include "host/store/connection.h"

namespace host {

// Rows with a cell that is too large to be read are off limit from now on.
void EmptyCells(Connection& connection, OperatorLog& log);

// discard_older: pages of alarms that are older than that are given up.
void LookAtPendingPages(Connection& connection,
                        const std::optional<std::chrono::seconds>& discard_older, OperatorLog& log);

}  // namespace host

#endif
