// What a line needs of the world it is in.
#ifndef PAGERFWD_SIM_WORLD_TIMELINE_H
#define PAGERFWD_SIM_WORLD_TIMELINE_H

#include "sim/world/event_queue.h"
#include "sim/world/line_set.h"
#include "sim/world/time.h"

namespace pagersim {

class Timeline {
 public:
    virtual ~Timeline() = default;

    virtual Micros Now() const = 0;
    virtual EventQueue& Events() = 0;

    // Whoever waits for input on one of these lines goes on.
    virtual void WakeForInput(LineSet lines) = 0;
};

}  // namespace pagersim

#endif
