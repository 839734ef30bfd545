// What a node and the process of a line have between them: each can wake the other, and each sees
// that the other has died. Nothing is said by it; what there is to know stands in the database.
//
// Threads    One.
#ifndef PAGERFWD_HOST_PROCESS_BELL_SOCKET_H
#define PAGERFWD_HOST_PROCESS_BELL_SOCKET_H

#include <utility>

#include "host/files/descriptor.h"

namespace host {

class BellSocket {
 public:
    BellSocket() = default;
    explicit BellSocket(Descriptor end) : end_(std::move(end)) {}

    // Two ends. They are closed where another program is started, unless it is given one.
    // Throws std::system_error.
    static std::pair<BellSocket, BellSocket> Pair();

    // Never waits: a bell that the other hasn't heard yet is heard once.
    void Ring() const;

    enum class Heard { kNothing, kBell, kEnd };
    // What has come since the last call. kEnd: the other end is closed.
    Heard Listen() const;

    int Number() const { return end_.Number(); }

 private:
    Descriptor end_;
};

}  // namespace host

#endif
