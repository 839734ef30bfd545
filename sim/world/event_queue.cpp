// What far ends have planned. Tested by tests/unit/sim/event_queue_test.cpp.
#include "sim/world/event_queue.h"

namespace pagersim {

void EventQueue::Add(Micros when, const void* owner, std::function<void()> what) {
    events_.emplace(std::make_pair(when, ++added_), Event{owner, std::move(what)});
}

void EventQueue::RunNext() {
    // Out of the queue first: the call may add others, or drop its owner's.
    const std::function<void()> what = std::move(events_.begin()->second.what);
    events_.erase(events_.begin());
    what();
}

void EventQueue::Drop(const void* owner) {
    for (auto event = events_.begin(); event != events_.end();) {
        event = event->second.owner == owner ? events_.erase(event) : std::next(event);
    }
}

}  // namespace pagersim
