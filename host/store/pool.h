// The databases that this process has open.
//
// The library opens its database for each operation. Behind that stands a connection that is kept:
// opened once for as many threads as work at once, and lent from then on.
//
// Threads    Any. A lease belongs to the thread that took it.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_POOL_H
#define PAGERFWD_HOST_STORE_POOL_H

#include <memory>
#include <string>

#include "host/store/connection.h"
#include "host/store/owner_lock.h"
#include "host/store/rows.h"

namespace host {

class DatabaseFile;

// What is kept of a connection from one lease to the next.
struct PooledConnection {
    explicit PooledConnection(const std::string& path) : connection(path) {}

    Connection connection;
    KnownLayouts layouts;
};

// What becomes of writes that the file system refuses. Kept: from this lease on, for all leases of
// the database in this process, as held_writes.h has it.
enum class Refusals { kThrown, kKept };

enum class FileNamed { kStill, kGone, kReplaced };

// A connection, lent. It goes back when the lease ends, unless a transaction is stuck on it.
class Lease {
 public:
    // Throws when the file doesn't exist or holds none of our tables. A file that was replaced by
    // another of its name is opened anew.
    explicit Lease(const std::string& path, Refusals refusals = Refusals::kThrown);
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    Connection& Database() { return lent_->connection; }
    KnownLayouts& Layouts() { return lent_->layouts; }
    OwnerLock& Owners();
    // Whether the name that was leased leads to this file still, to none, or to another.
    FileNamed Named() const;
    // How many transactions are kept in memory, since the file system has refused them.
    size_t CountHeld();

 private:
    std::shared_ptr<DatabaseFile> file_;
    std::unique_ptr<PooledConnection> lent_;
};

// From now on this process writes to the database for a node's term, or not at all; it holds for
// every lease that is taken from now on.
void WriteAs(const std::string& path, const Tenure& tenure);

// Closes every connection that isn't lent; one that is, closes when it comes back.
void CloseDatabases();

}  // namespace host

#endif
