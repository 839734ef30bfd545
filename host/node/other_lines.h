// The lines of other nodes, as their rows tell: which of them stand idle, and could have a page.
//
// A row may be out of date: its node may have died a moment ago, or be out of touch. So nobody
// waits for such a line for long, see dispatch.h.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_NODE_OTHER_LINES_H
#define PAGERFWD_HOST_NODE_OTHER_LINES_H

#include <vector>

#include "host/lines/site_lines.h"
#include "host/node/line_loads.h"
#include "host/node/served_lines.h"
#include "host/store/connection.h"
#include "host/store/tables/pagers.h"

namespace host {

class OtherLines {
 public:
    // Those that a process of another node serves, and that are well and have nothing to send for
    // the first time.
    void Read(Connection& connection, const ServedLines& own, const LineLoads& loads);
    // There is no other node.
    void Forget() { idle_.clear(); }

    bool AnyIdleFor(const PagerRow& pager) const;

 private:
    std::vector<SiteLine> idle_;
};

}  // namespace host

#endif
