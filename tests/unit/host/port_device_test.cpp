// Names of ports, and the devices behind them.
#include "host/site/port_device.h"

#include <gtest/gtest.h>

namespace host {
namespace {

TEST(PortDevice, OfTheNineNamesIsTheSerialPortOfThatNumber) {
    EXPECT_EQ("/dev/ttyS0", DeviceOfPort("COM 1", ""));
    EXPECT_EQ("/dev/ttyS8", DeviceOfPort("COM 9", ""));
    for (const char* none : {"COM 0", "COM 10", "COM1", "com 1", "COM :", "COM /", "", "north"}) {
        EXPECT_EQ("", DeviceOfPort(none, "")) << none;
    }
}

TEST(PortDevice, IsTheOneThatIsNamedWithThePort) {
    EXPECT_EQ("/dev/ttyUSB0", DeviceOfPort("north", "/dev/ttyUSB0"));
    EXPECT_EQ("/dev/ttyUSB0", DeviceOfPort("COM 1", "/dev/ttyUSB0"));
}

}  // namespace
}  // namespace host
