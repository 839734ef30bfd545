// Writes that the file system refused, kept in memory until it takes them.
//
// On a full disk every commit fails, while the pages go on: what a page has come to must not be
// forgotten. A transaction that is refused is kept as the statements that it was made of. Every
// later transaction of this process runs them again before its own, and commits all of it or
// nothing: what has been kept is read as if it were written, and is written by the first commit
// that goes through. For a process that ends before that there is process/last_writes.h; with one
// that is killed, it is lost.
//
// Threads    Any, each with a connection of its own.
// Errors     StoreError. A kept statement that fails by itself is told, and given up.
#ifndef PAGERFWD_HOST_STORE_HELD_WRITES_H
#define PAGERFWD_HOST_STORE_HELD_WRITES_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

namespace host {

class Connection;

// A statement that writes, with what was bound to it.
struct HeldWrite {
    std::string sql;
    std::vector<std::variant<int64_t, std::string, std::monostate>> values;  // the last: NULL
};

class HeldWrites {
 public:
    bool Any() const { return any_; }
    // How many transactions.
    size_t Count();

    // Runs again what is kept. Requires: a write transaction, begun just now.
    void Replay(Connection& connection);

    // Commits a transaction that was begun with Replay. writes: its own statements, which are kept
    // where the file system refuses.
    void Commit(Connection& connection, std::vector<HeldWrite> writes);

 private:
    using Transaction = std::vector<HeldWrite>;

    void Keep(std::vector<HeldWrite> writes, const std::string& why);
    void Forget(Connection& connection);

    // Taken by who has the right to write in the database; given up behind a commit, whatever came
    // of it: so whoever has the right to write next sees what was kept before.
    std::mutex mutex_;
    std::vector<Transaction> transactions_;  // guarded by mutex_
    std::atomic<bool> any_{false};           // written under mutex_
};

}  // namespace host

#endif
