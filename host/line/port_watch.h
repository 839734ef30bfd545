// Ports that stay taken.
//
// When the library can't open a port for a page, it keeps the port marked as taken: every later
// page over it fails, until the engine is made anew. Only the trace tells. So does a port that
// wasn't there when the engine was made, since it is looked for only then.
//
// Threads    One.
#ifndef PAGERFWD_HOST_LINE_PORT_WATCH_H
#define PAGERFWD_HOST_LINE_PORT_WATCH_H

#include <ctime>

#include "host/trace/traced_page.h"

namespace host {

class PortWatch {
 public:
    // A page of the trace has ended.
    void PageEnded(const TracedPage& page);

    // A port couldn't be opened since the engine was made.
    bool IsAnyTaken() const { return taken_; }

    // Whether the engine is to be made anew now. Starting it makes every pending page due at once,
    // and forgets that a page has failed for the first time: where a port stays dead, the pauses
    // between two attempts grow, from 5 minutes to an hour, so that its pages are given up in time.
    bool IsDue(std::time_t now) const { return taken_ && now >= not_before_; }

    // The engine has been made anew.
    void Renewed(std::time_t now);

 private:
    bool taken_ = false;
    std::time_t not_before_ = 0;
    std::time_t pause_ = 0;
};

}  // namespace host

#endif
