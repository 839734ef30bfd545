// The line driver: sending, receiving, draining. write, read and gettimeofday are wrapped at link
// time: what a full, dying or flooding device does can't be had from a device on demand.
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <deque>
#include <string>
#include <thread>

#include "linux/tty.h"
#include "linux/win_system.h"
#include "sim/testing.h"
#include "tests/support/without_descriptors.h"
#include "tests/unit/linux/tty_fixture.h"

namespace {

constexpr int kAtMost3 = -3;  // the write takes three bytes at most
constexpr int kNothing = 0;   // the write takes nothing

// What becomes of the next writes: one of the above, or an error number.
std::deque<int> fates;
// When not 0: of all later ones.
int fate_for_ever = 0;

// While it holds, a byte is always there, and each takes a millisecond.
bool flood = false;
int flooded_ms = 0;

int NextFate(int otherwise) {
    if (fates.empty()) {
        return fate_for_ever != 0 ? fate_for_ever : otherwise;
    }
    const int fate = fates.front();
    fates.pop_front();
    return fate;
}

}  // namespace

extern "C" {
ssize_t __real_write(int fd, const void* bytes, size_t count);

ssize_t __wrap_write(int fd, const void* bytes, size_t count) {
    constexpr int kAsUsual = -1;
    switch (const int fate = NextFate(kAsUsual)) {
        case kAsUsual:
            return __real_write(fd, bytes, count);
        case kAtMost3:
            return __real_write(fd, bytes, std::min<size_t>(count, 3));
        case kNothing:
            errno = EINTR;  // left from before; it says nothing about this write
            return 0;
        default:
            errno = fate;
            return -1;
    }
}

ssize_t __real_read(int fd, void* buffer, size_t size);

ssize_t __wrap_read(int fd, void* buffer, size_t size) {
    if (!flood) {
        return __real_read(fd, buffer, size);
    }
    ++flooded_ms;
    return 1;
}

int __real_gettimeofday(timeval* now, void* zone);

int __wrap_gettimeofday(timeval* now, void* zone) {
    if (!flood) {
        return __real_gettimeofday(now, zone);
    }
    *now = {100 + flooded_ms / 1000, flooded_ms % 1000 * 1000};
    return 0;
}
}

namespace {

using namespace std::chrono_literals;
using pagersim::VirtualClock;

struct TtyIo : testing::Test {
    TtyIo() { EXPECT_EQ(0, tty_setup(line.get(), true, true, 2400, 8, 1, 'n')); }
    ~TtyIo() override {
        fates.clear();
        fate_for_ever = 0;
    }

    int32_t Send(const std::string& bytes) const {
        return tty_send(line.get(), bytes.data(), static_cast<int32_t>(bytes.size()));
    }

    // What is there, at most `size` bytes of it.
    std::string Receive(int32_t size = 1000) const {
        char buffer[1000];
        const int32_t count = tty_receive(line.get(), buffer, size);
        EXPECT_LE(0, count);
        return {buffer, static_cast<size_t>(std::max(count, 0))};
    }

    VirtualClock clock;
    pagersim::ScriptedLine port{1};
    Line line = OpenLine("/dev/ttyS0");
};

using TtySend = TtyIo;

TEST_F(TtySend, SendsEveryByte) {
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        bytes += static_cast<char>(i);
    }
    port.Hears(bytes);
    EXPECT_EQ(256, Send(bytes));
    EXPECT_EQ("", port.Verdict());
    EXPECT_EQ(0, Send(""));
    EXPECT_EQ(bytes, port.Heard());
}

TEST_F(TtySend, GoesOnAfterAShortWrite) {
    fates = {kAtMost3, kAtMost3};
    EXPECT_EQ(8, Send("abcdefgh"));
    EXPECT_EQ("abcdefgh", port.Heard());
}

TEST_F(TtySend, WritesNothingMoreWhenAllIsSent) {
    fates = {kAtMost3, EIO};
    EXPECT_EQ(3, Send("abc"));
    EXPECT_EQ(1, port.Opens());
}

TEST_F(TtySend, StopsWhenTheDeviceTakesNothing) {
    fates = {kAtMost3, kNothing};
    EXPECT_EQ(3, Send("abcdefgh"));
    EXPECT_EQ("abc", port.Heard());
}

TEST_F(TtySend, WaitsForAFullDevice) {
    fates = {EAGAIN, kAtMost3, EAGAIN, EAGAIN};
    EXPECT_EQ(8, Send("abcdefgh"));
    EXPECT_EQ("abcdefgh", port.Heard());
    EXPECT_EQ(600ms, VirtualClock::Now());
}

TEST_F(TtySend, GoesOnAtOnceAfterASignal) {
    fates = {EINTR, kAtMost3, EINTR};
    EXPECT_EQ(8, Send("abcdefgh"));
    EXPECT_EQ("abcdefgh", port.Heard());
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(TtySend, StopsAtAnyOtherError) {
    fates = {kAtMost3, ENOSPC};
    EXPECT_EQ(3, Send("abcdefgh"));
    EXPECT_EQ("abc", port.Heard());
    EXPECT_EQ(1, port.Opens());
}

TEST_F(TtySend, OpensAVanishedDeviceAgainWithItsSettings) {
    const termios before = port.Settings();
    port.Hears("ab").Vanishes().Hears("cd");
    EXPECT_EQ(2, Send("ab"));
    EXPECT_EQ(2, Send("cd"));
    EXPECT_EQ("", port.Verdict());
    EXPECT_EQ(2, port.Opens());
    EXPECT_EQ(before.c_cflag, port.Settings().c_cflag);
}

TEST_F(TtySend, StopsWhenTheDeviceIsGone) {
    port.PlugOut();
    EXPECT_EQ(0, Send("ab"));
    EXPECT_EQ(-1, tty_fd(line.get()));
    EXPECT_EQ(-1, Send("ab")) << "the line isn't open any more";
    port.PlugIn();
    EXPECT_TRUE(tty_reopen(line.get(), 0));
    EXPECT_EQ(2, Send("ab"));
}

TEST_F(TtySend, SeveralReopeningsMayBeNeeded) {
    fates = {EIO, EIO, EIO, EIO, EIO, EIO, kAtMost3, EIO, EIO, EIO, EIO, EIO, EIO};
    EXPECT_EQ(4, Send("abcd"));
    EXPECT_EQ(13, port.Opens());
}

TEST_F(TtySend, DeviceThatOpensButNeverWorksIsGivenUp) {
    fates = {kAtMost3};
    fate_for_ever = EIO;
    EXPECT_EQ(3, Send("abcd"));
    EXPECT_EQ(11, port.Opens());
}

TEST_F(TtySend, DeviceThatTakesNotOneByteIsGivenUpAsLate) {
    fate_for_ever = EIO;
    EXPECT_EQ(0, Send("abcd"));
    EXPECT_EQ(11, port.Opens());
}

TEST_F(TtySend, NeedsALineAndBytes) {
    EXPECT_EQ(-1, tty_send(nullptr, "ab", 2));
    EXPECT_EQ(-1, tty_send(line.get(), nullptr, 2));
    EXPECT_EQ(0, tty_send(line.get(), "ab", -1));
    EXPECT_EQ("", port.Heard());
}

TEST_F(TtySend, TracesThePrintableFormAndALineFeed) {
    const CaughtTraces traces;
    Send("AT\r\x82");
    EXPECT_EQ("[Send] AT<cr><M-<stx>>\n", CaughtTraces::Text());
}

TEST_F(TtyIo, DescriptorZeroIsAsGoodAsAnyOther) {
    line.reset();
    {
        const test_support::WithoutStandardInput closed;
        line = OpenLine("/dev/ttyS0");
        ASSERT_EQ(0, tty_fd(line.get()));
        EXPECT_EQ(0, tty_setup(line.get(), true, true, 2400, 8, 1, 'n'));
        port.Hears("ab").Says("OK");
        EXPECT_EQ(2, Send("ab"));
        EXPECT_EQ(2, tty_data_ready(line.get(), 1000));
        EXPECT_EQ("OK", Receive());
        line.reset();
    }
}

// A device may hold up whoever reads it without need.
TEST_F(TtyIo, QuietDeviceIsNotRead) {
    flooded_ms = 0;
    flood = true;
    EXPECT_EQ(0, tty_data_ready(line.get(), 10));
    tty_mdrain(line.get(), 10);
    flood = false;
    EXPECT_EQ(0, flooded_ms);
}

using TtyReceive = TtyIo;

TEST_F(TtyReceive, IdleLineGivesNothingAtOnce) {
    char buffer[8];
    EXPECT_EQ(0, tty_receive(line.get(), buffer, sizeof buffer));
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(TtyReceive, GivesWhatIsThere) {
    port.Says("OK\r\n");
    tty_data_ready(line.get(), 1000);
    EXPECT_EQ("OK\r\n", Receive());
    EXPECT_EQ("", Receive());
}

TEST_F(TtyReceive, KeepsTheRestForTheNextCall) {
    port.Says("CONNECT 2400");
    tty_data_ready(line.get(), 1000);
    EXPECT_EQ("CON", Receive(3));
    EXPECT_EQ(9, tty_data_ready(line.get(), 0));
    EXPECT_EQ("", Receive(0));
    EXPECT_EQ("", Receive(-1));
    EXPECT_EQ("NECT 2400", Receive(9));
}

TEST_F(TtyReceive, PutsNewBytesBehindTheOld) {
    port.Says("abc").Says("def", 500ms);
    EXPECT_EQ(3, tty_data_ready(line.get(), 1000));
    EXPECT_EQ("a", Receive(1));
    EXPECT_EQ(5, tty_data_ready(line.get(), 1000));
    EXPECT_EQ(500ms, VirtualClock::Now());
    EXPECT_EQ("bcdef", Receive());
}

TEST_F(TtyReceive, HoldsNoMoreThan128BytesAndLosesNone) {
    std::string said;
    for (int i = 0; i < 300; ++i) {
        said += static_cast<char>('!' + i % 90);
    }
    port.Says(said);
    EXPECT_EQ(128, tty_data_ready(line.get(), 1000));
    EXPECT_EQ(128, tty_data_ready(line.get(), 0));
    std::string received = Receive(50);
    EXPECT_EQ(128, tty_data_ready(line.get(), 0));
    for (std::string more = Receive(); !more.empty(); more = Receive()) {
        EXPECT_GE(128U, more.size());
        received += more;
    }
    EXPECT_EQ(said, received);
}

TEST_F(TtyReceive, WaitsNoLongerThanAsked) {
    port.Says("late", 800ms);
    EXPECT_EQ(0, tty_data_ready(line.get(), 300));
    EXPECT_EQ(300ms, VirtualClock::Now());
    EXPECT_EQ(4, tty_data_ready(line.get(), 10000));
    EXPECT_EQ(800ms, VirtualClock::Now());
}

TEST_F(TtyReceive, NeedsAnOpenLineAndABuffer) {
    char buffer[8];
    EXPECT_EQ(-1, tty_receive(nullptr, buffer, sizeof buffer));
    EXPECT_EQ(-1, tty_receive(line.get(), nullptr, 8));
    port.PlugOut();
    EXPECT_FALSE(tty_reopen(line.get(), 0));
    EXPECT_EQ(-1, tty_receive(line.get(), buffer, sizeof buffer));
    EXPECT_EQ(0, tty_data_ready(line.get(), 1000));
}

TEST_F(TtyReceive, TracesWhatItGotOrThatItGotNothing) {
    port.Says("OK\r");
    tty_data_ready(line.get(), 1000);
    const CaughtTraces traces;
    Receive(2);
    EXPECT_EQ("[Receive]  got OK", CaughtTraces::Text());
    Receive();
    Receive();
    EXPECT_EQ("[Receive]  got OK[Receive]  got <cr>[Receive]  timeout", CaughtTraces::Text());
}

using TtyDrain = TtyIo;

TEST_F(TtyDrain, DiscardsUntilItIsQuietForTheWait) {
    port.Says("noise").Says("more", 400ms).Says("late", 600ms);
    tty_mdrain(line.get(), 500);
    EXPECT_EQ(900ms, VirtualClock::Now());
    EXPECT_EQ(4, tty_data_ready(line.get(), 1000));
    EXPECT_EQ("late", Receive());
}

TEST_F(TtyDrain, WithoutAWaitDiscardsWhatIsThere) {
    for (const int32_t wait : {0, -1, -1000}) {
        port.Says("noise");
        msleep(100);
        tty_mdrain(line.get(), wait);
        EXPECT_EQ("", Receive());
    }
    EXPECT_EQ(300ms, VirtualClock::Now());
}

TEST_F(TtyDrain, WaitIsInSeconds) {
    port.Says("noise", 1900ms);
    tty_drain(line.get(), 2);
    EXPECT_EQ(3900ms, VirtualClock::Now());
    tty_drain(line.get(), -2);
    EXPECT_EQ(3900ms, VirtualClock::Now());
}

TEST_F(TtyDrain, DeviceThatNeverPausesIsLeftAloneAfterHalfAMinute) {
    msleep(5000);
    for (int i = 0; i < 400; ++i) {
        port.Says("x", 100ms);
    }
    tty_drain(line.get(), 1);
    EXPECT_EQ(5000ms + 100ms + 30000ms, VirtualClock::Now()) << "counted from the first byte";
    EXPECT_EQ(1, tty_data_ready(line.get(), 1000)) << "it goes on sending";
}

TEST_F(TtyDrain, DeviceThatPausesInTimeIsDrainedWhole) {
    for (int i = 0; i < 299; ++i) {
        port.Says("x", 100ms);
    }
    tty_drain(line.get(), 1);
    EXPECT_EQ(29900ms + 1000ms, VirtualClock::Now());
    EXPECT_EQ("", port.Verdict());
}

// Not even while the bytes that are there are read.
TEST_F(TtyDrain, FloodEndsToo) {
    port.Says("x");
    flooded_ms = 0;
    flood = true;
    tty_drain(line.get(), 1);
    flood = false;
    EXPECT_EQ(1 + 30000, flooded_ms);
}

TEST_F(TtyDrain, ClockThatIsSetBackOnlyBeginsTheLimitAnew) {
    const time_t start = time(nullptr);
    for (int i = 0; i < 1000; ++i) {
        port.Says("x", 100ms);
    }
    std::thread administrator([start] {
        Sleep(10050);
        VirtualClock::Set(start - 3600);
    });
    tty_drain(line.get(), 1);
    administrator.join();
    EXPECT_EQ(10100ms + 30000ms, VirtualClock::Now());
}

TEST_F(TtyDrain, OpensAVanishedDeviceAgain) {
    port.Says("noise").Vanishes(100ms).Says("more", 100ms);
    tty_mdrain(line.get(), 500);
    EXPECT_EQ(2, port.Opens());
    EXPECT_EQ(700ms, VirtualClock::Now());
    EXPECT_EQ("", Receive());
}

TEST_F(TtyDrain, DeviceThatVanishesAgainAndAgainIsGivenUp) {
    for (int i = 0; i < 20; ++i) {
        port.Vanishes(10ms);
    }
    tty_mdrain(line.get(), 500);
    EXPECT_EQ(11, port.Opens());
}

TEST_F(TtyDrain, EachByteGivesAVanishingDeviceAllItsTriesAgain) {
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 10; ++j) {
            port.Vanishes(10ms);
        }
        port.Says("x", 10ms);
    }
    tty_mdrain(line.get(), 500);
    EXPECT_EQ(31, port.Opens());
    EXPECT_EQ("", port.Verdict());
}

TEST_F(TtyDrain, EndsWhenTheDeviceIsGone) {
    port.PlugOut();
    tty_mdrain(line.get(), 500);
    EXPECT_EQ(-1, tty_fd(line.get()));
    EXPECT_EQ(0ms, VirtualClock::Now());
}

TEST_F(TtyDrain, TracesEachByte) {
    port.Says("a\r\x81");
    const CaughtTraces traces;
    tty_mdrain(line.get(), 500);
    EXPECT_EQ("[Drain] a<cr><M-<soh>>", CaughtTraces::Text());
}

// A terminal whose other side is gone is readable without end and has nothing to read.
TEST(TtyDrainOfAPty, EndsWhenTheOtherSideHangsUp) {
    Pty pty;
    const Line line = OpenLine(pty.Path());
    ASSERT_NE(nullptr, line);
    pty.HangUp();
    tty_mdrain(line.get(), 10);
    EXPECT_EQ(0, tty_data_ready(line.get(), 0));
}

struct QuietCase {
    const char* situation;
    int32_t level;
    bool has_output;
};

TEST_F(TtyIo, TracesOnlyFromLevelTwoWithAnOutput) {
    const QuietCase cases[] = {{"level 1", 1, true}, {"level 0", 0, true}, {"no output", 2, false}};
    for (const QuietCase& c : cases) {
        SCOPED_TRACE(c.situation);
        const CaughtTraces traces(c.level);
        if (!c.has_output) {
            verbout = nullptr;
        }
        testing::internal::CaptureStdout();
        Send("AT");
        Receive();
        tty_mdrain(line.get(), 0);
        tty_hangup(line.get(), 0);
        EXPECT_EQ("", CaughtTraces::Text());
        EXPECT_EQ("", testing::internal::GetCapturedStdout());
    }
}

}  // namespace
