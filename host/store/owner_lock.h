// Who owns what is marked in a database: a number for a process, which tells for as long as the
// process lives, and no longer, that it does.
//
// The number is the offset of a byte that the process keeps locked in the file "<database>-owners".
// The kernel gives the lock up when the process ends, however it ends. The file stays empty, and
// may be removed while no program has the database open.
//
// Ownership  One object per database and process: the number is the process's own.
// Threads    Any.
// Errors     StoreError, where the file can't be made or locked.
#ifndef PAGERFWD_HOST_STORE_OWNER_LOCK_H
#define PAGERFWD_HOST_STORE_OWNER_LOCK_H

#include <cstdint>
#include <mutex>
#include <string>

namespace host {

class OwnerLock {
 public:
    explicit OwnerLock(const std::string& database);
    ~OwnerLock();
    OwnerLock(const OwnerLock&) = delete;
    OwnerLock& operator=(const OwnerLock&) = delete;

    // This process's number, above 0. The first call takes the lock.
    int32_t Mine();

    // Whether the process with this number still lives.
    bool Lives(int32_t owner);

 private:
    void Open();

    const std::string path_;
    std::mutex mutex_;
    int file_ = -1;     // guarded by mutex_
    int32_t mine_ = 0;  // guarded by mutex_
};

}  // namespace host

#endif
