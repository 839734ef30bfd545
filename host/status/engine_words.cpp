// Who serves a site. Tested by tests/unit/host/cli_node_test.cpp and cli_status_test.cpp.
#include "host/status/engine_words.h"

#include "host/process/database_locks.h"

namespace host {
namespace {

// Of several hosts: "node "north" (a, process 12), node "south" (b, process 7)".
std::string LivingNodes(const std::vector<NodeState>& nodes, Encoding encoding) {
    std::string living;
    for (const NodeState& node : nodes) {
        if (node.lives) {
            living += (living.empty() ? "" : ", ") + std::string("node \"") +
                      Decode(node.node, encoding) + "\" (" + Decode(node.holder, encoding) + ")";
        }
    }
    return living;
}

std::string NameOf(const LockFile& lock) {
    const std::string words = lock.Words();
    return words.empty() ? lock.Holder() : words;
}

}  // namespace

std::string StateOf(const NodeState& node) {
    const char* const runs = node.lives ? "runs" : node.holder.empty() ? "not running" : "gone";
    return std::string(runs) + (node.drained ? ", drained" : "") +
           (node.of_site ? "" : ", not in the site file");
}

std::string EngineOf(Connection& connection, const std::string& database, Encoding encoding) {
    std::string living = LivingNodes(ReadNodes(connection), encoding);
    if (!living.empty()) {
        return living;
    }
    const LockFile lock = NodeLock(database);
    return lock.IsTaken() ? NameOf(lock) : std::string();
}

}  // namespace host
