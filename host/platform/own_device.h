// The one serial port that the library of a process sees.
//
// The library knows ports by nine names, /dev/ttyS0 to /dev/ttyS8, and tries
// them all. A process that serves one line answers those openings itself: the
// first name is its own device, wherever that lies, and the others don't exist.
#ifndef PAGERFWD_HOST_PLATFORM_OWN_DEVICE_H
#define PAGERFWD_HOST_PLATFORM_OWN_DEVICE_H

#include <string>

namespace host {

// How the library calls it, and the process itself.
inline constexpr const char* kOwnDevice = "/dev/ttyS0";

// From now on that name means this device. Before the library is loaded; it
// holds for the whole process, so that the process itself can't open a device
// by such a name either.
void SetOwnDevice(const std::string& path);

// What an opening of `path` opens: the path itself, unless it begins with
// "/dev/ttyS" and a device is set; then that device, or null where there is
// none of this name.
const char* OpenedFor(const char* path);

}  // namespace host

#endif
