// Taking a device. Tested by tests/unit/host/locks_test.cpp.
#include "host/line/take_device.h"

#include "host/process/database_locks.h"

namespace host {

LockFile TakeDevice(const LockFolder& folder, const SiteLine& line, const std::string& holder) {
    LockFile lock = LockOfDevice(folder, line.device);
    if (!lock.TryTake(holder)) {
        throw InUse(line.device + ": used already by " + lock.Holder() +
                    " (for another line, or another database)");
    }
    return lock;
}

}  // namespace host
