// Taking a line's device: one process a device, whatever database it serves.
#ifndef PAGERFWD_HOST_LINE_TAKE_DEVICE_H
#define PAGERFWD_HOST_LINE_TAKE_DEVICE_H

#include <string>

#include "host/devices/device_lock.h"
#include "host/lines/site_lines.h"

namespace host {

// holder: the command, for the messages of others. Throws InUse, which says who holds it, and
// StoreError where the lock can't be made.
LockFile TakeDevice(const LockFolder& folder, const SiteLine& line, const std::string& holder);

}  // namespace host

#endif
