// One process a device.
#include "host/devices/device_lock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "host/store/connection.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/files.h"

namespace host {
namespace {

class DeviceLock : public ::testing::Test {
 protected:
    const test_support::TempDir folder;
    const LockFolder locks{"site.db", folder.Path().string()};
};

TEST_F(DeviceLock, IsOneForAllNamesOfADevice) {
    EXPECT_EQ("pagerfwd-ttyNone0", NameOfDeviceLock("/dev/ttyNone0"));
    EXPECT_EQ("pagerfwd-serial-by-id-none", NameOfDeviceLock("/dev/serial/by-id/none"));
    WriteFile("modem", "");
    std::filesystem::create_symlink("modem", "link");
    EXPECT_EQ(NameOfDeviceLock((folder.Path() / "modem").string()),
              NameOfDeviceLock((folder.Path() / "link").string()));
}

TEST_F(DeviceLock, IsHeldByOne) {
    LockFile one = LockOfDevice(locks, "/dev/ttyNone0");
    LockFile two = LockOfDevice(locks, "/dev/ttyNone0");
    LockFile other = LockOfDevice(locks, "/dev/ttyNone1");
    EXPECT_TRUE(one.TryTake("one"));
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "pagerfwd-ttyNone0"));
    EXPECT_FALSE(two.TryTake("two"));
    EXPECT_TRUE(other.TryTake("other"));
}

TEST_F(DeviceLock, NeedsAFolder) {
    EXPECT_THROW(LockOfDevice({"site.db", "none-such"}, "/dev/ttyNone0"), StoreError);
}

// A user's own folder stands for the service's, where there is none.
TEST_F(DeviceLock, LiesInTheFolderOfTheServiceOrElseOfTheUser) {
    const bool has_service = std::filesystem::is_directory("/run/pagerfwd");
    const LockFolder usual{"none.db", ""};
    unsetenv("XDG_RUNTIME_DIR");
    if (!has_service) {
        EXPECT_THROW(LockOfDevice(usual, "/dev/ttyNone0"), StoreError);
    }
    setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
    EXPECT_TRUE(LockOfDevice(usual, "/dev/ttyNone0").TryTake("test"));
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(!has_service, std::filesystem::exists(folder.Path() / "pagerfwd-ttyNone0"));
}

}  // namespace
}  // namespace host
