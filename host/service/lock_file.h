// A lock that one process holds, and that ends with it however it ends: a file that is left behind
// locks nothing.
//
// Errors     StoreError, naming the file, where it can't be opened or locked.
#ifndef PAGERFWD_HOST_SERVICE_LOCK_FILE_H
#define PAGERFWD_HOST_SERVICE_LOCK_FILE_H

#include <string>

namespace host {

class LockFile {
 public:
    explicit LockFile(std::string path);
    ~LockFile();
    LockFile(LockFile&& other) noexcept;
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;
    LockFile& operator=(LockFile&&) = delete;

    // Takes the lock, and leaves a word about this process in the file. False: another holds it.
    bool TryTake(const std::string& holder);

    // Whether another process, or another object, holds it.
    bool IsTaken();

    // What the holder has said of itself: "run, process 123".
    std::string Holder();

    const std::string& Path() const { return path_; }

 private:
    std::string path_;
    int file_ = -1;
};

}  // namespace host

#endif
