// Locks of an engine. Tested by tests/unit/host/engine_locks_test.cpp.
#include "host/service/engine_locks.h"

#include <filesystem>
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
    text.append(port).append("\", /dev/").append(device).append(": used already by pagerfwd ");
    return text.append(holder).append(" (for another database)");
}

}  // namespace

LockFile DatabaseLock(const std::string& database) {
    return LockFile(std::filesystem::weakly_canonical(database).string() + "-engine");
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
    : folder_(std::move(folder)), holder_(std::move(holder)) {
    LockFile lock = DatabaseLock(database);
    if (!lock.TryTake(holder_)) {
        throw EngineTaken(database + ": served already by pagerfwd " + lock.Holder());
    }
    locks_.push_back(std::move(lock));
}

void EngineLocks::TakeDevices(Connection& connection) {
    for (const std::string& port : PortNames(connection)) {
        const std::string device = DeviceOf(port);
        if (device.empty() || devices_.count(device) != 0) {
            continue;
        }
        LockFile lock(folder_ + "/pagerfwd-" + device);
        if (!lock.TryTake(holder_)) {
            throw EngineTaken(TakenPort(port, device, lock.Holder()));
        }
        locks_.push_back(std::move(lock));
        devices_.insert(device);
    }
}

}  // namespace host
