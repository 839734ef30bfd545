// What lines have sent since the last look.
//
// Threads    One.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_NODE_NEW_SENDS_H
#define PAGERFWD_HOST_NODE_NEW_SENDS_H

#include <cstdint>
#include <vector>

#include "host/process/operator_log.h"
#include "host/store/tables/sends.h"
#include "host/text/encoding.h"

namespace host {

class NewSends {
 public:
    // What there is now isn't new.
    explicit NewSends(Connection& connection);

    // In the order in which they ended.
    std::vector<Send> Take();

 private:
    Connection& connection_;
    int64_t seen_;  // the last row
};

// Tells the operator of a sending.
void Tell(OperatorLog& log, const Send& send, Encoding encoding);

}  // namespace host

#endif
