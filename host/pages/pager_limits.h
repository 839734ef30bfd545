// How often a pager's page is tried, and how far apart.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_PAGER_LIMITS_H
#define PAGERFWD_HOST_PAGES_PAGER_LIMITS_H

#include <cstdint>
#include <string>

#include "host/store/connection.h"

namespace host {

struct PagerLimits {
    int64_t retries = 5;  // what the library takes where there is no such pager
    int64_t delay = 45;   // minutes
};

PagerLimits LimitsOf(Connection& connection, const std::string& pager);

}  // namespace host

#endif
