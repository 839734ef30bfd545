// The pages of a node that died, or that ended and isn't back: in one transaction its term ends,
// and its pages wait for any line that can have them. Of a pager that is bound to one of its lines
// they wait for that line; who looks for pages without a line tells so.
//
// A page may have left by the dead node's line, and nobody knows. History says so of it, and the
// site whether it is sent again or waits for an operator (Host_Deliveries.unknown).
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_TAKEOVER_H
#define PAGERFWD_HOST_PAGES_TAKEOVER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/page_key.h"

namespace host {

struct TakenOver {
    int32_t pages = 0;
    int32_t given_up = 0;  // tried too often over all lines
    std::vector<PageKey> may_have_left;
};

// Only once the lease is over: the node's lines touch no modem from then on. None: it isn't over,
// or another node was faster.
std::optional<TakenOver> TakeOver(Connection& connection, const std::string& node, int64_t term);

// The same, and the node is forgotten.
std::optional<TakenOver> RemoveNode(Connection& connection, const std::string& node, int64_t term);

// What an operator says of a page whose outcome is unknown. False: there is no such page.
bool SendAgain(Connection& connection, const PageKey& page, const std::string& why);
bool CountAsSent(Connection& connection, const PageKey& page, const std::string& why);

}  // namespace host

#endif
