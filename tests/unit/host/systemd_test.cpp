// What the service manager hears.
#include "host/process/systemd.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "sim/testing.h"
#include "tests/support/temp_dir.h"

namespace host {
namespace {

// The manager's end; '@' stands for a name that lies in no folder.
class Manager {
 public:
    explicit Manager(const std::string& name) : file_(socket(AF_UNIX, SOCK_DGRAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        if (name[0] == '@') {
            address.sun_path[0] = '\0';
        }
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        if (bind(file_, reinterpret_cast<const sockaddr*>(&address), size) != 0) {
            throw std::runtime_error("no socket");
        }
        setenv("NOTIFY_SOCKET", name.c_str(), 1);
    }
    ~Manager() {
        close(file_);
        unsetenv("NOTIFY_SOCKET");
    }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    // "" when there is nothing.
    std::string Hears() const {
        std::array<char, 100> text{};
        const ssize_t size = recv(file_, text.data(), text.size(), MSG_DONTWAIT);
        return std::string(text.data(), size > 0 ? static_cast<size_t>(size) : 0);
    }

 private:
    const int file_;
};

TEST(Notify, WaitsForNoManagerThatDoesNotListen) {
    const test_support::TempDir folder;
    const Manager manager((folder.Path() / "notify").string());
    constexpr int kMoreThanASocketHolds = 5000;
    for (int message = 0; message < kMoreThanASocketHolds; ++message) {
        NotifyManager("STATUS=" + std::to_string(message));
    }
    int heard = 0;
    while (manager.Hears() == "STATUS=" + std::to_string(heard)) {
        ++heard;
    }
    EXPECT_GE(heard, 1);
    EXPECT_LT(heard, kMoreThanASocketHolds);
}

TEST(Notify, ReachesTheSocketOfTheManager) {
    const test_support::TempDir folder;
    const Manager manager((folder.Path() / "notify").string());
    EXPECT_TRUE(HasManager());
    NotifyManager("READY=1");
    EXPECT_EQ("READY=1", manager.Hears());
    EXPECT_EQ("", manager.Hears());
}

TEST(Notify, ReachesANameThatLiesInNoFolder) {
    const Manager manager("@pagerfwd-test-" + std::to_string(getpid()));
    NotifyManager("STOPPING=1");
    EXPECT_EQ("STOPPING=1", manager.Hears());
}

TEST(Notify, SaysNothingWithoutAManager) {
    unsetenv("NOTIFY_SOCKET");
    EXPECT_FALSE(HasManager());
    NotifyManager("READY=1");
    setenv("NOTIFY_SOCKET", "/no/such/socket", 1);
    NotifyManager("READY=1");
    setenv("NOTIFY_SOCKET", std::string(200, 'x').c_str(), 1);
    NotifyManager("READY=1");
    unsetenv("NOTIFY_SOCKET");
}

// The environment of a service that is watched, 60 seconds at most between two signs of life.
struct HeartbeatTest : testing::Test {
    HeartbeatTest() { setenv("WATCHDOG_USEC", "60000000", 1); }
    ~HeartbeatTest() override {
        unsetenv("WATCHDOG_USEC");
        unsetenv("WATCHDOG_PID");
    }

    pagersim::VirtualClock clock;
    const Manager manager{"@pagerfwd-beats-" + std::to_string(getpid())};
};

TEST_F(HeartbeatTest, IsHeardTwiceInTheTimeThatIsAllowed) {
    Heartbeat heartbeat;
    EXPECT_EQ("", manager.Hears());
    heartbeat.Beat();
    EXPECT_EQ("WATCHDOG=1", manager.Hears());
    sleep(29);
    heartbeat.Beat();
    EXPECT_EQ("", manager.Hears());
    sleep(1);
    heartbeat.Beat();
    EXPECT_EQ("WATCHDOG=1", manager.Hears());
}

TEST_F(HeartbeatTest, IsNotHeardWhereNobodyOrAnotherProcessIsWatched) {
    setenv("WATCHDOG_PID", "1", 1);
    Heartbeat().Beat();
    EXPECT_EQ("", manager.Hears());
    setenv("WATCHDOG_PID", std::to_string(getpid()).c_str(), 1);
    Heartbeat().Beat();
    EXPECT_EQ("WATCHDOG=1", manager.Hears());
    for (const char* limit : {"0", "-5", "soon"}) {
        setenv("WATCHDOG_USEC", limit, 1);
        Heartbeat().Beat();
        EXPECT_EQ("", manager.Hears()) << limit;
    }
    unsetenv("WATCHDOG_USEC");
    Heartbeat().Beat();
    EXPECT_EQ("", manager.Hears());
}

}  // namespace
}  // namespace host
