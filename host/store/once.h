// A write that is repeated until it has taken effect, and takes effect once, though its commit may
// have been in doubt.
//
// Tested by tests/unit/host/postgres_lost_test.cpp.
//
// Threads    One.
// Errors     Those of the write. Behind StoreAway, the same write is to be run again.
#ifndef PAGERFWD_HOST_STORE_ONCE_H
#define PAGERFWD_HOST_STORE_ONCE_H

#include <optional>

#include "host/store/connection.h"

namespace host {

class Once {
 public:
    template <typename Write>
    void Run(Connection& connection, Write write) {
        const bool done = doubt_ && connection.TookEffect(*doubt_);
        doubt_.reset();
        if (done) {
            return;
        }
        try {
            write();
        } catch (const StoreInDoubt& doubt) {
            doubt_ = doubt;
            throw;
        }
    }

 private:
    std::optional<StoreInDoubt> doubt_;  // of the try before
};

}  // namespace host

#endif
