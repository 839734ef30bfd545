// pagerfwd init: makes the tables. Tested by tests/unit/host/cli_test.cpp.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "host/cli/program.h"
#include "host/process/database_locks.h"
#include "host/process/room_to_open.h"
#include "host/store/database_name.h"
#include "host/store/rights.h"
#include "host/store/schema.h"
#include "host/store/tables/nodes.h"
#include "host/text/printable.h"

namespace host {
namespace {

const char* Describe(Made made) {
    switch (made) {
        case Made::kTables:
            return "made, without any ports or pagers yet; add them with: pagerfwd import";
        case Made::kNewerParts:
            return "brought up to date";
        case Made::kLater:
            return "is brought up to date by the nodes as soon as none of an older pagerfwd runs; "
                   "until then all work on it as it is. Still older: ";
        case Made::kNothing:
            break;
    }
    return "has its tables already; nothing changed";
}

// An engine goes on with the tables as it knows them.
void RefuseWhileServed(Connection& connection, const std::string& database) {
    const bool may_wait = connection.Can().spans_hosts && !LacksTables(connection);
    if (!IsOutdated(connection) || may_wait) {
        return;
    }
    const LockFile lock = EngineLock(database);
    if (lock.IsTaken()) {
        throw Failure(kCannot, ShownName(database) + ": an older pagerfwd serves it (" +
                                   lock.Holder() + "); end that, and bring it up to date then");
    }
}

ExitCode Init(const Program& program, bool print) {
    if (print) {
        std::cout << SchemaForPostgres();
        return kDone;
    }
    MakeRoomToOpen(program.database);
    Connection connection(program.database, Connection::Mode::kCreate);
    RefuseWhileServed(connection, program.database);
    const Made made = CreateTables(connection);
    std::cout << Printable(ShownName(program.database)) << ": " << Describe(made)
              << (made == Made::kLater
                      ? Printable(Joined(NodesThatDontKnow(connection, NewestTables())))
                      : "")
              << "\n";
    return kDone;
}

}  // namespace

void AddInit(CLI::App& app, Program& program) {
    CLI::App* const command =
        app.add_subcommand("init", "Make the tables of a new database, or bring up to date");
    const auto print = std::make_shared<bool>(false);
    command->add_flag(
        "--print", *print,
        "Print what makes the tables on a PostgreSQL server, and roles with the rights "
        "that they need, for its administrator");
    command->footer(
        "A database that has its tables already is left as it is.\n\n"
        "Examples:\n"
        "  pagerfwd --database site.db init\n"
        "  pagerfwd init --print | psql -v ON_ERROR_STOP=1 site\n");
    command->callback([&program, print] {
        program.command = [&program, print] { return Init(program, *print); };
    });
}

}  // namespace host
