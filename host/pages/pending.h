// Some of the pending pages, as somebody looks for them: only what is shown is told, so that ten
// thousand that wait cost little.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_PENDING_H
#define PAGERFWD_HOST_PAGES_PENDING_H

#include <cstddef>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "host/pages/history.h"
#include "host/store/connection.h"

namespace host {

struct PendingWanted {
    std::function<bool(const std::string& group)> group;  // as the tables have it; none: any
    std::string pager;                                    // likewise; empty: any
    std::string state;                                    // as StateOf calls it; empty: any
    std::time_t since = 0;                                // its alarm was raised then or later
    std::time_t until = 0;                                // ... then or before; 0: whenever
    std::string after;                                    // where to go on; empty: at the first
    size_t count = 0;                                     // at most
    bool whole_alarms = false;  // all of an alarm's with its first, be they more
};

struct PendingFound {
    std::vector<PageStory> pages;
    size_t all = 0;    // that are wanted, those before and behind these included
    std::string next;  // where to go on; empty: there are no more
};

// In the order of PendingPages. after may also be the number of an alarm: at its first. Where to go
// on stays good when pages end meanwhile.
PendingFound FindPending(Connection& connection, const PendingWanted& wanted);

}  // namespace host

#endif
