// Devices of ports. Tested by tests/unit/host/port_device_test.cpp.
#include "host/site/port_device.h"

#include <string_view>

namespace host {

std::string DeviceOfPort(const std::string& name, const std::string& device) {
    constexpr std::string_view kPrefix = "COM ";
    if (!device.empty()) {
        return device;
    }
    if (name.size() != kPrefix.size() + 1 || name.compare(0, kPrefix.size(), kPrefix) != 0 ||
        name.back() < '1' || name.back() > '9') {
        return {};
    }
    return std::string("/dev/ttyS") + static_cast<char>(name.back() - 1);
}

}  // namespace host
