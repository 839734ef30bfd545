// A lock that one process holds, and that ends with it however it ends: a file that is left behind
// locks nothing.
//
// Errors     StoreError, naming the file, where it can't be opened or locked.
#ifndef PAGERFWD_HOST_FILES_LOCK_FILE_H
#define PAGERFWD_HOST_FILES_LOCK_FILE_H

#include <string>

#include "host/files/shared_file.h"

namespace host {

class LockFile {
 public:
    // ownership: of the file, where taking the lock makes it. Looking makes none.
    LockFile(std::string path, const Ownership& ownership)
        : path_(std::move(path)), ownership_(ownership) {}

    // Takes the lock, and leaves a word about this process in the file. False: another holds it.
    bool TryTake(const std::string& holder);

    // Whether another process, or another object, holds it.
    bool IsTaken() const;

    // What the holder has said of itself: "run, process 123". Words are believed only in a file of
    // a user who may hold the lock: ourselves, root, or the one to whom the file was to belong.
    // Empty: there are none.
    std::string Words() const;

    // Whom to name in a message: "pagerfwd run, process 123", or whose file it is.
    std::string Holder() const;

    const std::string& Path() const { return path_; }

    // The open file, which holds the lock; -1 before the first try. A process that inherits it
    // holds the lock too.
    int Number() const { return file_.Number(); }

 private:
    Descriptor OpenToLook() const;

    std::string path_;
    Ownership ownership_;
    Descriptor file_;  // from the first try to take it
};

}  // namespace host

#endif
