// Alarms that come while the database is away: they wait in files of a folder beside it, and are
// taken up in their order, each once, when it is back.
//
//   "site.db-spool/1167609600000000000-0123456789abcdef"
//
// A file has what one command was asked for, as JSON. It is on the disk, with its name, before the
// command ends. Who takes it up writes its name into Host_Spooled in the transaction of its alarms,
// so that one who dies before the file is removed has done no harm.
//
// Errors     FileError, naming the file, from what keeps; StoreError from what takes up.
#ifndef PAGERFWD_HOST_INTAKE_SPOOL_H
#define PAGERFWD_HOST_INTAKE_SPOOL_H

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "host/alarms/incoming.h"
#include "host/intake/alarm_json.h"
#include "host/store/connection.h"

namespace host {

// What a command was asked for: either alarms to raise, or some to withdraw.
struct Spooled {
    std::time_t at = 0;
    std::string by;  // who, in UTF-8
    std::vector<IncomingAlarm> raise;
    std::vector<ToWithdraw> withdraw;
};

// A name that no other command on any host has.
std::string NewSpoolName();

// That what a command was asked for is done: with its alarms, in their write transaction.
void NoteTakenUp(Connection& connection, const std::string& name, std::time_t now);

struct TakenUp {
    int alarms = 0;
    std::vector<std::string> refused;  // why, with the path of the file: it is set aside
};

// That of a database.
class Spool {
 public:
    explicit Spool(const std::string& database);

    // Keeps it under the name, and returns the path. It may have been taken up under that name
    // already.
    std::string Keep(const std::string& name, const Spooled& what) const;

    // Unless another process does it at this moment. Cheap where there is nothing.
    TakenUp TakeUp(Connection& connection) const;

 private:
    const std::string folder_;
    const std::string owner_;  // what the files take their owner and rights after
};

}  // namespace host

#endif
