// Waiting for an answer without keeping a core busy.
//
// While the library awaits an answer it asks "is anything there?" without a pause, for minutes: a
// select for the line alone, with a time-out of zero. The process that loads the library stands
// between it and the system, and may take a moment to answer "nothing". Nothing in the library
// knows or changes: the same calls, in the same order, with the same answers.
#ifndef PAGERFWD_HOST_PLATFORM_PATIENT_SELECT_H
#define PAGERFWD_HOST_PLATFORM_PATIENT_SELECT_H

#include <sys/select.h>

namespace host {

using SystemSelect = int (*)(int limit, fd_set* read, fd_set* write, fd_set* except,
                             timeval* timeout);

// How long a look at a quiet line takes. The library looks twice before it looks at the clock, so
// that its own deadlines are noticed twice as much later.
constexpr int kPatienceMs = 10;

// Answers a call of select as `system` does, but for a look at a serial line: for one terminal and
// nothing else, whether it has something to read, without waiting. If it has nothing, it is looked
// at again until it has, for kPatienceMs at most. What it leaves in the set and in the time-out,
// and errno, is what the system leaves after a look without waiting.
//
// The two looks behind a byte are answered at once: the library has read the byte by then, and
// looks twice more before it acts on it. A terminal that is gone, which can be read without end and
// has nothing, is taken for a quiet one.
//
// Threads    Any. What was seen last is remembered for each thread.
int PatientSelect(SystemSelect system, int limit, fd_set* read, fd_set* write, fd_set* except,
                  timeval* timeout);

}  // namespace host

#endif
