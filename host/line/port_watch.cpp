// The port watch. Tested by tests/unit/host/port_watch_test.cpp.
#include "host/line/port_watch.h"

#include <algorithm>

namespace host {
namespace {

constexpr int kNoLine = 5;  // the library's result

constexpr std::time_t kFirstPause = 5 * 60;
constexpr std::time_t kLongestPause = 60 * 60;

}  // namespace

void PortWatch::PageEnded(const TracedPage& page) {
    if (page.outcome == TracedPage::Outcome::kNotSent && page.result == kNoLine) {
        taken_ = true;
    } else if (page.outcome == TracedPage::Outcome::kSent) {
        pause_ = 0;
    }
}

void PortWatch::Renewed(std::time_t now) {
    taken_ = false;
    pause_ = std::clamp(2 * pause_, kFirstPause, kLongestPause);
    not_before_ = now + pause_;
}

}  // namespace host
