// Shared files. Tested by tests/unit/host/shared_file_test.cpp.
#include "host/files/shared_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace host {
namespace {

constexpr mode_t kReadAndWrite = 0666;
constexpr mode_t kOfGroup = 0070;
constexpr mode_t kOfOthers = 0007;
constexpr mode_t kRights = 07777;

// Only root may give a file away, and only a member may give it to a group. Where the group can't
// be given it, the group that it has got has no part in it.
bool TakesAfter(const Descriptor& file, const Ownership& ownership) {
    const bool of_group = fchown(file.Number(), ownership.owner, ownership.group) == 0 ||
                          fchown(file.Number(), static_cast<uid_t>(-1), ownership.group) == 0;
    const mode_t mode = of_group ? ownership.mode : ownership.mode & ~kOfGroup;
    return fchmod(file.Number(), mode) == 0;
}

// Who may read or write it may search it.
mode_t ModeOfFolder(mode_t mode) {
    constexpr mode_t kReadable = 0440;
    return (mode & ~kOfOthers) | ((mode & kReadable) >> 2);
}

// Why a folder that is there can't be used; empty: it can.
std::string WhyNotOurs(const struct stat& folder, const Ownership& ownership) {
    if (folder.st_uid != geteuid() && folder.st_uid != 0 && folder.st_uid != ownership.owner) {
        return "it belongs to user " + std::to_string(folder.st_uid);
    }
    const bool group_writes = (folder.st_mode & S_IWGRP) != 0 && folder.st_gid != ownership.group;
    return (folder.st_mode & S_IWOTH) != 0 || group_writes ? "others may write to it" : "";
}

}  // namespace

void CloseToOthers(const Descriptor& file) {
    struct stat status {};
    if (fstat(file.Number(), &status) == 0 && (status.st_mode & kOfOthers) != 0) {
        static_cast<void>(fchmod(file.Number(), status.st_mode & kRights & ~kOfOthers));
    }
}

std::string WhyNot(const std::string& path, int error) {
    struct stat status {};
    if (error == ELOOP) {
        return "it is a link";
    }
    std::string why = std::strerror(error);
    if (error == EACCES && lstat(path.c_str(), &status) == 0) {
        why += "; it belongs to user " + std::to_string(status.st_uid);
    }
    return why;
}

Ownership OwnershipOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        throw FileError(WhyNot(path, errno));
    }
    return {status.st_uid, status.st_gid, status.st_mode & kReadAndWrite};
}

// Without blocking: opening a pipe would wait for who opens its other end.
Descriptor OpenShared(const std::string& path, int flags) {
    Descriptor file(open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen()) {
        if (errno == ENOENT) {
            return file;
        }
        throw FileError(WhyNot(path, errno));
    }
    struct stat status {};
    if (fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode)) {
        throw FileError("it is no regular file");
    }
    return file;
}

// Closed before it has its name: a program that locks the file by that name would lose its locks to
// the closing, if it were this one.
void MakeShared(const std::string& path, const Ownership& ownership, off_t size) {
    std::string name = path + ".XXXXXX";
    Descriptor made(mkostemp(name.data(), O_CLOEXEC));
    if (!made.IsOpen()) {
        throw FileError(WhyNot(path, errno));
    }
    const bool complete = TakesAfter(made, ownership) && ftruncate(made.Number(), size) == 0;
    made = Descriptor();
    const bool done = complete && (link(name.c_str(), path.c_str()) == 0 || errno == EEXIST);
    const int error = errno;
    unlink(name.c_str());
    if (!done) {
        throw FileError(WhyNot(path, error));
    }
}

// By its descriptor: under its name, somebody else's may stand by then.
void MakeSharedFolder(const std::string& path, const Ownership& ownership) {
    const bool made = mkdir(path.c_str(), 0700) == 0;
    if (!made && errno != EEXIST) {
        throw FileError(WhyNot(path, errno));
    }
    const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!folder.IsOpen() || fstat(folder.Number(), &status) != 0) {
        throw FileError(errno == ENOTDIR ? "it is a link, or no folder" : WhyNot(path, errno));
    }
    if (const std::string why = WhyNotOurs(status, ownership); !why.empty()) {
        throw FileError(why);
    }
    if (made &&
        !TakesAfter(folder, {ownership.owner, ownership.group, ModeOfFolder(ownership.mode)})) {
        throw FileError(WhyNot(path, errno));
    }
}

Descriptor OpenOrMakeShared(const std::string& path, int flags, const Ownership& ownership) {
    Descriptor file = OpenShared(path, flags);
    if (!file.IsOpen()) {
        MakeShared(path, ownership);
        file = OpenShared(path, flags);
    }
    if (!file.IsOpen()) {
        throw FileError("somebody removes it");
    }
    return file;
}

}  // namespace host
