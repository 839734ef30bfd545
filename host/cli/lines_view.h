// The lines of a site: how each is, what it is doing, when it last sent a page.
#ifndef PAGERFWD_HOST_CLI_LINES_VIEW_H
#define PAGERFWD_HOST_CLI_LINES_VIEW_H

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/lines.h"
#include "host/text/encoding.h"
#include "host/text/json.h"

namespace host {

struct LineStatus {
    LineState state;
    int64_t pages = 0;             // that it has, or is to have; those included that wait for it
    std::time_t last_success = 0;  // 0: none that is known of
};

// In the order of the site's ports. Throws StoreError.
std::vector<LineStatus> ReadLineStatus(Connection& connection);

// No text where there is no line.
std::string LinesAsTable(const std::vector<LineStatus>& lines, Encoding encoding);
Json LinesAsJson(const std::vector<LineStatus>& lines, Encoding encoding);

}  // namespace host

#endif
