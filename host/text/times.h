// Instants, as people are shown them.
#ifndef PAGERFWD_HOST_TEXT_TIMES_H
#define PAGERFWD_HOST_TEXT_TIMES_H

#include <ctime>
#include <string>

namespace host {

// "2001-01-08 10:00:00", local time; "-" for 0.
std::string LocalTime(std::time_t instant);

// The same with the zone's name, for whoever may be elsewhere: "2001-01-08 10:00:00 CET".
std::string LocalTimeWithZone(std::time_t instant);

}  // namespace host

#endif
