// The pager that a command names.
#ifndef PAGERFWD_HOST_CLI_ONE_PAGER_H
#define PAGERFWD_HOST_CLI_ONE_PAGER_H

#include <string>

#include "host/store/tables/pagers.h"
#include "host/text/encoding.h"

namespace host {

// name: from the command line. Throws Failure when the tables don't have exactly one such pager.
PagerRow FindOnePager(Connection& connection, const std::string& name, Encoding encoding);

}  // namespace host

#endif
