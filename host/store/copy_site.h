// A whole site from one database into another, of whatever kinds: ports, pagers, hours and routes,
// alarms, pages that are pending or owed, and all history.
//
// Errors     StoreError, with nothing copied.
#ifndef PAGERFWD_HOST_STORE_COPY_SITE_H
#define PAGERFWD_HOST_STORE_COPY_SITE_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

struct CopiedTable {
    std::string name;
    int64_t rows = 0;
};

// Both have the tables of this program, the second no row in any. Nobody else writes to either
// meanwhile. What was written is read again and compared, before it counts.
std::vector<CopiedTable> CopySite(Connection& from, Connection& to);

}  // namespace host

#endif
