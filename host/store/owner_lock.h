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

#include "host/files/descriptor.h"

namespace host {

class OwnerLock {
 public:
    explicit OwnerLock(const std::string& database);
    OwnerLock(const OwnerLock&) = delete;
    OwnerLock& operator=(const OwnerLock&) = delete;

    // This process's number, above 0. The first call takes the lock.
    int32_t Mine();

    // Whether the process with this number still lives. Looking makes no file.
    bool Lives(int32_t owner);

 private:
    // Require mutex_ held.
    void OpenToTake();
    bool IsTaken(int32_t owner);

    const std::string database_;
    const std::string path_;
    std::mutex mutex_;
    Descriptor file_;   // guarded by mutex_; open to read, and to write from when a number is taken
    int32_t mine_ = 0;  // guarded by mutex_; 0 until it is taken
};

}  // namespace host

#endif
