// Locks of an engine. Tested by tests/unit/host/engine_locks_test.cpp.
#include "host/process/engine_locks.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace host {
namespace {

std::vector<std::string> PortNames(Connection& connection) {
    std::vector<std::string> names;
    Statement statement(connection, "SELECT Description FROM AlarmFwd_COMProperties");
    while (statement.Step()) {
        names.emplace_back(statement.Text(0));
    }
    return names;
}

std::string TakenPort(const std::string& port, const std::string& device,
                      const std::string& holder) {
    std::string text = "port \"";
    text.append(port).append("\", /dev/").append(device).append(": used already by ");
    return text.append(holder).append(" (for another database)");
}

// The unit makes it for the service, and root for whom the database belongs to.
std::string UsualFolder(const std::string& database) {
    constexpr const char* kFolder = "/run/pagerfwd";
    constexpr mode_t kOwnerAndGroup = 0770;
    if (mkdir(kFolder, kOwnerAndGroup) == 0) {
        const Ownership ownership = OwnershipOf(database);
        static_cast<void>(!chown(kFolder, ownership.owner, ownership.group));
        return kFolder;
    }
    std::error_code none;
    const char* const own = std::getenv("XDG_RUNTIME_DIR");
    if (own != nullptr && !std::filesystem::is_directory(kFolder, none)) {
        return own;
    }
    return kFolder;
}

// Whoever may write in the folder may take the locks in it.
Ownership OfFolder(const std::string& folder) {
    try {
        return OwnershipOf(folder);
    } catch (const FileError& error) {
        throw StoreError(folder + ": no locks can be made there: " + error.what());
    }
}

}  // namespace

LockFile DatabaseLock(const std::string& database) {
    try {
        return LockFile(std::filesystem::weakly_canonical(database).string() + "-engine",
                        OwnershipOf(database));
    } catch (const FileError& error) {
        throw StoreError(database + ": " + error.what());
    }
}

std::string DeviceOf(const std::string& port) {
    constexpr std::string_view kPrefix = "COM ";
    if (port.size() != kPrefix.size() + 1 || port.compare(0, kPrefix.size(), kPrefix) != 0 ||
        port.back() < '1' || port.back() > '9') {
        return {};
    }
    std::string device = "ttyS";
    device += static_cast<char>(port.back() - 1);
    return device;
}

EngineLocks::EngineLocks(const std::string& database, std::string folder, std::string holder)
    : database_(database), folder_(std::move(folder)), holder_(std::move(holder)) {
    LockFile lock = DatabaseLock(database);
    if (!lock.TryTake(holder_)) {
        throw EngineTaken(database + ": served already by " + lock.Holder());
    }
    locks_.push_back(std::move(lock));
}

void EngineLocks::TakeDevices(Connection& connection) {
    std::string folder = folder_;
    for (const std::string& port : PortNames(connection)) {
        const std::string device = DeviceOf(port);
        if (device.empty() || devices_.count(device) != 0) {
            continue;
        }
        folder = folder.empty() ? UsualFolder(database_) : folder;
        LockFile lock(folder + "/pagerfwd-" + device, OfFolder(folder));
        if (!lock.TryTake(holder_)) {
            throw EngineTaken(TakenPort(port, device, lock.Holder()));
        }
        locks_.push_back(std::move(lock));
        devices_.insert(device);
    }
}

}  // namespace host
