// A second process at a database, for tests. Says a line when it has done its part, and holds what
// it has until its standard input ends.
//   store_process DATABASE lock            holds the lock of the alarm log
//   store_process DATABASE count           adds 1 to the state of alarm 7, fifty times, under the
//                                          lock
//   store_process DATABASE delete-event    deletes the event of alarm 7 and pager "duty"
//   store_process DATABASE own             says its owner number, which it keeps
//   store_process DATABASE engine          holds the locks of a node with a line at /dev/ttyS8
//   store_process FILE lock-file           holds the lock file
#include <pagerfwd/table_access.h>
#include <unistd.h>

#include <functional>
#include <iostream>
#include <map>
#include <string>

#include "host/devices/device_lock.h"
#include "host/files/lock_file.h"
#include "host/process/database_locks.h"
#include "host/store/owner_lock.h"
#include "tests/unit/host/table_client.h"

namespace {

void SayAndWait(const std::string& line) {
    std::cout << line << std::endl;
    std::string ignored;
    std::getline(std::cin, ignored);
}

void HoldLock(const std::string& database) {
    OpenTable alarms(database, "AlarmLog");
    const int32_t lock = DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300);
    SayAndWait(lock == 0 ? "locked" : "refused");
    DBAsciiAccessUnlock(alarms.handle, "AlarmLog");
}

void Count(const std::string& database) {
    for (int i = 0; i < 50; ++i) {
        OpenTable alarms(database, "AlarmLog");
        int32_t lock = DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300);
        const int32_t state = std::stoi(alarms.Read("pagerstate", "alarmlogID", "7").at(0));
        alarms.Set("WHERE alarmlogID = 7", {{"pagerstate", state + 1}}, 'n');
        DBAsciiAccessWrite(alarms.handle, "AlarmLog", &lock);
    }
    SayAndWait("counted");
}

void DeleteEvent(const std::string& database) {
    {
        OpenTable events(database, "AlarmFwd_PagerEvents");
        events.Delete("WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND PagerDescr = \"duty\"");
    }
    SayAndWait("deleted");
}

void Own(const std::string& database) {
    host::OwnerLock owners(database);
    SayAndWait(std::to_string(owners.Mine()));
}

void HoldEngine(const std::string& database) {
    const host::LockFile node = host::TakeNodeLock(database, "a test");
    host::LockFile engine = host::EngineLock(database);
    host::LockFile device = host::LockOfDevice({database, "."}, "/dev/ttyS8");
    SayAndWait(engine.TryTake("a test") && device.TryTake("a test") ? "taken" : "refused");
}

void HoldLockFile(const std::string& path) {
    host::LockFile lock(path, {geteuid(), getegid(), 0600});
    SayAndWait(lock.TryTake("a test") ? "taken" : "refused");
}

}  // namespace

int main(int argc, char** argv) {
    const std::map<std::string, std::function<void(const std::string&)>> parts = {
        {"lock", HoldLock}, {"count", Count},       {"delete-event", DeleteEvent},
        {"own", Own},       {"engine", HoldEngine}, {"lock-file", HoldLockFile}};
    const auto part = argc == 3 ? parts.find(argv[2]) : parts.end();
    if (part == parts.end()) {
        return 2;
    }
    part->second(argv[1]);
    return 0;
}
