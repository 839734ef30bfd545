// Lines of other nodes. Tested by tests/unit/host/dispatch_test.cpp.
#include "host/node/other_lines.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "host/store/tables/lines.h"

namespace host {

void OtherLines::Read(Connection& connection, const ServedLines& own, const LineLoads& loads) {
    std::set<std::string> idle;
    for (const LineState& line : ReadLines(connection)) {
        if (own.Find(line.line) == nullptr && line.process != 0 && !line.paused &&
            line.health == Health::kWell && loads.Of(line.line).ahead == 0) {
            idle.insert(line.line);
        }
    }
    idle_.clear();
    for (SiteLine& line : SiteLines(connection)) {
        if (idle.count(line.name) != 0) {
            idle_.push_back(std::move(line));
        }
    }
}

bool OtherLines::AnyIdleFor(const PagerRow& pager) const {
    return std::any_of(idle_.begin(), idle_.end(),
                       [&](const SiteLine& line) { return line.Fits(pager); });
}

}  // namespace host
