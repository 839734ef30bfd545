// Loads of lines. Tested by tests/unit/host/line_loads_test.cpp.
#include "host/node/line_loads.h"

#include <tuple>

#include "host/store/tables/events.h"

namespace host {

void LineLoads::Read(Connection& connection) {
    for (auto& [line, load] : loads_) {
        load.ahead = 0;
        load.pending = 0;
    }
    for (const auto& [line, pages] : PagesByLine(connection)) {
        LineLoad& load = loads_[line];
        load.ahead = static_cast<int>(pages.untried);
        load.pending = static_cast<int>(pages.all);
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
