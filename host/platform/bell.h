// Ending the pause of the library's worker.
//
// The worker pauses for a minute behind each pass over its pages, and a pass
// works on a copy of the queue: a page that is handed over meanwhile waits for
// the next one. The pause is a poll for one descriptor, which only the
// library's own end makes ready. The process may answer "time is up" as soon as
// it has handed over a page. Nothing in the library knows or changes: a pass
// looks at each page, and sends what is due.
#ifndef PAGERFWD_HOST_PLATFORM_BELL_H
#define PAGERFWD_HOST_PLATFORM_BELL_H

#include <poll.h>

#include <optional>

namespace host {

using SystemPoll = int (*)(pollfd* descriptors, nfds_t count, int timeout);

// Ends the pause in progress, or the next one if there is none: what was handed
// over before is looked at without delay. Any thread; rung more than once it
// rings once. Without descriptors left nothing rings, and the pages wait for
// their minute.
void RingBell();

// Seconds until the pause in progress ends by itself; none: there is no pause now. Any thread.
std::optional<int> PauseLeft();

// Answers a call of poll as `system` does, but for the pause: one descriptor's
// input, for the length of a pause. That ends as after its time when the bell
// has been rung.
int PollUnlessRung(SystemPoll system, pollfd* descriptors, nfds_t count, int timeout);

}  // namespace host

#endif
