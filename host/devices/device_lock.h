// One process a serial device, whatever database it serves: two would talk into each other's calls.
//
// Errors     StoreError, where no lock can be made.
#ifndef PAGERFWD_HOST_DEVICES_DEVICE_LOCK_H
#define PAGERFWD_HOST_DEVICES_DEVICE_LOCK_H

#include <string>

#include "host/files/lock_file.h"

namespace host {

struct LockFolder {
    std::string database;
    // Where the locks of devices lie, the same for all databases of a machine. Empty:
    // /run/pagerfwd, which root makes for the owner of the database; where there is none, the
    // user's own run-time folder.
    std::string folder;
};

// The lock of a device, not taken yet.
LockFile LockOfDevice(const LockFolder& folder, const std::string& device);

// "pagerfwd-ttyS0" for "/dev/ttyS0". A link, as below /dev/serial, is the device that it leads to.
std::string NameOfDeviceLock(const std::string& device);

}  // namespace host

#endif
