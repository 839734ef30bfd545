// pagerfwd copy: a site into another database. Tested by tests/unit/host/cli_copy_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "host/cli/program.h"
#include "host/process/database_locks.h"
#include "host/site/site_tables.h"
#include "host/store/copy_site.h"
#include "host/store/database_name.h"
#include "host/store/schema.h"
#include "host/store/tables/nodes.h"
#include "host/text/printable.h"

namespace host {
namespace {

struct CopyOptions {
    std::string from;
    std::string to;
};

// What an engine has in hand would leave by both.
void RefuseWhileServed(const std::string& database) {
    const LockFile lock = EngineLock(database);
    if (lock.IsTaken()) {
        throw Failure(kNo, ShownName(database) + ": served by " + lock.Holder() +
                               "; end that, and copy then");
    }
}

// On whichever host.
void RefuseWhileHeld(Connection& connection) {
    for (const NodeState& node : ReadNodes(connection)) {
        if (node.lives) {
            throw Failure(kNo, connection.Name() + ": node \"" +
                                   Decode(node.node, EncodingOf(connection)) +
                                   "\" serves it: " + node.holder + "; end that, and copy then");
        }
    }
}

void RefusePassword(const std::string& database) {
    if (HasPassword(database)) {
        throw Failure(kUsage, kPasswordShown);
    }
}

ExitCode Copy(const CopyOptions& options) {
    for (const std::string& database : {options.from, options.to}) {
        RefusePassword(database);
    }
    Connection from(options.from);
    RequireTables(from);
    Connection to(options.to, Connection::Mode::kCreate);
    for (const Connection* const site : {&from, &to}) {
        RefuseWhileServed(site->Path());
    }
    RefuseWhileHeld(from);
    CreateTables(to);
    RefuseWhileHeld(to);
    for (const CopiedTable& table : CopySite(from, to)) {
        std::cout << table.name << ": " << table.rows << (table.rows == 1 ? " row\n" : " rows\n");
    }
    std::cout << Printable(ShownName(options.to)) << ": is now as "
              << Printable(ShownName(options.from)) << " is\n";
    return kDone;
}

}  // namespace

void AddCopy(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("copy", "Copy a whole site, pending pages too, into another database");
    const auto options = std::make_shared<CopyOptions>();
    command->add_option("FROM", options->from, "The database to be copied")->required();
    command->add_option("TO", options->to, "One without a site; made, where it is a file")
        ->required();
    command->footer(
        "Neither may be served meanwhile. What was written is read again and compared.\n\n"
        "Example:\n"
        "  pagerfwd copy site.db postgresql://db.example/site\n");
    command->callback(
        [&program, options] { program.command = [options] { return Copy(*options); }; });
}

}  // namespace host
