// The serial devices of a machine that the test has made: its folders are the test's own.
#include "host/devices/serial_devices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temp_dir.h"
#include "tests/unit/host/files.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class SerialDevices : public ::testing::Test {
 protected:
    std::string Path(const std::string& path) const { return (folder.Path() / path).string(); }

    void Write(const std::string& path, const std::string& content) const {
        fs::create_directories(fs::path(Path(path)).parent_path());
        WriteFile(Path(path), content);
    }
    void AddDevice(const std::string& tty) const { Write("dev/" + tty, ""); }
    void AddLink(const std::string& link, const std::string& target) const {
        fs::create_directories(fs::path(Path(link)).parent_path());
        fs::create_symlink(target, Path(link));
    }
    void AddProcess(const std::string& number, const std::string& name,
                    const std::string& device) const {
        Write("proc/" + number + "/comm", name + "\n");
        AddLink("proc/" + number + "/fd/5", Path(device));
    }

    // "name -> device", without the test's folder.
    std::vector<std::string> Found() const {
        std::vector<std::string> found;
        for (const SerialDevice& one : FindSerialDevices(folders)) {
            found.push_back(Short(one.name) + " -> " + Short(one.device));
        }
        return found;
    }
    std::string Short(const std::string& path) const {
        return path.substr(folder.Path().string().size());
    }

    std::vector<std::string> InTheWay(const std::string& tty) const {
        return InTheWayOf(folders, Path("dev/" + tty));
    }

    const test_support::TempDir folder;
    const SystemFolders folders{folder.Path().string()};
};

TEST_F(SerialDevices, AreNamedByWhatTheyAre) {
    AddDevice("ttyUSB0");
    AddDevice("ttyUSB1");
    AddDevice("ttyACM0");
    AddLink("dev/serial/by-path/pci-0-port0", "../../ttyUSB0");
    AddLink("dev/serial/by-path/pci-1-port0", "../../ttyUSB1");
    AddLink("dev/serial/by-id/usb-Modem_56K-if00-port0", "../../ttyUSB1");
    EXPECT_THAT(Found(), ElementsAre("/dev/ttyACM0 -> /dev/ttyACM0",
                                     "/dev/serial/by-path/pci-0-port0 -> /dev/ttyUSB0",
                                     "/dev/serial/by-id/usb-Modem_56K-if00-port0 -> /dev/ttyUSB1"));
}

TEST_F(SerialDevices, AreThoseOfTheMachineOnlyWhereSomethingIsThere) {
    for (const char* tty : {"ttyS0", "ttyS1", "ttyS10", "ttyS2", "tty1", "ttyprintk", "null"}) {
        AddDevice(tty);
    }
    Write("sys/class/tty/ttyS0/type", "4\n");
    Write("sys/class/tty/ttyS1/type", "0\n");
    Write("sys/class/tty/ttyS10/type", "4\n");
    EXPECT_THAT(Found(), ElementsAre("/dev/ttyS0 -> /dev/ttyS0", "/dev/ttyS2 -> /dev/ttyS2",
                                     "/dev/ttyS10 -> /dev/ttyS10"))
        << "where the system doesn't say, it may be there";
}

TEST_F(SerialDevices, AreOfAnyDriverThatGivesAStableName) {
    AddDevice("ttyMX7");
    AddLink("dev/serial/by-id/usb-Multi-if01", "../../ttyMX7");
    AddLink("dev/serial/by-id/usb-Gone-if01", "../../ttyUSB9");
    EXPECT_THAT(Found(), ElementsAre("/dev/serial/by-id/usb-Multi-if01 -> /dev/ttyMX7"));
}

TEST_F(SerialDevices, AreNoneWhereThereIsNothing) {
    EXPECT_THAT(Found(), IsEmpty());
}

TEST_F(SerialDevices, AreHeldByWhoHasThemOpen) {
    AddDevice("ttyUSB0");
    AddProcess("812", "minicom", "dev/ttyUSB0");
    EXPECT_EQ("minicom, process 812", HolderOf(folders, Path("dev/ttyUSB0")));
    EXPECT_EQ("", HolderOf(folders, Path("dev/ttyUSB1")));
}

TEST_F(SerialDevices, AreHeldByWhoHasLockedThem) {
    Write("run/lock/LCK..ttyS0", "       812\n");
    EXPECT_EQ("", HolderOf(folders, Path("dev/ttyS0"))) << "left behind";
    Write("proc/812/comm", "cu\n");
    EXPECT_EQ("cu, process 812 (" + Path("run/lock/LCK..ttyS0") + ")",
              HolderOf(folders, Path("dev/ttyS0")));
    Write("run/lock/LCK..ttyS1", "../812\n");
    EXPECT_EQ("", HolderOf(folders, Path("dev/ttyS1"))) << "no number";
}

TEST_F(SerialDevices, MayHaveAGettyInTheWay) {
    EXPECT_THAT(InTheWay("ttyS0"), IsEmpty());
    AddLink("run/systemd/generator/getty.target.wants/serial-getty@ttyS0.service", "/none");
    AddLink("etc/systemd/system/getty.target.wants/serial-getty@ttyUSB0.service", "/none");
    EXPECT_THAT(InTheWay("ttyS0"), ElementsAre(HasSubstr("mask --now serial-getty@ttyS0")));
    EXPECT_THAT(InTheWay("ttyUSB0"), ElementsAre(HasSubstr("a getty waits on it")));
    EXPECT_THAT(InTheWay("ttyS1"), IsEmpty());
}

TEST_F(SerialDevices, MayBeTheKernelsConsole) {
    Write("proc/cmdline", "root=/dev/vda1 console=tty0 console=ttyS1,115200n8 console=ttyS10\n");
    EXPECT_THAT(InTheWay("ttyS1"), ElementsAre(HasSubstr("console=ttyS1")));
    EXPECT_THAT(InTheWay("ttyS10"), ElementsAre(HasSubstr("console=ttyS10")));
    EXPECT_THAT(InTheWay("ttyS0"), IsEmpty());
    EXPECT_THAT(InTheWay("ttyS"), IsEmpty());
}

TEST_F(SerialDevices, MayBeWhatAModemManagerTakes) {
    EXPECT_THAT(InTheWay("ttyUSB0"), IsEmpty());
    Write("proc/99/comm", "ModemManager\n");
    EXPECT_THAT(InTheWay("ttyUSB0"), ElementsAre(HasSubstr("ModemManager runs")));
    EXPECT_THAT(InTheWay("ttyS0"), IsEmpty()) << "it leaves those alone";
    Write("sys/class/tty/ttyUSB0/dev", "188:0\n");
    Write("run/udev/data/c188:0", "S:serial/by-id/x\nE:ID_MM_DEVICE_IGNORE=1\n");
    EXPECT_THAT(InTheWay("ttyUSB0"), IsEmpty()) << "marked";
    Write("run/udev/data/c188:0", "E:ID_MM_DEVICE_IGNORE=0\n");
    EXPECT_THAT(InTheWay("ttyUSB0"), ElementsAre(HasSubstr("ModemManager runs")));
}

TEST_F(SerialDevices, AreFoundByAnyOfTheirNames) {
    AddDevice("ttyUSB0");
    AddLink("dev/serial/by-id/usb-x", "../../ttyUSB0");
    EXPECT_EQ(Path("dev/ttyUSB0"), DeviceBehind(Path("dev/serial/by-id/usb-x")));
    EXPECT_EQ("/dev/none-such", DeviceBehind("/dev/none-such"));
}

}  // namespace
}  // namespace host
