// Progress. Tested by tests/unit/host/cli_trace_test.cpp.
#include "host/cli/progress.h"

#include <unistd.h>

#include <iostream>
#include <utility>

#include "host/text/printable.h"

namespace host {
namespace {

constexpr std::chrono::seconds kBetween{1};
constexpr const char* kClearLine = "\r\x1b[K";

}  // namespace

Progress::Progress(std::string what, uint64_t whole)
    : what_(std::move(what)),
      whole_(whole),
      on_terminal_(isatty(STDERR_FILENO) == 1 && isatty(STDOUT_FILENO) == 0),
      next_(Clock::now() + kBetween) {}

Progress::~Progress() {
    if (shown_) {
        std::cerr << kClearLine << std::flush;
    }
}

void Progress::Add(uint64_t amount) {
    done_ += amount;
    if (!on_terminal_ || Clock::now() < next_) {
        return;
    }
    next_ = Clock::now() + kBetween;
    shown_ = true;
    std::cerr << kClearLine << Printable(what_) << ": ";
    if (whole_ > 0) {
        std::cerr << done_ * 100 / whole_ << " %";
    } else {
        std::cerr << done_ / 1000000 << " MB";
    }
    std::cerr << std::flush;
}

}  // namespace host
