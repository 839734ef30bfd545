// Loads of lines. Tested by tests/unit/host/line_loads_test.cpp.
#include "host/node/line_loads.h"

#include <tuple>

namespace host {

void LineLoads::Read(Connection& connection) {
    for (auto& [line, load] : loads_) {
        load.ahead = 0;
        load.pending = 0;
    }
    // Two kinds of pages: still to be handed over, and in the library.
    Statement statement(connection,
                        "SELECT line, count(*), count(*) FROM Host_Deliveries"
                        " WHERE answer IS NULL AND line <> '' GROUP BY line"
                        " UNION ALL SELECT line, sum(NOT EXISTS (SELECT 1 FROM Host_Sends AS send"
                        "   WHERE send.alarm = event.AlmLogID AND send.pager = event.PagerDescr"
                        "   AND send.port = event.line)), count(*)"
                        " FROM AlarmFwd_PagerEvents AS event WHERE PagerState = '2' GROUP BY line");
    while (statement.Step()) {
        LineLoad& load = loads_[std::string(statement.Text(0))];
        load.ahead += static_cast<int>(statement.Number(1));
        load.pending += static_cast<int>(statement.Number(2));
    }
}

const LineLoad& LineLoads::Of(const std::string& line) const {
    static const LineLoad none;
    const auto found = loads_.find(line);
    return found == loads_.end() ? none : found->second;
}

void LineLoads::Give(const std::string& line) {
    LineLoad& load = loads_[line];
    ++load.ahead;
    ++load.pending;
    load.given = ++given_;
}

bool IsLessBusy(const LineLoad& one, const LineLoad& other) {
    return std::tie(one.ahead, one.pending, one.given) <
           std::tie(other.ahead, other.pending, other.given);
}

}  // namespace host
