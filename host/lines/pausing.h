// A line taken out of service by somebody, and put back.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_LINES_PAUSING_H
#define PAGERFWD_HOST_LINES_PAUSING_H

#include <string>

#include "host/alarms/raising.h"
#include "host/store/connection.h"

namespace host {

// It finishes the page that is on it; its other pages go to other lines. Noted in the trail, in the
// transaction of the change. line: as the tables have it; it is the site's. False: it was so
// before.
bool PauseLine(Connection& connection, const std::string& line, bool pause, const Doer& doer);

}  // namespace host

#endif
