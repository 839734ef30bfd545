// A locked file. Tested by tests/unit/host/lock_file_test.cpp.
#include "host/files/lock_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "host/store/connection.h"

namespace host {
namespace {

struct flock WholeFile() {
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return whole;
}

std::string WordsIn(const Descriptor& file) {
    std::array<char, 100> word{};
    const ssize_t size = pread(file.Number(), word.data(), word.size() - 1, 0);
    std::string words(word.data(), size > 0 ? static_cast<size_t>(size) : 0);
    words.erase(std::min(words.find('\n'), words.size()));
    return words;
}

}  // namespace

Descriptor LockFile::OpenToLook() const {
    try {
        return OpenShared(path_, O_RDONLY);
    } catch (const FileError& error) {
        throw StoreError(path_ + ": the lock file can't be opened: " + error.what());
    }
}

bool LockFile::TryTake(const std::string& holder) {
    try {
        if (!file_.IsOpen()) {
            file_ = OpenOrMakeShared(path_, O_RDWR, ownership_);
        }
    } catch (const FileError& error) {
        throw StoreError(path_ + ": the lock file can't be opened: " + error.what());
    }
    struct flock whole = WholeFile();
    if (fcntl(file_.Number(), F_OFD_SETLK, &whole) != 0) {
        if (errno == EAGAIN || errno == EACCES) {
            return false;
        }
        throw StoreError(path_ + ": can't be locked: " + std::strerror(errno));
    }
    const std::string word = holder + ", process " + std::to_string(getpid()) + "\n";
    // Only for messages: on a full disk the lock holds all the same.
    if (ftruncate(file_.Number(), 0) == 0 &&
        pwrite(file_.Number(), word.data(), word.size(), 0) < 0) {
        return true;
    }
    return true;
}

bool LockFile::IsTaken() const {
    const Descriptor opened = file_.IsOpen() ? Descriptor() : OpenToLook();
    if (!file_.IsOpen() && !opened.IsOpen()) {
        return false;
    }
    struct flock whole = WholeFile();
    const Descriptor& file = file_.IsOpen() ? file_ : opened;
    if (fcntl(file.Number(), F_OFD_GETLK, &whole) != 0) {
        throw StoreError(path_ + ": can't be looked at: " + std::strerror(errno));
    }
    return whole.l_type != F_UNLCK;
}

std::string LockFile::Words() const {
    const Descriptor file = OpenToLook();
    struct stat status {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0) {
        return {};
    }
    const bool believed =
        status.st_uid == geteuid() || status.st_uid == 0 || status.st_uid == ownership_.owner;
    return believed ? WordsIn(file) : std::string();
}

std::string LockFile::Holder() const {
    const std::string words = Words();
    struct stat status {};
    if (!words.empty() || lstat(path_.c_str(), &status) != 0) {
        return words.empty() ? "another process" : "pagerfwd " + words;
    }
    return "a process that doesn't say what it is; " + path_ + " belongs to user " +
           std::to_string(status.st_uid);
}

}  // namespace host
