// Tests of host/platform/own_device.h.
#include "host/platform/own_device.h"

#include <gtest/gtest.h>

namespace host {
namespace {

// Nothing else in this program opens serial devices.
struct OwnDeviceTest : testing::Test {
    ~OwnDeviceTest() override { SetOwnDevice(""); }
};

TEST_F(OwnDeviceTest, IsTheFirstPortAndTheOnlyOne) {
    SetOwnDevice("/dev/serial/by-id/usb-north");
    EXPECT_STREQ("/dev/serial/by-id/usb-north", OpenedFor("/dev/ttyS0"));
    for (const char* other :
         {"/dev/ttyS1", "/dev/ttyS8", "/dev/ttyS", "/dev/ttyS/", "/dev/ttyS00"}) {
        EXPECT_EQ(nullptr, OpenedFor(other)) << other;
    }
}

TEST_F(OwnDeviceTest, MayItselfHaveOneOfTheNames) {
    SetOwnDevice("/dev/ttyS4");
    EXPECT_STREQ("/dev/ttyS4", OpenedFor("/dev/ttyS0"));
    EXPECT_EQ(nullptr, OpenedFor("/dev/ttyS4")) << "the library doesn't see it twice";
}

TEST_F(OwnDeviceTest, LeavesEveryOtherPathAlone) {
    SetOwnDevice("/dev/ttyUSB0");
    for (const char* path : {"pageprot.txt", "/dev/ttyUSB1", "/dev/tty", "", "/tmp/dev/ttyS0"}) {
        EXPECT_EQ(path, OpenedFor(path));
    }
}

TEST_F(OwnDeviceTest, WithoutOneThePortsAreTheSystems) {
    for (const char* path : {"/dev/ttyS0", "/dev/ttyS1"}) {
        EXPECT_EQ(path, OpenedFor(path));
    }
}

}  // namespace
}  // namespace host
