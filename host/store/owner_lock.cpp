// A locked byte per process. Tested by tests/unit/host/owner_lock_test.cpp.
#include "host/store/owner_lock.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <random>

#include "host/files/shared_file.h"
#include "host/store/connection.h"
#include "host/store/database_name.h"

namespace host {
namespace {

// Locks of the open file, not of the process: another part of the process that opens and closes the
// same file can't drop them.
struct flock ByteOf(int32_t owner) {
    struct flock byte {};
    byte.l_type = F_WRLCK;
    byte.l_whence = SEEK_SET;
    byte.l_start = owner;
    byte.l_len = 1;
    return byte;
}

// Drawn, so that a number is not met again while rows of its last owner may still be marked with
// it.
int32_t DrawNumber() {
    std::random_device source;
    return std::uniform_int_distribution<int32_t>(1,
                                                  std::numeric_limits<int32_t>::max() - 1)(source);
}

}  // namespace

OwnerLock::OwnerLock(const std::string& database)
    : database_(BesideOwner(database)), path_(BesideName(database) + "-owners") {}

void OwnerLock::OpenToTake() {
    try {
        file_ = OpenOrMakeShared(path_, O_RDWR, OwnershipOf(database_));
    } catch (const FileError& error) {
        throw StoreAway(path_ + ": " + error.what());
    }
}

int32_t OwnerLock::Mine() {
    const std::lock_guard guard(mutex_);
    if (mine_ != 0) {
        return mine_;
    }
    OpenToTake();
    while (mine_ == 0) {
        const int32_t drawn = DrawNumber();
        struct flock byte = ByteOf(drawn);
        if (fcntl(file_.Number(), F_OFD_SETLK, &byte) == 0) {
            mine_ = drawn;
        } else if (errno != EAGAIN && errno != EACCES) {
            throw StoreError(path_ + ": can't be locked: " + std::strerror(errno));
        }
    }
    return mine_;
}

bool OwnerLock::IsTaken(int32_t owner) {
    try {
        if (!file_.IsOpen()) {
            file_ = OpenShared(path_, O_RDONLY);
        }
    } catch (const FileError& error) {
        throw StoreAway(path_ + ": " + error.what());
    }
    if (!file_.IsOpen()) {
        return false;  // nobody has taken any
    }
    struct flock byte = ByteOf(owner);
    if (fcntl(file_.Number(), F_OFD_GETLK, &byte) != 0) {
        throw StoreError(path_ + ": can't be looked at: " + std::strerror(errno));
    }
    return byte.l_type != F_UNLCK;
}

bool OwnerLock::Lives(int32_t owner) {
    const std::lock_guard guard(mutex_);
    if (owner <= 0) {
        return false;  // nobody's, whoever wrote it
    }
    return owner == mine_ || IsTaken(owner);
}

}  // namespace host
