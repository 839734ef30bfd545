// Tested by tests/unit/host/device_turn_test.cpp, with the library by
// tests/e2e/run_line_call_test.cpp.
#include "host/platform/device_turn.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace host {
namespace {

struct Turns {
    std::mutex mutex;
    std::condition_variable ended;
    std::optional<std::thread::id> of;  // guarded by mutex; none: the library's
};

// Files are opened and closed to the very end of the process.
Turns& TheTurns() {
    static auto& turns = *new Turns;
    return turns;
}

std::atomic<int> the_librarys{-1};  // its descriptor of the device

}  // namespace

DeviceTurn::DeviceTurn() {
    const std::lock_guard guard(TheTurns().mutex);
    TheTurns().of = std::this_thread::get_id();
}

DeviceTurn::~DeviceTurn() {
    {
        const std::lock_guard guard(TheTurns().mutex);
        TheTurns().of.reset();
    }
    TheTurns().ended.notify_all();
}

bool DeviceTurn::HasCome() {
    return the_librarys < 0;
}

int OpenAtItsTurn(const std::function<int()>& system) {
    Turns& turns = TheTurns();
    std::unique_lock guard(turns.mutex);
    const auto me = std::this_thread::get_id();
    if (turns.of == me) {
        return system();
    }
    turns.ended.wait(guard, [&] { return !turns.of; });
    const int file = system();
    if (file >= 0) {
        the_librarys = file;
    }
    return file;
}

void NoteClosed(int file) {
    the_librarys.compare_exchange_strong(file, -1);
}

}  // namespace host
