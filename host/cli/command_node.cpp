// pagerfwd node: the hosts of a site. Tested by tests/unit/host/cli_node_test.cpp.
#include <CLI/CLI.hpp>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

#include "host/cli/names.h"
#include "host/cli/nodes_view.h"
#include "host/cli/program.h"
#include "host/pages/takeover.h"
#include "host/site/site_tables.h"
#include "host/store/look.h"
#include "host/store/pool.h"
#include "host/text/printable.h"

namespace host {
namespace {

ExitCode ListNodes(const Program& program, bool json) {
    const auto [encoding, nodes] = Look(program.database, [](Connection& database) {
        return std::pair(EncodingOf(database), ReadNodes(database));
    });
    if (json) {
        std::cout << Written(NodesAsJson(nodes, encoding)) << "\n";
    } else {
        std::cout << (nodes.empty() ? "the site names no nodes\n" : NodesAsTable(nodes, encoding));
    }
    return kDone;
}

NodeState FindNamedNode(Connection& connection, const std::string& name, Encoding encoding) {
    std::optional<NodeState> node = FindNode(connection, InTables(name, encoding));
    if (!node) {
        std::vector<std::string> names;
        for (const NodeState& one : ReadNodes(connection)) {
            names.push_back(one.node);
        }
        throw Failure(kUsage,
                      "there is no node \"" + name + "\"; " + ListNames("nodes", names, encoding));
    }
    return *std::move(node);
}

ExitCode Drain(const Program& program, const std::string& name, bool drained) {
    Lease lease(program.database);
    Connection& connection = lease.Database();
    const NodeState node = FindNamedNode(connection, name, EncodingOf(connection));
    SetDrained(connection, node.node, drained);
    std::cout << "node \"" << Printable(name) << "\": "
              << (!drained     ? "in service again"
                  : node.lives ? "drained; each line finishes the page that is on it"
                               : "drained, as soon as it runs")
              << "\n";
    return kDone;
}

// Of one that comes no more. What it had goes to others, also where its lease was given back.
ExitCode Remove(const Program& program, const std::string& name) {
    Lease lease(program.database);
    Connection& connection = lease.Database();
    const NodeState node = FindNamedNode(connection, name, EncodingOf(connection));
    const std::string shown = "node \"" + Printable(name) + "\"";
    if (node.left.count() > 0) {
        throw Failure(kNo, shown + " lives, or did a moment ago: " + Printable(node.holder) +
                               ". End it first");
    }
    const std::optional<TakenOver> taken = RemoveNode(connection, node.node, node.term);
    if (!taken) {
        throw Failure(kNo, shown + " has just come back, or was removed");
    }
    std::cout << shown << ": removed; " << taken->pages
              << " page(s) of its lines wait for others\n";
    return kDone;
}

using NodeDeed = std::function<ExitCode(const std::string&)>;

void AddNamed(CLI::App& node, Program& program, const char* name, const char* help,
              const char* footer, NodeDeed deed) {
    CLI::App* const command = node.add_subcommand(name, help);
    const auto named = std::make_shared<std::string>();
    command->add_option("NODE", *named, "The node, as the site file names it")->required();
    command->footer(footer);
    command->callback([named, deed = std::move(deed), &program] {
        program.command = [named, deed] { return deed(*named); };
    });
}

void AddNodeList(CLI::App& node, Program& program) {
    CLI::App* const command = node.add_subcommand("list", "Show the nodes");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "As JSON");
    command->footer("Example:\n  pagerfwd node list\n");
    command->callback([json, &program] {
        program.command = [json, &program] { return ListNodes(program, *json); };
    });
}

}  // namespace

void AddNode(CLI::App& app, Program& program) {
    CLI::App* const command = app.add_subcommand(
        "node", "Show the hosts of a site, take one out of service, put it back, remove it");
    command->require_subcommand(1);
    command->fallthrough();
    AddNodeList(*command, program);
    AddNamed(*command, program, "drain", "Take a node out of service, between two pages",
             "Each of its lines finishes the page that is on it. Their other pages go to lines of "
             "other\nnodes, but for those whose pagers are bound to them, which wait.\n\n"
             "Example:\n"
             "  pagerfwd node drain north\n",
             [&program](const std::string& name) { return Drain(program, name, true); });
    AddNamed(*command, program, "resume", "Put a node back into service",
             "Pages that went to others stay there.\n\n"
             "Example:\n"
             "  pagerfwd node resume north\n",
             [&program](const std::string& name) { return Drain(program, name, false); });
    AddNamed(*command, program, "remove", "Forget a node that comes no more",
             "It must have ended. A node that the site file names is there again with the next "
             "import.\n\n"
             "Example:\n"
             "  pagerfwd node remove north\n",
             [&program](const std::string& name) { return Remove(program, name); });
}

}  // namespace host
