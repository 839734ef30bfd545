// What is taken from the trace of the running engine: the record of every sending, the figures, the
// ports that stay taken, and what the operator has to hear at once.
//
// The file is kept within bounds: moved aside when it has grown to 16 MiB, or after a week. The
// start of an engine would empty it: what it holds is then added to what was moved aside last.
//
// Threads    One.
// Errors     StoreError, where a sending can't be recorded; the next look goes on behind it.
#ifndef PAGERFWD_HOST_LINE_ENGINE_TRACE_H
#define PAGERFWD_HOST_LINE_ENGINE_TRACE_H

#include <ctime>

#include "host/files/growing_file.h"
#include "host/line/port_watch.h"
#include "host/line/trace_follower.h"
#include "host/node/metrics.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/text/encoding.h"

namespace host {

class EngineTrace {
 public:
    EngineTrace(Connection& connection, Encoding encoding, OperatorLog& log);

    // Before an engine is made.
    void Begin();

    // Reads what has come.
    void Look();

    PortWatch& Ports() { return ports_; }
    const Metrics& Figures() const { return metrics_; }

 private:
    void PageEnded(const TracedPage& page);
    void Tell(const Send& send);
    void TellWhoHolds(const TracedPage& page);
    std::string Named(const TracedPage& page) const;

    Connection& connection_;
    const Encoding encoding_;
    OperatorLog& log_;
    GrowingFile file_;
    PortWatch ports_;
    TraceFollower follower_;
    std::time_t begun_ = 0;  // the file
    Metrics metrics_;
};

}  // namespace host

#endif
