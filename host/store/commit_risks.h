// By what a database may lose pages that were committed. See "Choosing a database" in the
// administrator's guide.
#ifndef PAGERFWD_HOST_STORE_COMMIT_RISKS_H
#define PAGERFWD_HOST_STORE_COMMIT_RISKS_H

#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

// Each in a sentence; none: no such thing is known. Throws StoreError.
std::vector<std::string> CommitRisks(Connection& connection);

// Whether a file system of this kind (statfs(2)) is one of a network, where locks of SQLite don't
// keep two hosts apart.
bool IsOfANetwork(unsigned long kind);

}  // namespace host

#endif
