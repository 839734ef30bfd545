// Turning the library's trace on.
#ifndef PAGERFWD_HOST_LINE_TRACE_SWITCH_H
#define PAGERFWD_HOST_LINE_TRACE_SWITCH_H

namespace host {

// In the working directory, before the library is loaded. Throws FileError where it can't be
// written: the library would stop at the first line of its trace.
void TurnTraceOn();

}  // namespace host

#endif
