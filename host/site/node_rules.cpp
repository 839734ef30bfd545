// What the nodes of a site have to be. Tested by tests/unit/host/node_rules_test.cpp.
#include <algorithm>
#include <string>

#include "host/site/rules.h"

namespace host {
namespace {

bool IsNode(const Site& site, const std::string& name) {
    return std::any_of(site.nodes.begin(), site.nodes.end(),
                       [&name](const SiteNode& node) { return node.name.value == name; });
}

std::string NamesOfNodes(const Site& site) {
    std::string names;
    for (const SiteNode& node : site.nodes) {
        names += (names.empty() ? "" : ", ") + InQuotes(node.name.value);
    }
    return names.empty() ? "there is none: add a [[node]] with this name" : names;
}

void CheckName(const Site& site, size_t index, Findings& findings) {
    const SaidText& name = site.nodes[index].name;
    if (name.missing) {
        return;
    }
    if (name.value.empty()) {
        findings.Error(name.line, "a node has no name", "No host could run it.",
                       "Add a line such as: name = \"north\"");
        return;
    }
    for (size_t before = 0; before < index; ++before) {
        if (site.nodes[before].name.value == name.value) {
            findings.Error(name.line,
                           "node " + InQuotes(name.value) + " is there already, " +
                               findings.Where(site.nodes[before].line),
                           "Of two hosts with one name, the second is refused.",
                           "Give each node a name of its own.");
            return;
        }
    }
}

void CheckLines(const Site& site, const SiteNode& node, Findings& findings) {
    const bool has_line =
        std::any_of(site.ports.begin(), site.ports.end(),
                    [&node](const Port& port) { return port.node.value == node.name.value; });
    if (!has_line && !node.name.value.empty()) {
        findings.Warning(node.line, "node " + InQuotes(node.name.value) + " has no port",
                         "It can take alarms up, but no page leaves by it.",
                         "Name it at a port: node = " + InQuotes(node.name.value));
    }
}

void CheckNamed(const Site& site, const std::string& whose, const SaidText& node,
                Findings& findings) {
    if (!node.value.empty() && !IsNode(site, node.value)) {
        findings.Error(node.line, whose + ": there is no node " + InQuotes(node.value),
                       "No host would serve it.", "Name one of these: " + NamesOfNodes(site) + ".");
    }
}

// With one node there is only one that it can be on.
void CheckPort(const Site& site, const Port& port, Findings& findings) {
    const std::string whose = "port " + InQuotes(port.name.value);
    CheckNamed(site, whose, port.node, findings);
    if (site.nodes.size() > 1 && port.node.value.empty()) {
        findings.Error(port.line, whose + " names no node",
                       "It could not be told at which host its modem hangs.",
                       "Add one of these to it, as node = \"...\": " + NamesOfNodes(site) + ".");
    }
}

void CheckPager(const Site& site, const Pager& pager, Findings& findings) {
    const std::string whose = "pager " + InQuotes(pager.description.value);
    CheckNamed(site, whose, pager.node, findings);
    if (!pager.node.value.empty() && !pager.port.value.empty()) {
        findings.Error(pager.node.line, whose + " names both a port and a node",
                       "A port has its node already; whichever of the two was meant, the other "
                       "would go unheard.",
                       "Take one of the two out.");
    }
}

}  // namespace

void CheckNodes(const Site& site, Findings& findings) {
    for (size_t index = 0; index < site.nodes.size(); ++index) {
        CheckName(site, index, findings);
        CheckLines(site, site.nodes[index], findings);
    }
    for (const Port& port : site.ports) {
        CheckPort(site, port, findings);
    }
    for (const Pager& pager : site.pagers) {
        CheckPager(site, pager, findings);
    }
    const std::string& outcome = site.unknown_outcome.value;
    if (!outcome.empty() && outcome != kSendAgain && outcome != kAsk) {
        findings.Error(site.unknown_outcome.line,
                       "[site]: there is no unknown_outcome " + InQuotes(outcome),
                       "It could not be told what to do with a page that may have left when its "
                       "host died.",
                       "Write \"send again\" or \"ask\".");
    }
}

}  // namespace host
