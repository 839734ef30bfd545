// The node's figures, kept and shown: in a file for monitoring, and to the service manager.
//
// Threads    One.
// Errors     StoreError. A file that can't be written is told to the operator.
#ifndef PAGERFWD_HOST_NODE_FIGURES_H
#define PAGERFWD_HOST_NODE_FIGURES_H

#include <ctime>
#include <string>

#include "host/node/metrics.h"
#include "host/node/pace.h"
#include "host/node/page_ends.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/text/encoding.h"

namespace host {

class Figures {
 public:
    // file: empty: none.
    Figures(Connection& connection, std::string file, Encoding encoding, OperatorLog& log);

    void Count(const Send& send) { metrics_.Count(send); }
    void NoteBeat(std::time_t at) { metrics_.heartbeat = at; }

    // Every 15 seconds, however often it is called. Where nobody looks at them, never.
    void Show(const PageEnds& ends, std::time_t now);
    void ShowNow(const PageEnds& ends);

 private:
    Connection& connection_;
    const std::string file_;
    const Encoding encoding_;
    OperatorLog& log_;
    Metrics metrics_;
    const bool shown_;
    Pace pace_;
};

}  // namespace host

#endif
