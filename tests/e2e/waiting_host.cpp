// A process that loads the library as pagerfwd does, with pagerfwd's own select, and whose one
// serial port is any terminal. Sends a test page by it.
// Usage: waiting_host LIBRARY DATABASE TERMINAL
#include <string>

#include "host/library/library.h"
#include "host/platform/own_device.h"

int main(int, char** argv) {
    host::SetOwnDevice(argv[3]);
    const host::Library library(argv[1]);
    int32_t noAlarm = 0;
    FwdSpecialInfoStr info{argv[2], &noAlarm, nullptr, nullptr};
    std::string name = "any", number = "5550111", port = "COM 1", type = "4", hours;
    return library.TestPager(&info, name.data(), number.data(), port.data(), type.data(),
                             hours.data());
}
