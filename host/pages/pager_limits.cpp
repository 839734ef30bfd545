// A pager's limits. Tested by tests/unit/host/history_test.cpp.
#include "host/pages/pager_limits.h"

namespace host {

PagerLimits LimitsOf(Connection& connection, const std::string& pager) {
    Statement statement(connection,
                        "SELECT CAST(numretries AS INTEGER), CAST(retrydelay AS INTEGER)"
                        " FROM AlarmFwd_PagerSetting WHERE description = ?");
    return statement.Bind(pager).Step() ? PagerLimits{statement.Number(0), statement.Number(1)}
                                        : PagerLimits{};
}

}  // namespace host
