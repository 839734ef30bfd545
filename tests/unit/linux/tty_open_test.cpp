// The line driver: opening, closing, opening again, hanging up; lines that are null or carry no
// magic.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "linux/tty.h"
#include "linux/tty_line.h"
#include "sim/testing.h"
#include "tests/unit/linux/tcsetattr_calls.h"
#include "tests/unit/linux/temp_folder.h"
#include "tests/unit/linux/tty_fixture.h"

namespace {

using namespace std::chrono_literals;
using pagersim::Milliseconds;
using pagersim::VirtualClock;

termios SettingsOf(const std::string& device) {
    const int fd = open(device.c_str(), O_RDWR | O_NOCTTY);
    termios settings{};
    EXPECT_EQ(0, tcgetattr(fd, &settings));
    close(fd);
    return settings;
}

TEST(TtyOpen, NeedsADevice) {
    EXPECT_EQ(nullptr, tty_open(nullptr, nullptr, nullptr));
    EXPECT_EQ(nullptr, tty_open("/no/such/device", nullptr, nullptr));
    EXPECT_EQ(nullptr, tty_open("/dev/ttyS/", nullptr, nullptr));
}

TEST(TtyOpen, NeedsATerminal) {
    const TempFolder folder;
    WriteText(folder / "file", "");
    EXPECT_EQ(nullptr, OpenLine(folder / "file"));
    EXPECT_EQ(nullptr, OpenLine("/dev/null"));
}

TEST(TtyOpen, FailsForADescriptorThatSelectCannotWaitFor) {
    const Pty pty;
    rlimit old{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &old));
    const rlimit enough{std::max<rlim_t>(old.rlim_cur, FD_SETSIZE + 8), old.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &enough)) << "the hard limit (ulimit -Hn) is too low";
    std::vector<int> taken;
    while (taken.empty() || taken.back() < FD_SETSIZE - 1) {
        taken.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
        ASSERT_LE(0, taken.back());
    }
    EXPECT_EQ(nullptr, OpenLine(pty.Path()));
    close(taken.back());
    taken.pop_back();
    EXPECT_NE(nullptr, OpenLine(pty.Path()));
    for (const int fd : taken) {
        close(fd);
    }
    setrlimit(RLIMIT_NOFILE, &old);
}

TEST(TtyOpen, ReadsAndWritesWithoutEverWaitingAndIsNotInherited) {
    const Pty pty;
    const Line line = OpenLine(pty.Path());
    ASSERT_NE(nullptr, line);
    const int flags = fcntl(tty_fd(line.get()), F_GETFL);
    EXPECT_EQ(O_RDWR, flags & O_ACCMODE);
    EXPECT_NE(0, flags & O_NONBLOCK);
    EXPECT_EQ(FD_CLOEXEC, fcntl(tty_fd(line.get()), F_GETFD));
}

TEST(TtyOpen, NeverBecomesTheControllingTerminal) {
    const Pty pty;
    const pid_t child = fork();
    if (child == 0) {
        setsid();  // no controlling terminal, and the next one opened would become it
        const TtyLine* const line = tty_open(pty.Path().c_str(), nullptr, nullptr);
        _exit(line != nullptr && open("/dev/tty", O_RDWR) < 0 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
}

TEST(TtyClose, PutsTheOriginalSettingsBack) {
    const Pty pty;
    const termios before = SettingsOf(pty.Path());
    // Held open meanwhile, as a terminal forgets its settings with its last user.
    const int other = open(pty.Path().c_str(), O_RDWR | O_NOCTTY);
    Line line = OpenLine(pty.Path());
    ASSERT_EQ(0, tty_setup(line.get(), true, true, 300, 8, 2, 'n'));
    EXPECT_NE(before.c_lflag, SettingsOf(pty.Path()).c_lflag);
    const int fd = tty_fd(line.get());
    EXPECT_EQ(0, tty_close(line.release()));
    const termios after = SettingsOf(pty.Path());
    EXPECT_EQ(before.c_iflag, after.c_iflag);
    EXPECT_EQ(before.c_oflag, after.c_oflag);
    EXPECT_EQ(before.c_cflag, after.c_cflag);
    EXPECT_EQ(before.c_lflag, after.c_lflag);
    EXPECT_EQ(-1, fcntl(fd, F_GETFD)) << "the descriptor is still open";
    close(other);
}

TEST(TtyClose, TakesDescriptorZeroForOneLikeOthers) {
    const Pty pty;
    const termios before = SettingsOf(pty.Path());
    const int other = open(pty.Path().c_str(), O_RDWR | O_NOCTTY);
    const int usual = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    close(STDIN_FILENO);
    TtyLine* const line = tty_open(pty.Path().c_str(), nullptr, nullptr);
    EXPECT_EQ(STDIN_FILENO, tty_fd(line));
    EXPECT_EQ(0, tty_setup(line, true, true, 300, 8, 2, 'n'));
    tty_close(line);
    EXPECT_EQ(before.c_lflag, SettingsOf(pty.Path()).c_lflag);
    EXPECT_EQ(-1, fcntl(STDIN_FILENO, F_GETFD)) << "the descriptor is still open";
    dup2(usual, STDIN_FILENO);
    close(usual);
    close(other);
}

TEST(TtyReopen, WithoutASetUpThereAreTheDevicesOwnSettings) {
    const Pty pty;
    const termios before = SettingsOf(pty.Path());
    const Line line = OpenLine(pty.Path());
    EXPECT_TRUE(tty_reopen(line.get(), 0));
    EXPECT_EQ(before.c_lflag, SettingsOf(pty.Path()).c_lflag);
    EXPECT_EQ(before.c_cflag, SettingsOf(pty.Path()).c_cflag);
}

// Another thread takes the line's own place while it is closed, and no lower one is left.
TEST(TtyReopen, FailsForADescriptorThatSelectCannotWaitFor) {
    const VirtualClock clock;
    const Pty pty;
    const Line line = OpenLine(pty.Path());
    rlimit old{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &old));
    const rlimit enough{std::max<rlim_t>(old.rlim_cur, FD_SETSIZE + 8), old.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &enough)) << "the hard limit (ulimit -Hn) is too low";
    std::vector<int> taken;
    while (taken.empty() || taken.back() < FD_SETSIZE - 1) {
        taken.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
        ASSERT_LE(0, taken.back());
    }
    std::thread other([&taken] {
        msleep(5);
        taken.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
    });
    EXPECT_FALSE(tty_reopen(line.get(), 10));
    EXPECT_EQ(-1, tty_fd(line.get()));
    other.join();
    for (const int fd : taken) {
        close(fd);
    }
    setrlimit(RLIMIT_NOFILE, &old);
}

// A far end that notes the settings it is given, and when.
class SpeedLog : public pagersim::FarEnd {
 public:
    struct Entry {
        Milliseconds at;
        speed_t speed;
        bool operator==(const Entry& other) const { return at == other.at && speed == other.speed; }
    };
    explicit SpeedLog(std::vector<Entry>* log) : log_(log) {}

    void Opened(pagersim::Wire& /*wire*/) override {}
    void Heard(std::string_view /*bytes*/) override {}
    void SettingsChanged(const termios& settings) override {
        log_->push_back({VirtualClock::Now(), cfgetospeed(&settings)});
    }
    void Closed() override {}

 private:
    std::vector<Entry>* log_;
};

std::ostream& operator<<(std::ostream& out, const SpeedLog::Entry& entry) {
    return out << entry.at.count() << " ms: speed " << entry.speed;
}

struct HangUpTest : testing::Test {
    HangUpTest() {
        EXPECT_EQ(0, tty_setup(line.get(), true, true, 2400, 7, 1, 'e'));
        speeds.clear();
    }

    VirtualClock clock;
    std::vector<SpeedLog::Entry> speeds;
    pagersim::AttachedLine port{1, std::make_unique<SpeedLog>(&speeds)};
    Line line = OpenLine(kDevice);
};

TEST_F(HangUpTest, DropsTheSpeedForThePauseThenReopensAfterThePause) {
    EXPECT_TRUE(tty_hangup(line.get(), 700));
    EXPECT_EQ((std::vector<SpeedLog::Entry>{{0ms, B0}, {700ms, B2400}, {1400ms, B2400}}), speeds);
    EXPECT_EQ(2, port.Opens());
    EXPECT_EQ(1, port.Closes());
    EXPECT_EQ(tcflag_t{CS7 | PARENB}, port.Settings().c_cflag & (CSIZE | PARENB));
}

TEST_F(HangUpTest, ReopensAlsoWhenTheSpeedCannotBeDropped) {
    TcsetattrCalls::refusals = 1;
    EXPECT_TRUE(tty_hangup(line.get(), 700));
    EXPECT_EQ((std::vector<SpeedLog::Entry>{{700ms, B2400}}), speeds);
    EXPECT_EQ(2, port.Opens());
}

TEST_F(HangUpTest, SaysWhenTheDeviceIsGone) {
    port.PlugOut();
    EXPECT_FALSE(tty_hangup(line.get(), 10));
    EXPECT_EQ(-1, tty_fd(line.get()));
    port.PlugIn();
    EXPECT_TRUE(tty_hangup(line.get(), 10));
    EXPECT_LE(0, tty_fd(line.get()));
}

TEST_F(HangUpTest, IsTraced) {
    const CaughtTraces traces;
    tty_hangup(line.get(), 0);
    EXPECT_EQ("[Hangup] ", CaughtTraces::Text());
}

struct ReopenTest : testing::Test {
    VirtualClock clock;
    pagersim::ScriptedLine port{1};
    Line line = OpenLine(kDevice);
};

TEST_F(ReopenTest, PausesBetweenCloseAndOpenAndAppliesTheWorkingSettings) {
    ASSERT_EQ(0, tty_setup(line.get(), true, true, 1200, 7, 2, 'o'));
    const termios set = port.Settings();
    EXPECT_TRUE(tty_reopen(line.get(), 250));
    EXPECT_EQ(250ms, VirtualClock::Now());
    EXPECT_EQ(2, port.Opens());
    EXPECT_EQ(1, port.Closes());
    EXPECT_EQ(set.c_cflag, port.Settings().c_cflag);
    EXPECT_TRUE(tty_reopen(line.get(), -1));
    EXPECT_EQ(250ms, VirtualClock::Now());
}

TEST_F(ReopenTest, DropsWhatWasReceived) {
    port.Says("before");
    ASSERT_EQ(6, tty_data_ready(line.get(), 100));
    EXPECT_TRUE(tty_reopen(line.get(), 0));
    EXPECT_EQ(0, tty_data_ready(line.get(), 0));
    port.Says("after");
    char buffer[16];
    ASSERT_EQ(5, tty_data_ready(line.get(), 100));
    ASSERT_EQ(5, tty_receive(line.get(), buffer, sizeof buffer));
    EXPECT_EQ("after", std::string(buffer, 5));
}

TEST_F(ReopenTest, FailsWhileTheDeviceIsGone) {
    port.PlugOut();
    EXPECT_FALSE(tty_reopen(line.get(), 0));
    EXPECT_EQ(-1, tty_fd(line.get()));
    port.PlugIn();
    EXPECT_TRUE(tty_reopen(line.get(), 0));
    EXPECT_LE(0, tty_fd(line.get()));
}

TEST(NullLine, IsRefusedQuietly) {
    VirtualClock clock;
    char buffer[8];
    testing::internal::CaptureStderr();
    EXPECT_EQ(-1, tty_fd(nullptr));
    EXPECT_EQ(-1, tty_setup(nullptr, true, true, 2400, 8, 1, 'n'));
    EXPECT_EQ(-1, tty_send(nullptr, "x", 1));
    EXPECT_EQ(0, tty_data_ready(nullptr, 1000));
    EXPECT_EQ(-1, tty_receive(nullptr, buffer, sizeof buffer));
    tty_mdrain(nullptr, 1000);
    tty_drain(nullptr, 1);
    EXPECT_FALSE(tty_reopen(nullptr, 1000));
    EXPECT_FALSE(tty_hangup(nullptr, 1000));
    EXPECT_EQ(0, tty_close(nullptr));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ(0ms, VirtualClock::Now());
}

struct MagicCase {
    const char* function;
    int complaints;
    std::function<void(TtyLine*)> call;
};

TEST(Magic, EveryFunctionComplainsAndCarriesOn) {
    char buffer[8];
    const MagicCase cases[] = {
        {"tty_fd", 1, [](TtyLine* l) { EXPECT_LE(0, tty_fd(l)); }},
        {"tty_setup", 1,
         [](TtyLine* l) { EXPECT_EQ(0, tty_setup(l, true, true, 2400, 8, 1, 'n')); }},
        {"tty_send", 1, [](TtyLine* l) { EXPECT_EQ(2, tty_send(l, "ab", 2)); }},
        {"tty_data_ready", 1, [](TtyLine* l) { EXPECT_EQ(0, tty_data_ready(l, 0)); }},
        {"tty_receive, only through tty_data_ready", 1,
         [&buffer](TtyLine* l) { EXPECT_EQ(0, tty_receive(l, buffer, sizeof buffer)); }},
        {"tty_mdrain", 1, [](TtyLine* l) { tty_mdrain(l, 1); }},
        {"tty_drain, and tty_mdrain", 2, [](TtyLine* l) { tty_drain(l, 1); }},
        {"tty_reopen", 1, [](TtyLine* l) { EXPECT_TRUE(tty_reopen(l, 0)); }},
        {"tty_hangup, and tty_reopen", 2, [](TtyLine* l) { EXPECT_TRUE(tty_hangup(l, 0)); }},
        {"tty_close", 1, [](TtyLine* l) { EXPECT_EQ(0, tty_close(l)); }},
    };
    VirtualClock clock;
    pagersim::ScriptedLine port(1);
    TtyLine* const line = tty_open(kDevice, nullptr, nullptr);
    ASSERT_NE(nullptr, line);
    line->magic = 4711;
    const std::regex complaint(
        "Invalid magic: expect 1953790208 got 4711 in \\./tty\\.c:[1-9][0-9]*\n");
    for (const MagicCase& c : cases) {
        SCOPED_TRACE(c.function);
        testing::internal::CaptureStderr();
        c.call(line);
        const std::string said = testing::internal::GetCapturedStderr();
        const auto begin = std::sregex_iterator(said.begin(), said.end(), complaint);
        EXPECT_EQ(c.complaints, std::distance(begin, std::sregex_iterator())) << said;
        EXPECT_EQ("", std::regex_replace(said, complaint, ""));
    }
}

TEST(Magic, ALineThatCarriesItIsNotComplainedAbout) {
    testing::internal::CaptureStderr();
    const Pty pty;
    EXPECT_LE(0, tty_fd(OpenLine(pty.Path()).get()));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

}  // namespace
