// The room. Tested by tests/unit/host/room_test.cpp.
#include "host/node/room.h"

#include <sys/statvfs.h>

#include <limits>
#include <stdexcept>
#include <utility>

#include "host/files/last_room.h"
#include "host/process/clock_jumps.h"
#include "host/store/database_name.h"
#include "host/store/reserve.h"

namespace host {
namespace {

constexpr std::time_t kBetweenLooks = 60;          // s
constexpr std::time_t kBetweenReserves = 60 * 60;  // s

}  // namespace

Room::Room(std::string database, OperatorLog& log, Available available)
    : database_(std::move(database)), log_(log), available_(std::move(available)) {}

uint64_t Room::AvailableBytes(const std::string& path) {
    struct statvfs status {};
    return statvfs(path.c_str(), &status) == 0 ? uint64_t{status.f_bavail} * status.f_frsize
                                               : std::numeric_limits<uint64_t>::max();
}

void Room::Look(std::time_t now) {
    // A server has a disk of its own, and somebody who looks after it.
    if (IsOnServer(database_) || !HasCome(look_at_, now, kBetweenLooks)) {
        return;
    }
    look_at_ = now + kBetweenLooks;
    Tell(available_(database_));
    if (!full_ && HasCome(reserve_at_, now, kBetweenReserves)) {
        Reserve(now);
    }
}

// Full and not full are some way apart, so that a disk at its limit isn't told of every minute.
void Room::Tell(uint64_t available) {
    if (!full_ && available < kLittle) {
        full_ = true;
        log_.Error("the disk of " + database_ + " is full: " + std::to_string(available >> 10) +
                   " KiB are left. Pages go on; alarms can't be raised soon, and the trace stops. "
                   "Make room");
    } else if (full_ && available >= 2 * kLittle) {
        full_ = false;
        reserve_at_ = 0;
        log_.Info("the disk of " + database_ + " has room again");
    }
}

void Room::Reserve(std::time_t now) {
    reserve_at_ = now + kBetweenReserves;
    try {
        ReserveRoom(database_);
        KeepLastRoom(database_);
    } catch (const std::runtime_error& failure) {
        log_.Warning(std::string("no room could be reserved for a full disk: ") + failure.what());
    }
}

}  // namespace host
