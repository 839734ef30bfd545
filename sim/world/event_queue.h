// What far ends have planned: calls at virtual times.
#ifndef PAGERFWD_SIM_WORLD_EVENT_QUEUE_H
#define PAGERFWD_SIM_WORLD_EVENT_QUEUE_H

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "sim/world/time.h"

namespace pagersim {

// Ordered by time; calls of one time are run in the order they were added.
class EventQueue {
 public:
    // `owner` names whose call it is, for Drop.
    void Add(Micros when, const void* owner, std::function<void()> what);

    // The earliest time, kNever when there is nothing.
    Micros Next() const { return events_.empty() ? kNever : events_.begin()->first.first; }

    // Takes the earliest call out and runs it. Requires: not empty.
    void RunNext();

    // Forgets all calls of `owner`.
    void Drop(const void* owner);

    void Clear() { events_.clear(); }

 private:
    struct Event {
        const void* owner;
        std::function<void()> what;
    };

    std::map<std::pair<Micros, uint64_t>, Event> events_;
    uint64_t added_ = 0;
};

}  // namespace pagersim

#endif
