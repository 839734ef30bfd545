// What the trace tells of a sending, with the alarm that it belongs to.
#ifndef PAGERFWD_HOST_PAGES_SENDS_H
#define PAGERFWD_HOST_PAGES_SENDS_H

#include <ctime>

#include "host/store/tables/sends.h"

namespace host {

// Throws StoreError.
Send SendOf(Connection& connection, const TracedPage& page, std::time_t now);

}  // namespace host

#endif
