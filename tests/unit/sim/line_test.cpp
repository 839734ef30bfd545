// A simulated line as a device: opening, settings, reading, writing, vanishing.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "sim/testing.h"
#include "tests/support/temp_dir.h"

using namespace std::chrono_literals;

namespace pagersim {
namespace {

// Notes what it is told, and sends back what it hears.
struct EchoLog {
    std::vector<std::string> calls;
    std::string heard;
    Wire* wire = nullptr;
    bool was_in_simulation = false;
};

class Echo : public FarEnd {
 public:
    explicit Echo(EchoLog& log) : log_(log) {}

    void Opened(Wire& wire) override {
        log_.wire = &wire;
        log_.calls.emplace_back("opened");
    }
    void Heard(std::string_view bytes) override {
        log_.heard += bytes;
        log_.was_in_simulation = IsInSimulation();
        log_.wire->Send(bytes);
    }
    void SettingsChanged(const termios& settings) override {
        log_.calls.emplace_back(cfgetospeed(&settings) == B0 ? "dropped" : "set");
    }
    void Closed() override { log_.calls.emplace_back("closed"); }

 private:
    EchoLog& log_;
};

class LineTest : public testing::Test {
 protected:
    static int Open(int flags = O_RDWR) { return open("/dev/ttyS3", flags); }

    VirtualClock clock;
    EchoLog log;
    AttachedLine line{4, std::make_unique<Echo>(log)};
};

TEST_F(LineTest, IsATerminal) {
    const int fd = Open();
    ASSERT_GE(fd, 0);
    EXPECT_EQ(1, isatty(fd));
    struct stat status {};
    EXPECT_EQ(0, fstat(fd, &status));
    EXPECT_TRUE(S_ISCHR(status.st_mode));
    EXPECT_EQ(0, close(fd));
}

TEST_F(LineTest, OpeningsOfAllKindsReachIt) {
    const int fds[] = {open("/dev/ttyS3", O_RDWR), open64("/dev/ttyS3", O_RDWR),
                       openat(AT_FDCWD, "/dev/ttyS3", O_RDWR), creat("/dev/ttyS3", 0600)};
    for (const int fd : fds) {
        EXPECT_GE(fd, 0);
        EXPECT_EQ(2, write(fd, "ab", 2));
        EXPECT_EQ(0, close(fd));
    }
    EXPECT_EQ("abababab", log.heard);
    EXPECT_EQ(4, line.Opens());
    EXPECT_EQ(4, line.Closes());
}

TEST_F(LineTest, NoOtherSerialDeviceCanBeOpened) {
    for (const char* const path : {"/dev/ttyS0", "/dev/ttyS8", "/dev/ttyS9", "/dev/ttyS",
                                   "/dev/ttyS/", "/dev/ttyS33", "/dev/ttyS3x"}) {
        errno = 0;
        EXPECT_EQ(-1, open(path, O_RDWR)) << path;
        EXPECT_EQ(ENOENT, errno) << path;
    }
}

TEST(Devices, NeverReachTheMachinesEvenWithoutAClock) {
    for (const char* const path : {"/dev/ttyS0", "/dev/ttyS1", "/dev/ttyS8"}) {
        errno = 0;
        EXPECT_EQ(-1, open(path, O_RDWR | O_NOCTTY | O_NONBLOCK));
        EXPECT_EQ(ENOENT, errno);
        errno = 0;
        EXPECT_EQ(-1, openat(AT_FDCWD, path, O_RDONLY));
        EXPECT_EQ(ENOENT, errno);
    }
}

TEST(Devices, CannotBeOpenedAsStreams) {
    const VirtualClock clock;
    const ScriptedLine line(1);
    errno = 0;
    EXPECT_EQ(nullptr, fopen("/dev/ttyS0", "r"));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_FALSE(std::ifstream("/dev/ttyS1").is_open());
    EXPECT_EQ(0, line.Opens());
}

TEST(Devices, ALineNeedsAClock) {
    EXPECT_THROW(ScriptedLine(1), std::logic_error);
}

TEST(Devices, ThereAreSixtyFour) {
    const VirtualClock clock;
    EXPECT_THROW(ScriptedLine(0), std::out_of_range);
    EXPECT_THROW(ScriptedLine(65), std::out_of_range);
    const ScriptedLine last(64);
    const int fd = open("/dev/ttyS63", O_RDWR);
    EXPECT_GE(fd, 0);
    close(fd);
}

TEST_F(LineTest, OtherFilesAreNotTouched) {
    const int fd = open("/dev/null", O_RDWR);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(3, write(fd, "abc", 3));
    char byte = 0;
    EXPECT_EQ(0, read(fd, &byte, 1));
    EXPECT_EQ(0, close(fd));
    EXPECT_EQ("", log.heard);
}

TEST_F(LineTest, BytesGoThroughUnchanged) {
    std::string all;
    for (int value = 0; value < 256; ++value) {
        all += static_cast<char>(value);
    }
    const int fd = Open();
    EXPECT_EQ(256, write(fd, all.data(), all.size()));
    std::string back(256, ' ');
    EXPECT_EQ(256, read(fd, back.data(), back.size()));
    EXPECT_EQ(all, back);
    close(fd);
}

TEST_F(LineTest, AFarEndIsInTheSimulationTheProgramIsNot) {
    const int fd = Open();
    EXPECT_EQ(1, write(fd, "x", 1));
    EXPECT_TRUE(log.was_in_simulation);
    EXPECT_FALSE(IsInSimulation());
    close(fd);
}

TEST_F(LineTest, AWriteOfAnySizeGoesThroughAtOnce) {
    const std::string big(1'000'000, 'x');
    const int fd = Open();
    EXPECT_EQ(1'000'000, write(fd, big.data(), big.size()));
    int waiting = 0;
    EXPECT_EQ(0, ioctl(fd, FIONREAD, &waiting));
    EXPECT_EQ(1'000'000, waiting);
    std::string back(2'000'000, ' ');
    EXPECT_EQ(1'000'000, read(fd, back.data(), back.size()));
    close(fd);
    EXPECT_EQ(big, log.heard);
}

TEST_F(LineTest, KeepsAllSettings) {
    const int fd = Open();
    termios settings{};
    ASSERT_EQ(0, tcgetattr(fd, &settings));
    EXPECT_EQ(static_cast<speed_t>(B9600), cfgetospeed(&settings));
    settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE);
    settings.c_cflag |= CS7 | PARENB | CSTOPB | CRTSCTS;
    settings.c_cc[VMIN] = 0;
    cfsetspeed(&settings, B2400);
    ASSERT_EQ(0, tcsetattr(fd, TCSANOW, &settings));
    close(fd);

    const int again = Open();
    termios kept{};
    ASSERT_EQ(0, tcgetattr(again, &kept));
    EXPECT_EQ(settings.c_cflag, kept.c_cflag);
    EXPECT_EQ(static_cast<tcflag_t>(CS7), kept.c_cflag & CSIZE);
    EXPECT_EQ(static_cast<speed_t>(B2400), cfgetispeed(&kept));
    EXPECT_EQ(settings.c_cflag, line.Settings().c_cflag);
    close(again);
}

TEST_F(LineTest, TheFarEndHearsOfOpeningSettingDroppingAndClosing) {
    const int fd = Open();
    termios settings{};
    tcgetattr(fd, &settings);
    tcsetattr(fd, TCSANOW, &settings);
    cfsetspeed(&settings, B0);
    tcsetattr(fd, TCSANOW, &settings);
    close(fd);
    EXPECT_EQ((std::vector<std::string>{"opened", "set", "dropped", "closed"}), log.calls);
}

TEST_F(LineTest, ASecondDescriptorSharesTheConnection) {
    const int fd = Open();
    const int second = Open();
    const int copies[] = {dup(fd), fcntl(fd, F_DUPFD_CLOEXEC, 20), dup2(fd, 30)};
    EXPECT_EQ(1, write(copies[2], "x", 1));
    close(fd);
    for (const int copy : copies) {
        close(copy);
    }
    EXPECT_EQ(std::vector<std::string>{"opened"}, log.calls);
    char byte = 0;
    EXPECT_EQ(1, read(second, &byte, 1));
    close(second);
    EXPECT_EQ((std::vector<std::string>{"opened", "closed"}), log.calls);
}

TEST_F(LineTest, ADescriptorOverwrittenByDup2IsClosed) {
    const int fd = Open();
    const int null = open("/dev/null", O_RDWR);
    EXPECT_EQ(fd, dup2(null, fd));
    EXPECT_EQ((std::vector<std::string>{"opened", "closed"}), log.calls);
    EXPECT_EQ(1, write(fd, "x", 1)) << "goes to /dev/null";
    EXPECT_EQ("", log.heard);
    close(null);
    close(fd);
}

// VMIN and VTIME as termios(3) has them.
class ReadTest : public LineTest {
 protected:
    int OpenWith(cc_t vmin, cc_t vtime, int flags = O_RDWR) {
        const int fd = Open(flags);
        termios settings{};
        tcgetattr(fd, &settings);
        settings.c_cc[VMIN] = vmin;
        settings.c_cc[VTIME] = vtime;
        tcsetattr(fd, TCSANOW, &settings);
        return fd;
    }

    void SendIn(Milliseconds after, const std::string& bytes) const {
        log.wire->At(after, [this, bytes] { log.wire->Send(bytes); });
    }

    char buffer[10] = {};
};

TEST_F(ReadTest, WithoutMinimumAndTimeAnswersAtOnce) {
    const int fd = OpenWith(0, 0);
    EXPECT_EQ(0, read(fd, buffer, sizeof buffer));
    EXPECT_EQ(0ms, VirtualClock::Now());
    close(fd);
}

TEST_F(ReadTest, WithTimeOnlyWaitsThatLong) {
    const int fd = OpenWith(0, 5);
    EXPECT_EQ(0, read(fd, buffer, sizeof buffer));
    EXPECT_EQ(500ms, VirtualClock::Now());
    SendIn(200ms, "ab");
    EXPECT_EQ(2, read(fd, buffer, sizeof buffer));
    EXPECT_EQ(700ms, VirtualClock::Now());
    close(fd);
}

TEST_F(ReadTest, WithAMinimumWaitsForIt) {
    const int fd = OpenWith(3, 0);
    SendIn(1s, "a");
    SendIn(60s, "bcd");
    EXPECT_EQ(4, read(fd, buffer, sizeof buffer));
    EXPECT_EQ(60s, VirtualClock::Now());
    close(fd);
}

TEST_F(ReadTest, WithBothEndsWhenTheBytesPause) {
    const int fd = OpenWith(3, 5);
    SendIn(10s, "a");
    SendIn(10400ms, "b");
    EXPECT_EQ(2, read(fd, buffer, sizeof buffer));
    EXPECT_EQ(10900ms, VirtualClock::Now());
    close(fd);
}

TEST_F(ReadTest, NonBlockingNeverWaits) {
    const int fd = OpenWith(1, 0, O_RDWR | O_NONBLOCK);
    EXPECT_EQ(-1, read(fd, buffer, sizeof buffer));
    EXPECT_EQ(EAGAIN, errno);
    EXPECT_EQ(1, write(fd, "x", 1));
    EXPECT_EQ(1, read(fd, buffer, sizeof buffer));
    close(fd);
}

TEST_F(ReadTest, APollingReadMovesTheClockToo) {
    const int fd = OpenWith(0, 0);
    SendIn(1s, "x");
    const time_t start = time(nullptr);
    while (read(fd, buffer, sizeof buffer) == 0) {
        EXPECT_LE(time(nullptr) - start, 1);
    }
    EXPECT_EQ(1s, VirtualClock::Now());
    close(fd);
}

TEST_F(LineTest, FlushingDropsWhatHasArrived) {
    const int fd = Open();
    ASSERT_EQ(3, write(fd, "abc", 3));
    EXPECT_EQ(0, tcflush(fd, TCOFLUSH));
    char byte = 0;
    EXPECT_EQ(1, read(fd, &byte, 1));
    EXPECT_EQ(0, tcflush(fd, TCIFLUSH));
    EXPECT_EQ(0, tcdrain(fd));
    pollfd look{fd, POLLIN, 0};
    EXPECT_EQ(0, poll(&look, 1, 0));
    close(fd);
}

TEST_F(LineTest, ModemLinesAreRefused) {
    const int fd = Open();
    int lines = TIOCM_DTR;
    EXPECT_EQ(-1, ioctl(fd, TIOCMSET, &lines));
    close(fd);
}

TEST_F(LineTest, AfterVanishingEverythingFailsUntilOpenedAgain) {
    const int fd = Open();
    log.wire->At(1s, [this] { log.wire->Vanish(); });
    pollfd look{fd, POLLIN, 0};
    EXPECT_EQ(1, poll(&look, 1, 60'000));
    EXPECT_NE(0, look.revents & POLLHUP);
    EXPECT_EQ(1s, VirtualClock::Now());

    termios settings{};
    char byte = 'x';
    errno = 0;
    EXPECT_EQ(-1, read(fd, &byte, 1));
    EXPECT_EQ(EIO, errno);
    EXPECT_EQ(-1, write(fd, &byte, 1));
    EXPECT_EQ(EIO, errno);
    EXPECT_EQ(-1, tcgetattr(fd, &settings));
    EXPECT_EQ(EIO, errno);

    const int again = Open();
    EXPECT_EQ(1, write(again, "x", 1));
    EXPECT_EQ(-1, write(fd, "y", 1)) << "the old descriptor stays dead";
    EXPECT_EQ(0, close(fd));
    EXPECT_EQ(1, read(again, &byte, 1));
    close(again);
    EXPECT_EQ((std::vector<std::string>{"opened", "closed", "opened", "closed"}), log.calls);
}

TEST_F(LineTest, VanishingEndsAReadThatWaits) {
    const int fd = Open();
    log.wire->At(1s, [this] { log.wire->Vanish(); });
    char byte = 0;
    EXPECT_EQ(-1, read(fd, &byte, 1));
    EXPECT_EQ(EIO, errno);
    close(fd);
}

TEST_F(LineTest, PluggedOutItCannotBeOpened) {
    const int fd = Open();
    line.PlugOut();
    EXPECT_EQ(-1, write(fd, "x", 1));
    EXPECT_EQ(EIO, errno);
    EXPECT_EQ(-1, Open());
    EXPECT_EQ(ENOENT, errno);
    line.PlugIn();
    const int again = Open();
    EXPECT_EQ(1, write(again, "x", 1));
    close(fd);
    close(again);
}

TEST_F(LineTest, ItsNameTellsWhetherItIsThere) {
    EXPECT_EQ(0, access("/dev/ttyS3", F_OK));
    EXPECT_EQ(0, faccessat(AT_FDCWD, "/dev/ttyS3", R_OK | W_OK, 0));
    EXPECT_EQ(-1, access("/dev/ttyS4", F_OK));
    EXPECT_EQ(ENOENT, errno);
    line.PlugOut();
    EXPECT_EQ(-1, access("/dev/ttyS3", F_OK));
    EXPECT_EQ(ENOENT, errno);
}

TEST_F(LineTest, LinksToItReachIt) {
    const test_support::TempDir folder;
    const std::string link = folder.Path() / "usb-modem";
    ASSERT_EQ(0, symlink("/dev/ttyS3", link.c_str()));
    EXPECT_EQ(0, access(link.c_str(), F_OK));
    const int fd = open(link.c_str(), O_RDWR);
    EXPECT_EQ(1, write(fd, "x", 1));
    EXPECT_EQ("x", log.heard);
    close(fd);
    line.PlugOut();
    EXPECT_EQ(-1, open(link.c_str(), O_RDWR)) << "and not the machine's own";
    EXPECT_EQ(ENOENT, errno);
}

TEST_F(LineTest, TheLastOfThemIsALineOfItsOwn) {
    EchoLog last_log;
    const AttachedLine last(64, std::make_unique<Echo>(last_log));
    const int fd = open("/dev/ttyS63", O_RDWR);
    EXPECT_EQ(1, write(fd, "y", 1));
    pollfd waiting{fd, POLLIN, 0};
    EXPECT_EQ(1, poll(&waiting, 1, 1000));
    char byte = 0;
    EXPECT_EQ(1, read(fd, &byte, 1));
    EXPECT_EQ('y', byte);
    EXPECT_EQ("", log.heard);
    close(fd);
    for (const char* none : {"/dev/ttyS64", "/dev/ttyS", "/dev/ttyS03", "/dev/ttyS-1"}) {
        EXPECT_EQ(-1, open(none, O_RDWR)) << none;
        EXPECT_EQ(ENOENT, errno);
    }
}

TEST_F(LineTest, ALineThatIsGoneLeavesDeadDescriptors) {
    int fd = -1;
    {
        const ScriptedLine other(1);
        fd = open("/dev/ttyS0", O_RDWR);
        ASSERT_GE(fd, 0);
    }
    EXPECT_EQ(-1, write(fd, "x", 1));
    EXPECT_EQ(EIO, errno);
    const ScriptedLine next(1);
    EXPECT_EQ(-1, write(fd, "x", 1)) << "not the next line's";
    EXPECT_EQ(0, close(fd));
    EXPECT_EQ(0, next.Closes());
}

TEST_F(LineTest, ADescriptorNumberUsedAgainIsNoLine) {
    const int fd = Open();
    close(fd);
    const int null = open("/dev/null", O_WRONLY);
    ASSERT_EQ(fd, null);
    EXPECT_EQ(1, write(null, "x", 1));
    EXPECT_EQ("", log.heard);
    close(null);
}

TEST_F(LineTest, InputForOneThreadWakesItWhileAnotherSleeps) {
    const int fd = Open();
    std::thread sleeper([] { sleep(100); });
    log.wire->At(7s, [this] { log.wire->Send("x"); });
    pollfd look{fd, POLLIN, 0};
    EXPECT_EQ(1, poll(&look, 1, -1));
    EXPECT_EQ(7s, VirtualClock::Now());
    sleeper.join();
    close(fd);
}

}  // namespace
}  // namespace pagersim
