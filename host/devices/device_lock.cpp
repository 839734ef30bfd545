// Locks of devices. Tested by tests/unit/host/device_lock_test.cpp.
#include "host/devices/device_lock.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "host/devices/serial_devices.h"
#include "host/store/connection.h"
#include "host/store/database_name.h"

namespace host {
namespace {

// The unit makes it for the service, and root for whom the database belongs to.
std::string UsualFolder(const std::string& database) {
    constexpr const char* kFolder = "/run/pagerfwd";
    constexpr mode_t kOwnerAndGroup = 0770;
    std::error_code none;
    if (std::filesystem::exists(BesideOwner(database), none) &&
        mkdir(kFolder, kOwnerAndGroup) == 0) {
        const Ownership ownership = OwnershipOf(BesideOwner(database));
        static_cast<void>(!chown(kFolder, ownership.owner, ownership.group));
        return kFolder;
    }
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

std::string NameOfDeviceLock(const std::string& device) {
    constexpr std::string_view kDevices = "/dev/";
    std::string name = DeviceBehind(device);
    if (name.compare(0, kDevices.size(), kDevices) == 0) {
        name.erase(0, kDevices.size());
    }
    std::replace(name.begin(), name.end(), '/', '-');
    return "pagerfwd-" + name;
}

LockFile LockOfDevice(const LockFolder& folder, const std::string& device) {
    const std::string path = folder.folder.empty() ? UsualFolder(folder.database) : folder.folder;
    return LockFile(path + "/" + NameOfDeviceLock(device), OfFolder(path));
}

}  // namespace host
