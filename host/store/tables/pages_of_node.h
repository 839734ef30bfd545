// The pages of all lines that a node serves, taken from them at once: by a few statements, however
// many there are. What becomes of each is what host/pages/page_owner.h makes of a single one.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_PAGES_OF_NODE_H
#define PAGERFWD_HOST_STORE_TABLES_PAGES_OF_NODE_H

#include <cstdint>
#include <string>

#include "host/store/connection.h"

namespace host {

// Requires a write transaction. Pages that a library has become open deliveries without a line,
// unless their alarms need no paging any more; those that had still to be handed over lose their
// line. why: for the history. Returns how many wait for a line.
int64_t TakePagesOfNode(Connection& connection, const std::string& node, const std::string& why);

}  // namespace host

#endif
