// Host_Spooled: which files of spools have been taken up, so that none is twice
// (host/intake/spool.h).
//
// Requires   A write transaction, for what changes anything.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_SPOOLED_H
#define PAGERFWD_HOST_STORE_TABLES_SPOOLED_H

#include <ctime>
#include <string>

#include "host/store/connection.h"

namespace host {

bool WasSpooled(Connection& connection, const std::string& name);
void AddSpooled(Connection& connection, const std::string& name, std::time_t at);
void ForgetSpooled(Connection& connection, std::time_t before);

}  // namespace host

#endif
