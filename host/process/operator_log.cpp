// The operator's log. Tested by tests/unit/host/operator_log_test.cpp.
#include "host/process/operator_log.h"

#include <iomanip>
#include <sstream>

#include "host/text/printable.h"

namespace host {
namespace {

constexpr std::time_t kBetweenRepeats = 60;  // s

}  // namespace

void OperatorLog::Write(const Level& level, std::string_view message) {
    const std::lock_guard guard(mutex_);
    const std::time_t now = std::time(nullptr);
    if (IsRepeated(level, message, now)) {
        ++unsaid_;
        return;
    }
    if (unsaid_ > 0) {
        Put(kInfo, "the line before came " + std::to_string(unsaid_) + " more time(s)", now);
    }
    Put(level, message, now);
    latest_ = message;
    latest_at_ = now;
    unsaid_ = 0;
}

bool OperatorLog::IsRepeated(const Level& level, std::string_view message, std::time_t now) const {
    return level.number <= kWarning.number && message == latest_ &&
           now < latest_at_ + kBetweenRepeats;
}

// In one piece: other processes write to the same place.
void OperatorLog::Put(const Level& level, std::string_view message, std::time_t now) {
    std::ostringstream line;
    if (journal_) {
        line << '<' << level.number << '>';
    } else {
        std::tm parts{};
        line << std::put_time(localtime_r(&now, &parts), "%Y-%m-%d %H:%M:%S ");
    }
    line << level.word << who_ << Printable(message) << '\n';
    out_ << line.str() << std::flush;
}

}  // namespace host
