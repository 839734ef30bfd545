// Waiting for the store. Tested by tests/unit/host/patience_test.cpp, and by
// tests/proof/fault_test.cpp.
#include "host/store/patience.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "host/store/faults.h"

namespace host {
namespace {

struct Patience {
    std::mutex mutex;
    std::function<void(int)> pause;  // written before there are other threads
    int waiting = 0;                 // guarded by mutex
    bool told = false;               // guarded by mutex
};

Patience& ThePatience() {
    // Never destroyed: a thread of the library may still wait while the process ends.
    static Patience& patience = *std::make_unique<Patience>().release();
    return patience;
}

}  // namespace

void WaitForTables(std::function<void(int seconds)> pause) {
    ThePatience().pause = std::move(pause);
}

bool WaitsForTables() {
    return ThePatience().pause != nullptr;
}

bool AnyWaits() {
    Patience& patience = ThePatience();
    const std::lock_guard guard(patience.mutex);
    return patience.waiting > 0;
}

Wait::Wait(const StoreAway& why) {
    Patience& patience = ThePatience();
    const std::lock_guard guard(patience.mutex);
    ++patience.waiting;
    if (why.Outage().empty() && !std::exchange(patience.told, true)) {
        ReportFault(std::string(why.what()) +
                    "; the library waits until the tables can be used again");
    }
}

Wait::~Wait() {
    Patience& patience = ThePatience();
    const std::lock_guard guard(patience.mutex);
    if (--patience.waiting == 0 && std::exchange(patience.told, false)) {
        ReportMended("the library waits no more: the tables can be used again");
    }
}

void Wait::Second() {
    ThePatience().pause(++seconds_);
}

}  // namespace host
