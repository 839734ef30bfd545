// The lines of a site: how each is, what it is doing, when it last sent a page; and in which words
// that is told.
#ifndef PAGERFWD_HOST_STATUS_LINE_STATUS_H
#define PAGERFWD_HOST_STATUS_LINE_STATUS_H

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/lines.h"
#include "host/text/encoding.h"

namespace host {

struct LineStatus {
    LineState state;
    int64_t pages = 0;             // that it has, or is to have; those included that wait for it
    std::time_t last_success = 0;  // 0: none that is known of
};

// In the order of the site's ports. Throws StoreError.
std::vector<LineStatus> ReadLineStatus(Connection& connection);

// The path of its device, as the tables have it.
std::string DeviceOf(const LineState& line);

// "sick since 2001-01-08 10:05:00: no dial tone", in UTF-8.
std::string HealthOf(const LineState& line, Encoding encoding);

}  // namespace host

#endif
