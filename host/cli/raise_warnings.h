// What whoever raises an alarm should know at once.
#ifndef PAGERFWD_HOST_CLI_RAISE_WARNINGS_H
#define PAGERFWD_HOST_CLI_RAISE_WARNINGS_H

#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "host/text/encoding.h"

namespace host {

// That no engine runs, that no route fits, that a pager gets only a part of the text. For a
// terminal. Throws StoreError.
std::vector<std::string> WarningsFor(Connection& connection, const NewAlarm& alarm,
                                     Encoding encoding);

}  // namespace host

#endif
