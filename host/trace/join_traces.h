// Traces of several lines as one, in the order of time.
//
// Of each trace the order stays. Pages are counted through, and told with the line's own name: the
// library, which knows of one line alone, calls every line the same.
//
// What stands in front of the first line that says a day is of the day that this says. A trace that
// says none comes first.
//
// Memory     Bounded, whatever the lengths of the traces: of each, what one piece of it comes to.
// Errors     None of its own; what the sink throws passes through.
#ifndef PAGERFWD_HOST_TRACE_JOIN_TRACES_H
#define PAGERFWD_HOST_TRACE_JOIN_TRACES_H

#include <cstddef>
#include <functional>
#include <istream>
#include <memory>
#include <string>
#include <vector>

#include "host/trace/read_trace.h"

namespace host {

struct TraceOfLine {
    std::string line;  // empty: not known, and pages keep what the library calls it
    std::istream& bytes;
};

// went_on: is told how many bytes were read; false ends the reading.
void JoinTraces(const std::vector<TraceOfLine>& traces, TraceSink& sink,
                const std::function<bool(size_t)>& went_on);

}  // namespace host

#endif
