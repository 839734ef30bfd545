// One engine per database, and one per serial device: two would send every page twice, and talk
// into each other's calls.
//
// Errors     EngineTaken, which says who holds what; StoreError, where a lock file can't be made.
#ifndef PAGERFWD_HOST_PROCESS_ENGINE_LOCKS_H
#define PAGERFWD_HOST_PROCESS_ENGINE_LOCKS_H

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/files/lock_file.h"
#include "host/store/connection.h"

namespace host {

class EngineTaken : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

// The lock of a database: beside it, as "site.db-engine". Throws StoreError where there is no such
// database.
LockFile DatabaseLock(const std::string& database);

class EngineLocks {
 public:
    // folder: where the locks of devices lie, the same for all databases of a machine. Empty:
    // /run/pagerfwd, which root makes for the owner of the database; where there is none, the
    // user's own run-time folder. holder: the command, for the messages of others.
    EngineLocks(const std::string& database, std::string folder, std::string holder);

    // Takes the devices of the ports that the tables name by now. Those taken before stay so.
    void TakeDevices(Connection& connection);

 private:
    const std::string database_;
    const std::string folder_;
    const std::string holder_;
    std::vector<LockFile> locks_;
    std::set<std::string> devices_;
};

// "ttyS0" for "COM 1". Empty for a text that names no device.
std::string DeviceOf(const std::string& port);

}  // namespace host

#endif
