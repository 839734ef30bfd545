// Tested by tests/unit/host/own_device_test.cpp, with the library by
// tests/e2e/run_lines_test.cpp.
#include "host/platform/own_device.h"

#include <string_view>

namespace host {
namespace {

constexpr std::string_view kPorts = "/dev/ttyS";

std::string& OwnDevice() {
    static auto& device = *new std::string;  // files are opened to the very end of the process
    return device;
}

}  // namespace

void SetOwnDevice(const std::string& path) {
    OwnDevice() = path;
}

const char* OpenedFor(const char* path) {
    const std::string& device = OwnDevice();
    if (device.empty() || std::string_view(path).substr(0, kPorts.size()) != kPorts) {
        return path;
    }
    return std::string_view(path) == kOwnDevice ? device.c_str() : nullptr;
}

}  // namespace host
