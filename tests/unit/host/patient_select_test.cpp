// Tests of host/platform/patient_select.h, on simulated lines and the virtual clock.
#include "host/platform/patient_select.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <deque>
#include <vector>

#include "sim/testing.h"
#include "tests/unit/linux/tty_fixture.h"

namespace host {
namespace {

using namespace std::chrono_literals;
using pagersim::VirtualClock;

constexpr std::chrono::milliseconds kPatience{kPatienceMs};

// A descriptor's answer to a look, and what the look left behind.
struct Look {
    explicit Look(int descriptor, SystemSelect system = ::select) : fd(descriptor) {
        FD_ZERO(&read);
        FD_SET(fd, &read);
        errno = kEarlierError;
        answer = PatientSelect(system, fd + 1, &read, nullptr, nullptr, &timeout);
        error = errno;
    }

    // Whether all is as the system leaves it after a look without waiting.
    bool SaysReady() const { return answer == 1 && FD_ISSET(fd, &read) != 0 && IsClean(); }
    bool SaysNothing() const { return answer == 0 && FD_ISSET(fd, &read) == 0 && IsClean(); }

 private:
    static constexpr int kEarlierError = EDOM;

    bool IsClean() const {
        return timeout.tv_sec == 0 && timeout.tv_usec == 0 && error == kEarlierError;
    }

    int fd;
    fd_set read;
    timeval timeout{0, 0};
    int answer;
    int error;
};

class PatientSelectOnALine : public testing::Test {
 protected:
    PatientSelectOnALine() {
        tty_setup(line.get(), true, true, 2400, 8, 1, 'n');
        fd = tty_fd(line.get());
        while (VirtualClock::Now() == 0ms) {
            Look quiet(fd);  // what an earlier test has seen is forgotten
        }
        start = VirtualClock::Now();
    }

    std::chrono::milliseconds Elapsed() const { return VirtualClock::Now() - start; }
    void Read() const {
        char byte = 0;
        EXPECT_EQ(1, read(fd, &byte, 1));
    }

    VirtualClock clock;
    pagersim::ScriptedLine port{1};
    Line line = OpenLine("/dev/ttyS0");
    int fd = -1;
    std::chrono::milliseconds start{0};
};

TEST_F(PatientSelectOnALine, QuietLineIsLookedAtForAWhile) {
    EXPECT_TRUE(Look(fd).SaysNothing());
    EXPECT_EQ(kPatience, Elapsed());
    EXPECT_TRUE(Look(fd).SaysNothing());
    EXPECT_EQ(2 * kPatience, Elapsed());
}

TEST_F(PatientSelectOnALine, ByteEndsTheLookAtOnce) {
    port.Says("x", 2ms);
    EXPECT_TRUE(Look(fd).SaysReady());
    EXPECT_EQ(2ms, Elapsed());
    EXPECT_TRUE(Look(fd).SaysReady()) << "nobody has read it";
    EXPECT_EQ(2ms, Elapsed());
}

// It has been read by then, and waits to be acted on.
TEST_F(PatientSelectOnALine, TwoLooksBehindAByteAreAnsweredAtOnce) {
    for (const auto after : {2ms, 0ms}) {
        port.Says("x", after);
        msleep(1);  // the second time the byte is there before the look
        const auto before = Elapsed();
        EXPECT_TRUE(Look(fd).SaysReady());
        const auto came = Elapsed();
        EXPECT_EQ(after == 0ms ? 0ms : 1ms, came - before);
        Read();
        EXPECT_TRUE(Look(fd).SaysNothing());
        EXPECT_TRUE(Look(fd).SaysNothing());
        EXPECT_EQ(came, Elapsed());
        EXPECT_TRUE(Look(fd).SaysNothing());
        EXPECT_EQ(came + kPatience, Elapsed());
    }
}

TEST_F(PatientSelectOnALine, OtherCallsAreTheSystems) {
    fd_set read;
    FD_ZERO(&read);
    FD_SET(fd, &read);
    fd_set write = read;
    timeval none{0, 0};
    EXPECT_EQ(1, PatientSelect(::select, fd + 1, nullptr, &write, nullptr, &none));
    EXPECT_EQ(1, PatientSelect(::select, fd + 1, &read, &write, nullptr, &none));
    EXPECT_EQ(0, FD_ISSET(fd, &read));
    EXPECT_EQ(0, PatientSelect(::select, fd + 1, nullptr, nullptr, &read, &none));
    EXPECT_EQ(0, PatientSelect(::select, 0, nullptr, nullptr, nullptr, &none));
    EXPECT_EQ(0, PatientSelect(::select, -1, &read, nullptr, nullptr, &none) > 0);
    EXPECT_EQ(0ms, Elapsed());

    FD_SET(fd, &read);
    timeval second{1, 0};
    EXPECT_EQ(0, PatientSelect(::select, fd + 1, &read, nullptr, nullptr, &second));
    EXPECT_EQ(1000ms, Elapsed());
}

// What the system is asked, and how it answers: one step a call.
struct Answer {
    int result;
    int error;
};
std::deque<Answer> answers;
std::vector<long> asked_for_us;  // -1: without an end

int ScriptedSelect(int limit, fd_set* read, fd_set*, fd_set*, timeval* timeout) {
    asked_for_us.push_back(timeout == nullptr ? -1 : timeout->tv_sec * 1000000 + timeout->tv_usec);
    const Answer answer = answers.front();
    answers.pop_front();
    errno = answer.result < 0 ? answer.error : errno;
    if (answer.result == 0 && read != nullptr && limit <= FD_SETSIZE) {
        FD_CLR(limit - 1, read);
    }
    return answer.result;
}

class PatientSelectOnAnySystem : public testing::Test {
 protected:
    PatientSelectOnAnySystem() {
        answers.assign(4, {0, 0});
        Look(fd, ScriptedSelect), Look(fd, ScriptedSelect);
        answers.clear();
        asked_for_us.clear();
    }

    Pty pty;
    Line line = OpenLine(pty.Path());
    int fd = tty_fd(line.get());
};

TEST_F(PatientSelectOnAnySystem, SignalDuringTheWaitIsNothingFound) {
    answers = {{0, 0}, {-1, EINTR}};
    EXPECT_TRUE(Look(fd, ScriptedSelect).SaysNothing());
    EXPECT_EQ((std::vector<long>{0, kPatienceMs * 1000}), asked_for_us);
}

TEST_F(PatientSelectOnAnySystem, ErrorOfTheLookItselfIsItsAnswer) {
    answers = {{-1, EBADF}};
    fd_set read;
    FD_ZERO(&read);
    FD_SET(fd, &read);
    timeval none{0, 0};
    EXPECT_EQ(-1, PatientSelect(ScriptedSelect, fd + 1, &read, nullptr, nullptr, &none));
    EXPECT_EQ(EBADF, errno);
    EXPECT_EQ(std::vector<long>{0}, asked_for_us);
}

TEST_F(PatientSelectOnAnySystem, OneCallIsMadeForAnythingElse) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    answers.assign(9, {0, 0});

    EXPECT_TRUE(Look(ends[0], ScriptedSelect).SaysNothing()) << "no terminal";
    fd_set both;
    FD_ZERO(&both);
    FD_SET(fd, &both);
    FD_SET(ends[0], &both);
    timeval none{0, 0};
    PatientSelect(ScriptedSelect, FD_SETSIZE, &both, nullptr, nullptr, &none);
    FD_ZERO(&both);
    PatientSelect(ScriptedSelect, FD_SETSIZE, &both, nullptr, nullptr, &none);
    FD_SET(fd, &both);
    PatientSelect(ScriptedSelect, FD_SETSIZE + 1, &both, nullptr, nullptr, &none);
    EXPECT_EQ((std::vector<long>{0, 0, 0, 0}), asked_for_us);

    FD_SET(fd, &both);
    PatientSelect(ScriptedSelect, fd + 1, &both, nullptr, nullptr, nullptr);
    EXPECT_EQ(-1, asked_for_us.back());
    timeval moment{0, 1};
    FD_SET(fd, &both);
    PatientSelect(ScriptedSelect, fd + 1, &both, nullptr, nullptr, &moment);
    EXPECT_EQ(1, asked_for_us.back());
    EXPECT_EQ(6U, asked_for_us.size());
    close(ends[0]);
    close(ends[1]);
}

// As a modem that is unplugged: it can be read without end and never has anything.
TEST_F(PatientSelectOnAnySystem, TerminalThatIsGoneIsAQuietOne) {
    pty.HangUp();
    answers = {{1, 0}, {0, 0}};
    EXPECT_TRUE(Look(fd, ScriptedSelect).SaysReady());
    EXPECT_EQ((std::vector<long>{0, kPatienceMs * 1000}), asked_for_us);
}

}  // namespace
}  // namespace host
