// Instants, as commands show them.
#ifndef PAGERFWD_HOST_CLI_TIMES_H
#define PAGERFWD_HOST_CLI_TIMES_H

#include <ctime>
#include <string>

namespace host {

// "2001-01-08 10:00:00", local time; "-" for 0.
std::string LocalTime(std::time_t instant);

}  // namespace host

#endif
