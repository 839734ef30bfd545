// Who has a serial device open.
#ifndef PAGERFWD_HOST_PROCESS_PORT_HOLDER_H
#define PAGERFWD_HOST_PROCESS_PORT_HOLDER_H

#include <string>

namespace host {

// "minicom, process 812", for "/dev/ttyS0"; several with commas between. Empty where nobody has, or
// this process may not know. This process itself doesn't count.
std::string HoldersOf(const std::string& device, const std::string& processes = "/proc");

}  // namespace host

#endif
