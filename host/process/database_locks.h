// Who serves a database: one node at a time, or one `pagerfwd test` or `line test` without a node;
// two would send every page twice.
//
//   "site.db-node"     held by the node
//   "site.db-engine"   held by the node and by the process of each of its lines, so that who comes
//                      behind a node that died sees its lines finish their pages
//
// Errors     InUse, which says who holds what; StoreError, where a lock file can't be made.
#ifndef PAGERFWD_HOST_PROCESS_DATABASE_LOCKS_H
#define PAGERFWD_HOST_PROCESS_DATABASE_LOCKS_H

#include <stdexcept>
#include <string>

#include "host/files/lock_file.h"

namespace host {

class InUse : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// Throw StoreError where there is no such database.
LockFile NodeLock(const std::string& database);
LockFile EngineLock(const std::string& database);

// Takes the node's. holder: the command, for the messages of others. Throws InUse.
LockFile TakeNodeLock(const std::string& database, const std::string& holder);

}  // namespace host

#endif
