// The port watch. Tested by tests/unit/host/port_watch_test.cpp.
#include "host/service/port_watch.h"

#include <algorithm>

namespace host {
namespace {

// Trace texts of the library, behind "12:34:56" and a tabulator.
constexpr size_t kStamp = 8;
constexpr std::string_view kNotOpened = "COM port cannot be opened!";
constexpr std::string_view kTransferred = "Message transfered!";

constexpr std::time_t kFirstPause = 5 * 60;
constexpr std::time_t kLongestPause = 60 * 60;

// Blocks of a dialogue hold any bytes: no line that matters is longer.
constexpr size_t kLongestLine = 256;

}  // namespace

void PortWatch::Read(std::string_view trace) {
    for (size_t end = trace.find('\n'); end != std::string_view::npos; end = trace.find('\n')) {
        rest_ += trace.substr(0, end);
        ReadLine(rest_);
        rest_.clear();
        trace.remove_prefix(end + 1);
    }
    rest_ += trace.substr(0, kLongestLine - std::min(kLongestLine, rest_.size()));
}

void PortWatch::ReadLine(std::string_view line) {
    if (line.size() <= kStamp || line[kStamp] != '\t') {
        return;
    }
    const std::string_view text = line.substr(kStamp + 1);
    if (text == kNotOpened) {
        taken_ = true;
    } else if (text == kTransferred) {
        pause_ = 0;
    }
}

void PortWatch::Renewed(std::time_t now) {
    taken_ = false;
    pause_ = std::clamp(2 * pause_, kFirstPause, kLongestPause);
    not_before_ = now + pause_;
    rest_.clear();
}

}  // namespace host
