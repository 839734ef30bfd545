// Whether all is as it should be, for those who look: the reckoning of the heartbeat, done here
// again, so that a node which sleeps is seen.
//
// Threads    Any.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_WEB_WATCHMAN_H
#define PAGERFWD_HOST_WEB_WATCHMAN_H

#include <ctime>
#include <mutex>
#include <vector>

#include "host/node/reckoning.h"
#include "host/store/connection.h"

namespace host {

class Watchman {
 public:
    struct Report {
        std::time_t at = 0;        // when it was reckoned last
        bool twice = false;        // only what is found twice, a minute apart, is amiss
        std::vector<Amiss> amiss;  // found both times
    };
    // Reckons where that was a minute ago.
    Report Look(Connection& connection, Encoding encoding, std::time_t now);

 private:
    std::mutex mutex_;  // guards all that follows
    std::vector<Amiss> found_;
    Report report_;
};

}  // namespace host

#endif
