// What the table access does while the store is away (StoreAway).
//
// It answers the library with a failure. The library takes a table that can't be read for an
// acknowledgement, or for a pager that there is none of, and drops the page: a process that serves
// a line has the library wait instead, until the store can be used again.
//
// Threads    Any. `pause` is called by each thread that waits.
#ifndef PAGERFWD_HOST_STORE_PATIENCE_H
#define PAGERFWD_HOST_STORE_PATIENCE_H

#include <functional>

#include "host/store/connection.h"

namespace host {

// From now on; empty: no more. pause waits a second, before the next try; it is given the seconds
// waited so far. Before other threads use the tables.
void WaitForTables(std::function<void(int seconds)> pause);
bool WaitsForTables();
// Whether a call of the library waits now.
bool AnyWaits();

// A call of the library that waits: tells of the trouble at the first wait of this process, and of
// its end when none waits any more. Of an outage those tell who look at the database all the time.
class Wait {
 public:
    explicit Wait(const StoreAway& why);
    ~Wait();
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    void Second();

 private:
    int seconds_ = 0;
};

}  // namespace host

#endif
