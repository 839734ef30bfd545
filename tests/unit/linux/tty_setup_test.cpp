// The line driver's settings: what each argument of tty_setup makes of the terminal attributes, and
// what is refused.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <string>

#include "linux/tty.h"
#include "sim/testing.h"
#include "tests/unit/linux/tcsetattr_calls.h"
#include "tests/unit/linux/tty_fixture.h"

namespace {

constexpr tcflag_t kEditing = ISIG | ICANON | ECHO | ECHOE | ECHOK | ECHONL;
constexpr tcflag_t kAllInput = 0xffff;  // the highest bit is the C library's own

// Leaves every flag of the device on or off before the driver opens it.
void Prepare(bool on) {
    const int fd = open(kDevice, O_RDWR | O_NOCTTY);
    ASSERT_LE(0, fd);
    termios settings{};
    ASSERT_EQ(0, tcgetattr(fd, &settings));
    settings.c_iflag = on ? kAllInput : 0;
    settings.c_oflag = on ? ~tcflag_t{0} : 0;
    settings.c_lflag = on ? ~tcflag_t{0} : 0;
    settings.c_cflag = on ? ~tcflag_t{0} : 0;
    cfsetispeed(&settings, B9600);
    cfsetospeed(&settings, B9600);
    settings.c_cc[VMIN] = 7;
    settings.c_cc[VTIME] = 9;
    ASSERT_EQ(0, tcsetattr(fd, TCSANOW, &settings));
    close(fd);
}

struct SetupTest : testing::Test {
    ~SetupTest() override { TcsetattrCalls::refusals = 0; }

    void Open(bool flags_on) {
        Prepare(flags_on);
        line = OpenLine(kDevice);
        ASSERT_NE(nullptr, line);
    }

    termios SetRaw(int32_t rate, int32_t bits, int32_t stop, char parity) {
        EXPECT_EQ(0, tty_setup(line.get(), true, true, rate, bits, stop, parity));
        return port.Settings();
    }

    pagersim::VirtualClock clock;
    pagersim::ScriptedLine port{1};
    Line line;
};

TEST_F(SetupTest, RawSwitchesOffWhatTheTextNames) {
    Open(true);
    const termios raw = SetRaw(2400, 8, 1, 'n');
    EXPECT_EQ(kAllInput & ~tcflag_t{IXON | IXOFF | ICRNL | IGNCR | INLCR | ISTRIP}, raw.c_iflag);
    EXPECT_EQ(0U, raw.c_oflag);
    EXPECT_EQ(~kEditing, raw.c_lflag);
    EXPECT_EQ(0, raw.c_cc[VMIN]);
    EXPECT_EQ(0, raw.c_cc[VTIME]);
}

TEST_F(SetupTest, RawSwitchesOnBreakIgnoringAndHardwareFlowControl) {
    Open(false);
    const termios raw = SetRaw(2400, 8, 1, 'n');
    EXPECT_EQ(tcflag_t{IGNBRK}, raw.c_iflag);
    EXPECT_EQ(0U, raw.c_oflag);
    EXPECT_EQ(0U, raw.c_lflag);
    EXPECT_EQ(tcflag_t{CRTSCTS | CLOCAL | CREAD | HUPCL | CS8 | B2400}, raw.c_cflag);
}

TEST_F(SetupTest, CookedStartsFromTheOriginalAndEdits) {
    Open(false);
    SetRaw(2400, 7, 2, 'e');
    ASSERT_EQ(0, tty_setup(line.get(), false, false, 9600, 8, 1, 'n'));
    const termios cooked = port.Settings();
    EXPECT_EQ(0U, cooked.c_iflag);
    EXPECT_EQ(kEditing, cooked.c_lflag);
    EXPECT_EQ(tcflag_t{CLOCAL | CREAD | CS8 | B9600}, cooked.c_cflag);
    EXPECT_EQ(7, cooked.c_cc[VMIN]);
    EXPECT_EQ(9, cooked.c_cc[VTIME]);
}

TEST_F(SetupTest, HangUpOnCloseIsSetOrCleared) {
    Open(true);
    ASSERT_EQ(0, tty_setup(line.get(), true, false, 2400, 8, 1, 'n'));
    EXPECT_EQ(0U, port.Settings().c_cflag & HUPCL);
    ASSERT_EQ(0, tty_setup(line.get(), true, true, 2400, 8, 1, 'n'));
    EXPECT_EQ(tcflag_t{HUPCL}, port.Settings().c_cflag & HUPCL);
}

TEST_F(SetupTest, EverySpeedOfTheTable) {
    Open(false);
    const struct {
        int32_t rate;
        speed_t speed;
    } speeds[] = {{300, B300},       {1200, B1200},     {2400, B2400},    {4800, B4800},
                  {9600, B9600},     {19200, B19200},   {38400, B38400},  {57600, B57600},
                  {115200, B115200}, {230400, B230400}, {460800, B460800}};
    for (const auto& c : speeds) {
        SCOPED_TRACE(c.rate);
        const termios set = SetRaw(c.rate, 8, 1, 'n');
        EXPECT_EQ(c.speed, cfgetispeed(&set));
        EXPECT_EQ(c.speed, cfgetospeed(&set));
    }
}

// Also each setting after each other one: nothing may be left of the one before.
TEST_F(SetupTest, EveryCharacterFormat) {
    const struct {
        int32_t bits;
        tcflag_t flag;
    } sizes[] = {{5, CS5}, {6, CS6}, {7, CS7}, {8, CS8}};
    const struct {
        char letter;
        tcflag_t flags;
    } parities[] = {{'n', 0}, {'e', PARENB}, {'o', PARENB | PARODD}};
    for (const bool flags_on : {false, true}) {
        Open(flags_on);
        for (const auto& size : sizes) {
            for (const int32_t stop : {2, 1}) {
                for (const auto& parity : parities) {
                    const termios set = SetRaw(2400, size.bits, stop, parity.letter);
                    EXPECT_EQ(size.flag, set.c_cflag & CSIZE);
                    EXPECT_EQ(stop == 2 ? tcflag_t{CSTOPB} : 0, set.c_cflag & CSTOPB);
                    EXPECT_EQ(parity.flags, set.c_cflag & (PARENB | PARODD | CMSPAR));
                    EXPECT_EQ(tcflag_t{CLOCAL | CREAD}, set.c_cflag & (CLOCAL | CREAD));
                }
            }
        }
        line.reset();
    }
}

TEST_F(SetupTest, RefusesWhatItDoesNotKnowAndLeavesTheLineAlone) {
    const struct {
        const char* situation;
        int32_t rate;
        int32_t bits;
        int32_t stop;
        char parity;
    } refused[] = {
        {"600 bit/s", 600, 8, 1, 'n'},
        {"1800 bit/s", 1800, 8, 1, 'n'},
        {"0 bit/s", 0, 8, 1, 'n'},
        {"-1 bit/s", -1, 8, 1, 'n'},
        {"921600 bit/s", 921600, 8, 1, 'n'},
        {"4 data bits", 2400, 4, 1, 'n'},
        {"9 data bits", 2400, 9, 1, 'n'},
        {"no stop bit", 2400, 8, 0, 'n'},
        {"3 stop bits", 2400, 8, 3, 'n'},
        {"upper-case parity", 2400, 8, 1, 'E'},
        {"upper-case no parity", 2400, 8, 1, 'N'},
        {"mark parity", 2400, 8, 1, 'm'},
        {"space parity", 2400, 8, 1, 's'},
    };
    Open(false);
    const termios before = SetRaw(9600, 7, 2, 'e');
    for (const auto& c : refused) {
        SCOPED_TRACE(c.situation);
        EXPECT_EQ(-1, tty_setup(line.get(), true, true, c.rate, c.bits, c.stop, c.parity));
    }
    EXPECT_EQ(before.c_cflag, port.Settings().c_cflag);
    // Nor do the working settings, which a reopening applies.
    ASSERT_TRUE(tty_reopen(line.get(), 0));
    EXPECT_EQ(before.c_cflag, port.Settings().c_cflag);
}

TEST_F(SetupTest, RefusesALineThatIsNotOpen) {
    EXPECT_EQ(-1, tty_setup(nullptr, true, true, 2400, 8, 1, 'n'));
    Open(false);
    port.PlugOut();
    EXPECT_FALSE(tty_reopen(line.get(), 0));
    EXPECT_EQ(-1, tty_setup(line.get(), true, true, 2400, 8, 1, 'n'));
}

TEST_F(SetupTest, AppliesAtOnceAndSaysWhenTheDeviceRefuses) {
    Open(false);
    SetRaw(2400, 8, 1, 'n');
    EXPECT_EQ(TCSANOW, TcsetattrCalls::applied_how);
    TcsetattrCalls::refusals = 1;
    EXPECT_EQ(-1, tty_setup(line.get(), true, true, 2400, 8, 1, 'n'));
}

}  // namespace
