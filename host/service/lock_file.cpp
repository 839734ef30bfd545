// A locked file. Tested by tests/unit/host/lock_file_test.cpp.
#include "host/service/lock_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "host/store/connection.h"

namespace host {
namespace {

constexpr mode_t kForEveryone = 0666;

// In a folder that everyone may write to, the system refuses to "create" another user's file.
int OpenLockFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
    return file >= 0 || errno != ENOENT
               ? file
               : open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kForEveryone);
}

struct flock WholeFile() {
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return whole;
}

}  // namespace

LockFile::LockFile(std::string path) : path_(std::move(path)), file_(OpenLockFile(path_)) {
    if (file_ < 0) {
        throw StoreError(path_ + ": the lock file can't be opened: " + std::strerror(errno));
    }
}

LockFile::~LockFile() {
    if (file_ >= 0) {
        close(file_);
    }
}

LockFile::LockFile(LockFile&& other) noexcept
    : path_(std::move(other.path_)), file_(std::exchange(other.file_, -1)) {}

bool LockFile::TryTake(const std::string& holder) {
    struct flock whole = WholeFile();
    if (fcntl(file_, F_OFD_SETLK, &whole) != 0) {
        if (errno == EAGAIN || errno == EACCES) {
            return false;
        }
        throw StoreError(path_ + ": can't be locked: " + std::strerror(errno));
    }
    const std::string word = holder + ", process " + std::to_string(getpid()) + "\n";
    // Only for messages: on a full disk the lock holds all the same.
    if (ftruncate(file_, 0) == 0 && pwrite(file_, word.data(), word.size(), 0) < 0) {
        return true;
    }
    return true;
}

bool LockFile::IsTaken() {
    struct flock whole = WholeFile();
    if (fcntl(file_, F_OFD_GETLK, &whole) != 0) {
        throw StoreError(path_ + ": can't be looked at: " + std::strerror(errno));
    }
    return whole.l_type != F_UNLCK;
}

std::string LockFile::Holder() {
    std::array<char, 100> word{};
    const ssize_t size = pread(file_, word.data(), word.size() - 1, 0);
    std::string holder(word.data(), size > 0 ? static_cast<size_t>(size) : 0);
    holder.erase(std::min(holder.find('\n'), holder.size()));
    return holder.empty() ? "another process" : holder;
}

}  // namespace host
