// How long sending one page can take.
#ifndef PAGERFWD_ENGINE_LONGEST_PAGE_H
#define PAGERFWD_ENGINE_LONGEST_PAGE_H

// Milliseconds for what a worker does beside a page on the line: the tables and the trace. The
// system may hold a closing device for half of it while unsent bytes drain.
constexpr int kTablesAndTraceMs = 60 * 1000;

// Milliseconds in which a page is over whatever the far end does, with the waits that the modem
// handler has now. A worker that is still at it after that is stuck in the system: in a write to a
// line that is held up for good, or in a table that does not answer.
int LongestPageMs();

#endif
