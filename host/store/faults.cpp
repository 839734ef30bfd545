// The listener of the table store's faults. Tested by tests/unit/host/table_access_test.cpp.
#include "host/store/faults.h"

#include <exception>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "host/text/printable.h"

namespace host {
namespace {

struct Listening {
    std::mutex mutex;
    FaultListener listener;  // guarded by mutex
};

Listening& TheListening() {
    // Never destroyed: a thread of the library may meet a fault while the process ends.
    static Listening& listening = *std::make_unique<Listening>().release();
    return listening;
}

void Report(FaultNews news, std::string_view message) noexcept {
    try {
        Listening& listening = TheListening();
        const std::lock_guard guard(listening.mutex);
        if (listening.listener) {
            listening.listener(news, message);
        } else {
            std::cerr << "pagerfwd: " + Printable(message) + "\n" << std::flush;
        }
    } catch (const std::exception&) {
        // No memory or nowhere to write: the caller's own result still tells that it failed.
        return;
    }
}

}  // namespace

FaultListener SetFaultListener(FaultListener listener) {
    Listening& listening = TheListening();
    const std::lock_guard guard(listening.mutex);
    return std::exchange(listening.listener, std::move(listener));
}

void ReportFault(std::string_view message) noexcept {
    Report(FaultNews::kFault, message);
}

void ReportMended(std::string_view message) noexcept {
    Report(FaultNews::kMended, message);
}

void ReportEnd(std::string_view message) noexcept {
    Report(FaultNews::kEnd, message);
}

}  // namespace host
