// Locks of a database. Tested by tests/unit/host/locks_test.cpp.
#include "host/process/database_locks.h"

#include <filesystem>

#include "host/store/connection.h"
#include "host/store/database_name.h"

namespace host {
namespace {

LockFile LockBeside(const std::string& database, const char* what) {
    try {
        return LockFile(std::filesystem::weakly_canonical(BesideName(database)).string() + what,
                        OwnershipOf(BesideOwner(database)));
    } catch (const FileError& error) {
        const std::string remedy =
            IsOnServer(database)
                ? "; files of this host's lie there: make it, or name another with "
                  "--state or PAGERFWD_STATE"
                : "";
        throw StoreError(BesideOwner(database) + ": " + error.what() + remedy);
    }
}

}  // namespace

LockFile NodeLock(const std::string& database) {
    return LockBeside(database, "-node");
}

LockFile EngineLock(const std::string& database) {
    return LockBeside(database, "-engine");
}

LockFile TakeNodeLock(const std::string& database, const std::string& holder) {
    LockFile lock = NodeLock(database);
    if (!lock.TryTake(holder)) {
        throw InUse(ShownName(database) + ": served already by " + lock.Holder());
    }
    return lock;
}

}  // namespace host
