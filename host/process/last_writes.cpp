// The last writes. Tested by tests/proof/held_writes_test.cpp and tests/e2e/run_refused_test.cpp.
#include "host/process/last_writes.h"

#include "host/files/last_room.h"

namespace host {

void WriteLast(Lease& lease, const std::string& database, OperatorLog& log) {
    if (lease.CountHeld() == 0) {
        return;
    }
    GiveLastRoom(database);
    try {
        WriteTransaction(lease.Database()).Commit();  // and with it all that is kept
    } catch (const StoreError& failure) {
        log.Error(failure.what());
    }
    if (const size_t kept = lease.CountHeld()) {
        log.Error(std::to_string(kept) +
                  " change(s) could not be written to the end; pages that were sent meanwhile may "
                  "be sent again");
    }
}

}  // namespace host
