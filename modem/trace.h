// Formatted trace lines of the modem handler.
//
// A text is formatted once, and only while tracing is on; a trace call while it is off still makes
// its pause. Fixed texts, and texts from outside, go to CCOMHdl::WritePageProtocolEntry as they
// are: nothing that comes from a table or a line is ever a format.
//
// Many formats end in "L:%%d %%s". Kept: no second formatting follows, the line ends in the
// characters L:%d %s, and readers of traces are used to it.
//
// A line that there is no memory for is lost, and nothing else: no call here fails or throws.
#ifndef PAGERFWD_MODEM_TRACE_H
#define PAGERFWD_MODEM_TRACE_H

#include "linux/win_types.h"

// Whether the trace is being written.
bool Tracing();

// Requires: CCOMHdl::lock held. Formats into the handler's shared text.
[[gnu::format(printf, 1, 2)]] void Trace(const char* format, ...);

// For the operations that take no lock: formats into a text of its own.
[[gnu::format(printf, 1, 2)]] void TraceUnlocked(const char* format, ...);

// A handle as trace lines show it.
int HandleNumber(HANDLE handle);

#endif
