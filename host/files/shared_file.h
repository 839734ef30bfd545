// Files that several users share: locks, journals, the trace.
//
// Whoever comes first makes them, be it root by a command before the service has ever run. So that
// the others can use them all the same, a new file takes owner, group and mode after another one,
// whatever the umask: after the database, or after the folder that it is made in. And since the
// folder may belong to somebody else, no link is followed, only regular files are opened, and a new
// file appears under its name when it is complete.
//
// Errors     FileError. Its text is the reason alone, without the name of the file.
#ifndef PAGERFWD_HOST_FILES_SHARED_FILE_H
#define PAGERFWD_HOST_FILES_SHARED_FILE_H

#include <sys/types.h>

#include <stdexcept>
#include <string>

#include "host/files/descriptor.h"

namespace host {

class FileError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// Whom a file belongs to, and who may read and write it.
struct Ownership {
    uid_t owner = 0;
    gid_t group = 0;
    mode_t mode = 0;  // without the right to run it
};
Ownership OwnershipOf(const std::string& path);

// flags: of open. Not open where there is no such file.
Descriptor OpenShared(const std::string& path, int flags);

// The same, and makes the file, empty, where there is none.
Descriptor OpenOrMakeShared(const std::string& path, int flags, const Ownership& ownership);

// Makes the file, with so many bytes of 0, unless there is one, whatever that is.
void MakeShared(const std::string& path, const Ownership& ownership, off_t size = 0);

// A folder with the same owner and group, in which whoever may read or write the file may look and
// make files. One that is there must be ours, root's or that owner's, and none else may write to
// it.
void MakeSharedFolder(const std::string& path, const Ownership& ownership);

// Takes every right away from those who are neither the owner nor of the group, where we own it.
void CloseToOthers(const Descriptor& file);

// "Permission denied; it belongs to user 1001", for the last error.
std::string WhyNot(const std::string& path, int error);

}  // namespace host

#endif
