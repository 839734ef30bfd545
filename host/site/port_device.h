// Which serial device a port stands for.
#ifndef PAGERFWD_HOST_SITE_PORT_DEVICE_H
#define PAGERFWD_HOST_SITE_PORT_DEVICE_H

#include <string>

#include "host/site/site.h"

namespace host {

// The path of the device: the one that is named with the port or, where none is, that of its name:
// "COM 1" to "COM 9" are /dev/ttyS0 to /dev/ttyS8. Empty where the name stands for none.
std::string DeviceOfPort(const std::string& name, const std::string& device);

inline std::string DeviceOfPort(const Port& port) {
    return DeviceOfPort(port.name.value, port.device.value);
}

}  // namespace host

#endif
