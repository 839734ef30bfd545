// Watches the room on the database's file system: tells the operator when it runs out and when it
// is back, and keeps the database's reserve (store/reserve.h) and that of the last writes
// (files/last_room.h) while there is room for them.
//
// Threads    One.
#ifndef PAGERFWD_HOST_NODE_ROOM_H
#define PAGERFWD_HOST_NODE_ROOM_H

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>

#include "host/process/operator_log.h"

namespace host {

class Room {
 public:
    // Bytes that a process without privileges may still use, where the file lies.
    using Available = std::function<uint64_t(const std::string& path)>;

    Room(std::string database, OperatorLog& log, Available available = AvailableBytes);

    // Looks once a minute, however often it is called.
    void Look(std::time_t now);

    bool IsFull() const { return full_; }

    static uint64_t AvailableBytes(const std::string& path);

    static constexpr uint64_t kLittle = uint64_t{8} << 20;

 private:
    void Tell(uint64_t available);
    void Reserve(std::time_t now);

    const std::string database_;
    OperatorLog& log_;
    const Available available_;
    bool full_ = false;
    std::time_t look_at_ = 0;
    std::time_t reserve_at_ = 0;
};

}  // namespace host

#endif
