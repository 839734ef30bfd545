// What the commands of `pagerfwd alarm` do where the database is away: what they were asked for
// waits in the spool. Tested by tests/unit/host/cli_alarm_spool_test.cpp.
#ifndef PAGERFWD_HOST_CLI_ALARM_SPOOL_H
#define PAGERFWD_HOST_CLI_ALARM_SPOOL_H

#include <functional>
#include <string>

#include "host/cli/program.h"
#include "host/intake/spool.h"

namespace host {

// Does it, behind what waits already; keeps it where the database is away. work: gets the
// connection, within a write transaction, and is called once at most; done: prints what came of
// it, behind the commit. at_once: it is kept without asking the database.
struct Spoolable {
    Spooled what;
    bool at_once = false;
    std::function<void(Connection&)> work;
    std::function<ExitCode(Connection&)> done;
};
ExitCode DoOrKeep(const Program& program, const Spoolable& asked);

}  // namespace host

#endif
