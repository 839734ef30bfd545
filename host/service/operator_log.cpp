// The operator's log. Tested by tests/unit/host/operator_log_test.cpp.
#include "host/service/operator_log.h"

#include <ctime>
#include <iomanip>

#include "host/text/printable.h"

namespace host {

void OperatorLog::Write(const Level& level, std::string_view message) {
    const std::lock_guard guard(mutex_);
    if (journal_) {
        out_ << '<' << level.number << '>';
    } else {
        const std::time_t now = std::time(nullptr);
        std::tm parts{};
        out_ << std::put_time(localtime_r(&now, &parts), "%Y-%m-%d %H:%M:%S ");
    }
    out_ << level.word << Printable(message) << '\n' << std::flush;
}

}  // namespace host
