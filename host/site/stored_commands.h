// The commands of a site in its database: what [notify] and [heartbeat] run.
#ifndef PAGERFWD_HOST_SITE_STORED_COMMANDS_H
#define PAGERFWD_HOST_SITE_STORED_COMMANDS_H

#include <string>
#include <vector>

#include "host/site/site.h"
#include "host/store/connection.h"

namespace host {

inline constexpr const char* kNotifyCommand = "notify";
inline constexpr const char* kHeartbeatCommand = "heartbeat";

// The program and its arguments, in UTF-8; empty: there is none. Both throw StoreError.
std::vector<std::string> ReadCommand(Connection& connection, const char* name);
void StoreCommand(Connection& connection, const char* name, const Command& command);

}  // namespace host

#endif
