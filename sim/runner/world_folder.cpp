// A world's folder. Tested by tests/unit/sim/joined_world_test.cpp.
#include "sim/runner/world_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "sim/runner/command_line.h"
#include "sim/world/messages.h"
#include "sim/world/socket_address.h"

namespace pagersim {
namespace {

constexpr const char* kLock = "/lock";  // held as long as the world is
constexpr const char* kSocket = "/socket";
constexpr const char* kLinks = "/preload";
constexpr const char* kPreloadList = "/preloads";

std::string Normalized(const std::string& path) {
    return std::filesystem::absolute(path).lexically_normal().string();
}

bool IsOwnFolder(const std::string& path) {
    constexpr mode_t kOthers = 077;
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & kOthers) == 0;
}

std::string CheckedPath(const std::string& path) {
    std::string absolute = Normalized(path);
    if (!FitsAddress(absolute + kSocket)) {
        throw UsageError(absolute + ": the name is too long for a world");
    }
    return absolute;
}

void Make(const std::string& path) {
    constexpr mode_t kOwnersOnly = 0700;
    if (mkdir(path.c_str(), kOwnersOnly) == 0) {
        return;
    }
    if (errno != EEXIST) {
        throw UsageError(path + ": " + std::strerror(errno));
    }
    const bool is_free = IsOwnFolder(path) &&
                         (std::filesystem::is_empty(path) || std::filesystem::exists(path + kLock));
    if (!is_free) {
        throw UsageError(path + ": is in the way, and no world's; it is left as it is");
    }
}

Descriptor Lock(const std::string& path) {
    constexpr mode_t kOwnersOnly = 0600;
    const std::string file = path + kLock;
    Descriptor lock(open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kOwnersOnly));
    if (lock.Number() < 0) {
        throw UsageError(file + ": " + std::strerror(errno));
    }
    if (flock(lock.Number(), LOCK_EX | LOCK_NB) != 0) {
        throw UsageError(path + ": there is a world of that name already");
    }
    return lock;
}

bool IsOwnUsers(int connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == geteuid();
}

Descriptor Connect(const std::string& path) {
    const sockaddr_un address = AddressOf(path + kSocket);
    Descriptor connection(socket(AF_UNIX, SOCK_SEQPACKET, 0));
    const int on = 1;
    setsockopt(connection.Number(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
    if (connect(connection.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
        0) {
        throw UsageError(path + ": the world of that name has ended");
    }
    return connection;
}

}  // namespace

WorldFolder::WorldFolder(const std::string& path) : path_(CheckedPath(path)) {
    Make(path_);
    lock_ = Lock(path_);
    Clear();
}

WorldFolder::~WorldFolder() {
    Clear();
    unlink((path_ + kLock).c_str());
    rmdir(path_.c_str());
}

std::string WorldFolder::Socket() const {
    return path_ + kSocket;
}

std::string WorldFolder::Links() const {
    return path_ + kLinks;
}

void WorldFolder::Publish(const Environment& environment) const {
    std::ofstream(path_ + kPreloadList) << environment.at(kPreloads);
}

void WorldFolder::Clear() const {
    std::error_code ignored;
    for (const char* const each : {kSocket, kLinks, kPreloadList}) {
        std::filesystem::remove_all(path_ + each, ignored);
    }
}

FoundWorld FindWorld(const std::string& path) {
    const std::string folder = CheckedPath(path);
    if (!std::filesystem::exists(folder)) {
        throw UsageError(folder + ": there is no world of that name");
    }
    if (!IsOwnFolder(folder)) {
        throw UsageError(folder + ": is no world of yours");
    }
    FoundWorld found{Connect(folder), {{kWorldVariable, folder + kSocket}}};
    if (!IsOwnUsers(found.connection.Number())) {
        throw UsageError(folder + ": is no world of yours");
    }
    std::getline(std::ifstream(folder + kPreloadList), found.environment[kPreloads]);
    return found;
}

}  // namespace pagersim
