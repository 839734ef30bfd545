// Test calls that the node is asked for: made, told to the operator, answered.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_LINE_ASKED_CALL_H
#define PAGERFWD_HOST_LINE_ASKED_CALL_H

#include <string>

#include "host/lines/line_exit.h"
#include "host/lines/site_lines.h"
#include "host/process/operator_log.h"
#include "host/store/pool.h"
#include "host/store/tables/test_pages.h"

namespace host {

// device: the line's, as the process opens it. Meanwhile the line is shown to be doing it.
LineExit MakeAskedCall(Connection& connection, const SiteLine& line, const std::string& device,
                       const AskedTestPage& asked, OperatorLog& log);

// The first that is asked of the line, by a process that is there for nothing else.
LineExit MakeFirstAskedCall(const std::string& database, const SiteLine& line, OperatorLog& log);

}  // namespace host

#endif
