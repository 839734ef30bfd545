// Alarms kept. Tested by tests/unit/host/cli_alarm_spool_test.cpp.
#include "host/cli/alarm_spool.h"

#include <iostream>

#include "host/files/shared_file.h"
#include "host/store/pool.h"

namespace host {
namespace {

// Mistakes are told at once, though the letters of the site aren't known.
void Keep(const Spool& spool, const std::string& name, const Spooled& what) {
    CheckedAlarms(what.raise, Encoding::kLatin1);
    try {
        Warn("it waits in " + spool.Keep(name, what) + " until it is taken up");
    } catch (const FileError& error) {
        throw Failure(kCannot, error.what());
    }
}

void TakeUpWhatWaits(Connection& connection, const Spool& spool) {
    try {
        for (const std::string& refused : spool.TakeUp(connection).refused) {
            Warn("what waited can't be taken up: " + refused);
        }
    } catch (const StoreAway&) {
        throw;
    } catch (const StoreError& error) {
        Warn(std::string("what waits can't be taken up: ") + error.what());
    }
}

// A server may have done it though the connection was lost: then its name says so, and what waits
// under that name is done already.
void DoIt(Connection& connection, const std::string& name, const Spoolable& asked) {
    WriteTransaction transaction(connection);
    asked.work(connection);
    if (!connection.Can().is_file) {
        NoteTakenUp(connection, name, asked.what.at);
    }
    transaction.Commit();
}

}  // namespace

ExitCode DoOrKeep(const Program& program, const Spoolable& asked) {
    const Spool spool(program.database);
    const std::string name = NewSpoolName();
    if (asked.at_once) {
        Keep(spool, name, asked.what);
        return kDone;
    }
    bool is_done = false;
    try {
        Lease lease(program.database);
        TakeUpWhatWaits(lease.Database(), spool);
        DoIt(lease.Database(), name, asked);
        is_done = true;
        return asked.done(lease.Database());
    } catch (const StoreAway& away) {
        if (is_done) {
            throw;
        }
        Warn(away.what());
    }
    Keep(spool, name, asked.what);
    return kDone;
}

}  // namespace host
