// The nodes of a site, as they are shown.
#ifndef PAGERFWD_HOST_CLI_NODES_VIEW_H
#define PAGERFWD_HOST_CLI_NODES_VIEW_H

#include <string>
#include <vector>

#include "host/store/tables/nodes.h"
#include "host/text/encoding.h"
#include "host/text/json.h"

namespace host {

std::string NodesAsTable(const std::vector<NodeState>& nodes, Encoding encoding);
Json NodesAsJson(const std::vector<NodeState>& nodes, Encoding encoding);

}  // namespace host

#endif
