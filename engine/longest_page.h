// How long sending one page can take.
#ifndef PAGERFWD_ENGINE_LONGEST_PAGE_H
#define PAGERFWD_ENGINE_LONGEST_PAGE_H

// Milliseconds in which a page is over whatever the far end does, with the waits that the modem
// handler has now. A worker that is still at it after that is stuck in the system: in a write to a
// line that is held up for good, or in a table that does not answer.
int LongestPageMs();

#endif
