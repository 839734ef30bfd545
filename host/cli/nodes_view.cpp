// The view of the nodes. Tested by tests/unit/host/cli_node_test.cpp.
#include "host/cli/nodes_view.h"

#include "host/cli/names.h"
#include "host/status/engine_words.h"
#include "host/text/text_table.h"

namespace host {

std::string NodesAsTable(const std::vector<NodeState>& nodes, Encoding encoding) {
    TextTable table({"NODE", "STATE", "PROCESS", "TERM", "LEADS"});
    for (const NodeState& node : nodes) {
        table.Add({Shown(node.node, encoding), StateOf(node),
                   node.holder.empty() ? "-" : Shown(node.holder, encoding),
                   std::to_string(node.term), node.leads ? "yes" : "-"});
    }
    return table.Text();
}

Json NodesAsJson(const std::vector<NodeState>& nodes, Encoding encoding) {
    Json list = Json::array();
    for (const NodeState& node : nodes) {
        list.push_back({{"node", Decode(node.node, encoding)},
                        {"runs", node.lives},
                        {"drained", node.drained},
                        {"in_site_file", node.of_site},
                        {"process", Decode(node.holder, encoding)},
                        {"term", node.term},
                        {"leads", node.leads}});
    }
    return list;
}

}  // namespace host
