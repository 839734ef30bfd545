// Until when a node's lines may go on without another word from it: an instant in memory that the
// node and its lines share. The node moves it on with each renewal of its lease; who finds it over
// ends, whatever the node, the database or the network are doing meanwhile.
//
// The clock is the host's, from its start on: nobody sets it, and it goes on while the host sleeps.
//
// Threads    Any, of any process that has it.
// Errors     std::system_error.
#ifndef PAGERFWD_HOST_PROCESS_LEASE_DEADLINE_H
#define PAGERFWD_HOST_PROCESS_LEASE_DEADLINE_H

#include <atomic>
#include <chrono>
#include <cstdint>

#include "host/files/descriptor.h"

namespace host {

class LeaseDeadline {
 public:
    using Instant = std::chrono::milliseconds;

    // A new one, which is over; processes get it by its descriptor.
    LeaseDeadline();
    // That of another process.
    explicit LeaseDeadline(Descriptor file);
    ~LeaseDeadline();
    LeaseDeadline(const LeaseDeadline&) = delete;
    LeaseDeadline& operator=(const LeaseDeadline&) = delete;

    static Instant Now();

    void MoveTo(Instant instant) { shared_->store(instant.count()); }
    // Negative: it is over.
    std::chrono::milliseconds Left() const { return Instant(shared_->load()) - Now(); }
    bool IsOver() const { return Left().count() <= 0; }

    int Number() const { return file_.Number(); }

 private:
    using Shared = std::atomic<int64_t>;
    static_assert(Shared::is_always_lock_free, "or it would not work between processes");

    void Map();

    Descriptor file_;
    Shared* shared_ = nullptr;
};

}  // namespace host

#endif
