// Whether there is anything new in a database, at next to no cost: for whoever looks often.
#ifndef PAGERFWD_HOST_STORE_CHANGES_H
#define PAGERFWD_HOST_STORE_CHANGES_H

#include <cstdint>
#include <utility>

#include "host/store/connection.h"

namespace host {

class Changes {
 public:
    // Whether anybody has written since the call before, be it over this connection. At first: yes.
    // Throws StoreError.
    bool AreThere(Connection& connection);

    // The next call is the first again.
    void Forget() { seen_ = kNone; }

 private:
    using Version = std::pair<int64_t, int64_t>;  // others' commits, rows that were changed here
    static constexpr Version kNone{-1, -1};

    Version seen_ = kNone;
};

}  // namespace host

#endif
