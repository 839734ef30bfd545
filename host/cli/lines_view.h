// The lines of a site, as they are shown: host/status/line_status.h.
#ifndef PAGERFWD_HOST_CLI_LINES_VIEW_H
#define PAGERFWD_HOST_CLI_LINES_VIEW_H

#include <string>
#include <vector>

#include "host/status/line_status.h"
#include "host/text/encoding.h"
#include "host/text/json.h"

namespace host {

// No text where there is no line.
std::string LinesAsTable(const std::vector<LineStatus>& lines, Encoding encoding);
Json LinesAsJson(const std::vector<LineStatus>& lines, Encoding encoding);

}  // namespace host

#endif
