// pagerfwd ports, on a machine that the test has made.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/devices/device_lock.h"
#include "tests/unit/host/cli_fixture.h"

namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class CliPorts : public CliFixture {
 protected:
    CliPorts() {
        fs::create_directories("dev/serial/by-id");
        WriteFile("dev/ttyUSB0", "");
        fs::create_symlink("../../ttyUSB0", "dev/serial/by-id/usb-modem");
        WriteFile("dev/ttyUSB1", "");
    }

    // A machine whose folders lie in the test's own.
    ProgramRun Ports(std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"ports", "--root", folder.Path().string()});
        return Run(options);
    }
    nlohmann::json PortsInJson(std::vector<std::string> options = {}) const {
        options.emplace_back("--json");
        return nlohmann::json::parse(Ports(options).out);
    }
    std::string Path(const std::string& path) const { return (folder.Path() / path).string(); }

    static constexpr const char* kSite = R"(
[[port]]
name = "north"
device = "/dev/serial/by-id/usb-modem"
[[port]]
name = "south"
device = "/dev/ttyUSB7"
)";
};

TEST_F(CliPorts, AreShownBeforeThereIsADatabase) {
    const ProgramRun run = Ports();
    EXPECT_EQ(0, run.exit_code) << run.err;
    EXPECT_THAT(run.out,
                AllOf(HasSubstr("ttyUSB0  -     -        " + Path("dev/serial/by-id/usb-modem")),
                      HasSubstr("ttyUSB1  -     -        " + Path("dev/ttyUSB1"))));
    EXPECT_FALSE(fs::exists("site.db"));
}

TEST_F(CliPorts, ShowWhichOfTheSiteUsesThem) {
    MakeSite(kSite);
    const auto ports = PortsInJson();
    ASSERT_EQ(3U, ports.size());
    EXPECT_EQ(Path("dev/serial/by-id/usb-modem"), ports[0]["name"]);
    EXPECT_EQ(Path("dev/ttyUSB0"), ports[0]["device"]);
    EXPECT_THAT(ports[0]["ports"], ElementsAre("north"));
    EXPECT_THAT(ports[1]["ports"], IsEmpty());
    EXPECT_THAT(ports[2]["ports"], ElementsAre("south"));
    EXPECT_EQ("", ports[2]["device"]) << "it isn't there";
    EXPECT_THAT(Ports().out, HasSubstr("not there  south  -        " + Path("dev/ttyUSB7")));
}

TEST_F(CliPorts, ShowTwoThatShareADevice) {
    MakeSite(kSite);
    Execute("UPDATE AlarmFwd_COMProperties SET device = '/dev/ttyUSB0'");
    EXPECT_THAT(Ports().out, HasSubstr("ttyUSB0: only one of its ports can have it\n"));
}

TEST_F(CliPorts, ShowWhoHasThemAndWhatIsInTheWay) {
    fs::create_directories("proc/812/fd");
    WriteFile("proc/812/comm", "ModemManager\n");
    fs::create_symlink(Path("dev/ttyUSB0"), "proc/812/fd/9");
    const ProgramRun run = Ports();
    EXPECT_THAT(run.out, AllOf(HasSubstr("ttyUSB0  -     ModemManager, process 812  "),
                               HasSubstr("\nttyUSB1: ModemManager runs, and may open it")));
    const auto ports = PortsInJson();
    EXPECT_EQ("ModemManager, process 812", ports[0]["held_by"]);
    EXPECT_EQ("", ports[1]["held_by"]);
    EXPECT_EQ(1U, ports[1]["in_the_way"].size());
}

TEST_F(CliPorts, AreAskedOnlyWhereNobodyHasThem) {
    fs::create_directories("proc/812/fd");
    WriteFile("proc/812/comm", "cu\n");
    fs::create_symlink(Path("dev/ttyUSB0"), "proc/812/fd/9");
    const auto ports = PortsInJson({"--ask"});
    EXPECT_FALSE(ports[0].contains("answer"));
    EXPECT_EQ("is no serial line", ports[1]["answer"]) << "a file";
    EXPECT_EQ(false, ports[1]["modem"]);
    EXPECT_THAT(Ports({"--ask"}).out,
                AllOf(HasSubstr("not asked"), HasSubstr("is no serial line")));
    EXPECT_THAT(Ports().out, Not(HasSubstr("is no serial line")));
}

TEST_F(CliPorts, AreNotAskedWhereALineHasLockedThem) {
    host::LockFile lock =
        host::LockOfDevice({"site.db", folder.Path().string()}, Path("dev/ttyUSB1"));
    ASSERT_TRUE(lock.TryTake("serve-line north"));
    const auto ports = PortsInJson({"--ask"});
    EXPECT_FALSE(ports[1].contains("answer"));
    EXPECT_THAT(ports[1]["held_by"].get<std::string>(), HasSubstr("pagerfwd serve-line north"));
}

TEST_F(CliPorts, MayBeNone) {
    fs::remove_all("dev");
    EXPECT_EQ("this machine has no serial device\n", Ports().out);
    EXPECT_THAT(PortsInJson(), IsEmpty());
}

}  // namespace
