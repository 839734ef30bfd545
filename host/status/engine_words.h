// Who serves a site, in words.
#ifndef PAGERFWD_HOST_STATUS_ENGINE_WORDS_H
#define PAGERFWD_HOST_STATUS_ENGINE_WORDS_H

#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/nodes.h"
#include "host/text/encoding.h"

namespace host {

// "runs, drained": one that has ended in order has given its lease back.
std::string StateOf(const NodeState& node);

// Who serves the database: "run, process 12", or of several hosts the nodes that live. Empty:
// nobody. In UTF-8. Throws StoreError.
std::string EngineOf(Connection& connection, const std::string& database, Encoding encoding);

}  // namespace host

#endif
