// Time that passes. Tried on a terminal; programs see nothing of it.
#include "host/cli/elapsed.h"

#include <unistd.h>

#include <chrono>
#include <iostream>

namespace host {

Elapsed::Elapsed() {
    if (isatty(STDERR_FILENO) != 0) {
        thread_ = std::thread([this] { Show(); });
    }
}

Elapsed::~Elapsed() {
    {
        const std::lock_guard guard(mutex_);
        ended_ = true;
    }
    ended_changed_.notify_one();
    if (thread_.joinable()) {
        thread_.join();
        std::cerr << "\r\x1b[K" << std::flush;
    }
}

void Elapsed::Show() {
    std::unique_lock guard(mutex_);
    for (int seconds = 1; !ended_; ++seconds) {
        if (ended_changed_.wait_for(guard, std::chrono::seconds(1)) == std::cv_status::timeout) {
            std::cerr << "\r... " << seconds << " s" << std::flush;
        }
    }
}

}  // namespace host
