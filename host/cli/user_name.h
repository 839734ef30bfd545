// Who calls this program, for what others read later.
#ifndef PAGERFWD_HOST_CLI_USER_NAME_H
#define PAGERFWD_HOST_CLI_USER_NAME_H

#include <string>

namespace host {

// The name that they logged in by; behind sudo, too.
std::string UserName();

}  // namespace host

#endif
