// Who has a serial device open: looked up in a folder of processes that the test has made.
#include "host/process/port_holder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/temp_dir.h"

namespace host {
namespace {

namespace fs = std::filesystem;

class PortHolder : public ::testing::Test {
 protected:
    static void AddProcess(const std::string& number, const std::string& name,
                           const std::string& file) {
        fs::create_directories("proc/" + number + "/fd");
        std::ofstream("proc/" + number + "/comm") << name << "\n";
        fs::create_symlink(file, "proc/" + number + "/fd/3");
    }
    static std::string Holders() { return HoldersOf("/dev/ttyS0", "proc"); }

    const test_support::TempDir folder;
};

TEST_F(PortHolder, IsNamed) {
    AddProcess("812", "minicom", "/dev/ttyS0");
    AddProcess("813", "other", "/dev/ttyS1");
    EXPECT_EQ("minicom, process 812", Holders());
}

TEST_F(PortHolder, MayBeSeveral) {
    AddProcess("812", "minicom", "/dev/ttyS0");
    AddProcess("9", "getty", "/dev/ttyS0");
    const std::string holders = Holders();
    EXPECT_NE(std::string::npos, holders.find("minicom, process 812"));
    EXPECT_NE(std::string::npos, holders.find("getty, process 9"));
}

TEST_F(PortHolder, IsNotThisProcess) {
    AddProcess(std::to_string(getpid()), "me", "/dev/ttyS0");
    EXPECT_EQ("", Holders());
}

TEST_F(PortHolder, IsNobodyWhereNothingCanBeRead) {
    EXPECT_EQ("", Holders());
    fs::create_directories("proc/self/fd");  // no number
    fs::create_directories("proc/7");        // without descriptors
    EXPECT_EQ("", Holders());
}

}  // namespace
}  // namespace host
