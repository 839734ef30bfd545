// Which lease a node of this host has had last: kept beside the database's locks. Who has the
// node's lock, which its lines inherit, knows that this holder is no more, and needn't wait until
// the lease is over. A holder's name and number would not tell: other hosts may be called the same.
//
// Errors     None: what can't be read or written costs the wait.
#ifndef PAGERFWD_HOST_PROCESS_LEASE_RECORD_H
#define PAGERFWD_HOST_PROCESS_LEASE_RECORD_H

#include <cstdint>
#include <string>

namespace host {

struct HeldLease {
    std::string node;
    int64_t term = 0;
    std::string holder;
};

void RecordLease(const std::string& database, const HeldLease& lease);
bool WasOfThisHost(const std::string& database, const HeldLease& lease);

}  // namespace host

#endif
