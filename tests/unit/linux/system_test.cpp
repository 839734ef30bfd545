// Pauses, the last error, profiles, the registry, threads. The calls to the platform are wrapped
// at link time, to see and to disturb them.
#include "linux/win_system.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "sim/testing.h"

namespace {

using Calls = std::vector<std::string>;

Calls calls;
int interruptions = 0;  // how many of the next polls and sleeps a signal ends early
bool threads_run_out = false;

void* ReturnArgument(void* argument) {
    return argument;
}

}  // namespace

extern "C" {
unsigned __real_sleep(unsigned seconds);
int __real_poll(pollfd* fds, nfds_t count, int timeout);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*start)(void*), void* argument);

unsigned __wrap_sleep(unsigned seconds) {
    calls.push_back("sleep " + std::to_string(seconds));
    if (interruptions > 0) {
        --interruptions;
        return seconds;
    }
    return __real_sleep(seconds);
}

int __wrap_poll(pollfd* fds, nfds_t count, int timeout) {
    calls.push_back("poll " + std::to_string(count) + " " + std::to_string(timeout));
    if (interruptions > 0) {
        --interruptions;
        errno = EINTR;
        return -1;
    }
    return __real_poll(fds, count, timeout);
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*start)(void*), void* argument) {
    if (threads_run_out) {
        *thread = pthread_t{};
        return EAGAIN;
    }
    if (start == ReturnArgument) {
        calls.push_back(attributes == nullptr ? "default attributes" : "attributes");
    }
    return __real_pthread_create(thread, attributes, start, argument);
}
}

namespace {

struct SleepTest : testing::Test {
    SleepTest() { calls.clear(); }
    ~SleepTest() override { interruptions = 0; }

    // Pauses, and returns how long in milliseconds.
    static int64_t Slept(uint32_t ms) {
        const auto before = pagersim::VirtualClock::Now();
        Sleep(ms);
        return (pagersim::VirtualClock::Now() - before).count();
    }

    pagersim::VirtualClock clock;
};

TEST_F(SleepTest, WholeSecondsThenTheRest) {
    EXPECT_EQ(2500, Slept(2500));
    EXPECT_EQ((Calls{"sleep 2", "poll 0 500"}), calls);
}

TEST_F(SleepTest, ZeroReturnsAtOnce) {
    EXPECT_EQ(0, Slept(0));
    EXPECT_EQ(Calls{}, calls);
}

TEST_F(SleepTest, BelowASecondOnlyPolls) {
    EXPECT_EQ(999, Slept(999));
    EXPECT_EQ(Calls{"poll 0 999"}, calls);
}

TEST_F(SleepTest, OneMillisecondIsAPauseToo) {
    EXPECT_EQ(1, Slept(1));
    EXPECT_EQ(Calls{"poll 0 1"}, calls);
}

TEST_F(SleepTest, WholeSecondsOnlySleep) {
    EXPECT_EQ(60000, Slept(60000));
    EXPECT_EQ(Calls{"sleep 60"}, calls);
    EXPECT_EQ(1000, Slept(1000));
    EXPECT_EQ((Calls{"sleep 60", "sleep 1"}), calls);
}

TEST_F(SleepTest, SignalDoesNotEndTheRest) {
    interruptions = 3;
    EXPECT_EQ(500, Slept(500));
    EXPECT_EQ((Calls{"poll 0 500", "poll 0 500", "poll 0 500", "poll 0 500"}), calls);
}

TEST_F(SleepTest, SignalEndsTheWholeSeconds) {
    interruptions = 1;
    EXPECT_EQ(500, Slept(2500));
    EXPECT_EQ((Calls{"sleep 2", "poll 0 500"}), calls);
}

TEST(LastError, IsWhatTheSerialCallsLeft) {
    EXPECT_EQ(0, GetLastError()) << "nothing has failed yet";
    win_errno = -12;
    EXPECT_EQ(-12, GetLastError());
    EXPECT_EQ(-12, GetLastError());
    win_errno = 0;
    EXPECT_EQ(0, GetLastError());
}

// A buffer in which every byte not written shows as '#'.
struct Guarded {
    Guarded() { memset(bytes, '#', sizeof bytes); }

    // Up to `count` bytes, a NUL as '0'.
    std::string Shown(size_t count) const {
        std::string shown(bytes, count);
        for (char& c : shown) {
            c = c == '\0' ? '0' : c;
        }
        return shown;
    }

    char bytes[16];
};

struct ProfileCase {
    const char* situation;
    const char* default_text;
    DWORD size;
    DWORD copied;
    const char* buffer;
};

const ProfileCase kProfileCases[] = {
    {"longer than the size: cut, the NUL one past the size", "Default", 5, 4, "Defa#0##"},
    {"as long as the size", "12345", 5, 4, "1234#0##"},
    {"one below the size: whole, with its own NUL and the one past", "1234", 5, 4, "123400##"},
    {"much shorter", "1", 5, 1, "10###0##"},
    {"empty", "", 5, 0, "0####0##"},
    {"none is an empty one", nullptr, 5, 0, "0####0##"},
    {"size one has room for nothing", "abc", 1, 0, "#0######"},
    {"size zero", "abc", 0, 0, "0#######"},
};

TEST(ProfileString, KeepsTheNulOnePastTheGrantedSize) {
    for (const ProfileCase& c : kProfileCases) {
        SCOPED_TRACE(c.situation);
        Guarded buffer;
        EXPECT_EQ(c.copied, GetProfileString("App", "Key", c.default_text, buffer.bytes, c.size));
        EXPECT_EQ(c.buffer, buffer.Shown(8));
    }
}

TEST(PrivateProfileString, IsTheSameAndOpensNoFile) {
    for (const ProfileCase& c : kProfileCases) {
        SCOPED_TRACE(c.situation);
        Guarded buffer;
        EXPECT_EQ(c.copied, GetPrivateProfileString("App", "Key", c.default_text, buffer.bytes,
                                                    c.size, "/no/such/file"));
        EXPECT_EQ(c.buffer, buffer.Shown(8));
    }
}

TEST(Registry, HasNoKeys) {
    HKEY key = nullptr;
    EXPECT_EQ(-1, RegOpenKey(HKEY_LOCAL_MACHINE, "Software", &key));
    EXPECT_EQ(nullptr, key);
    EXPECT_EQ(0, RegCloseKey(key));
}

TEST(Registry, AnswersProtocolWithoutWritingData) {
    BYTE data[4] = {1, 2, 3, 4};
    DWORD size = sizeof data;
    DWORD type = 77;
    EXPECT_EQ(5766, RegQueryValueEx(nullptr, "Protocol", nullptr, &type, data, &size));
    EXPECT_EQ(0, RegQueryValueEx(nullptr, "protocol", nullptr, &type, data, &size));
    EXPECT_EQ(0, RegQueryValueEx(nullptr, "Protocols", nullptr, &type, data, &size));
    EXPECT_EQ(0, RegQueryValueEx(nullptr, "", nullptr, &type, data, &size));
    EXPECT_EQ(0, RegQueryValueEx(nullptr, nullptr, nullptr, &type, data, &size));
    EXPECT_EQ(0, memcmp(data, "\1\2\3\4", 4));
    EXPECT_EQ(4U, size);
    EXPECT_EQ(77U, type);
}

TEST(BeginThread, StartsWithANullArgumentAndDefaultAttributes) {
    calls.clear();
    int argument = 0;
    ASSERT_EQ(0, _beginthread(ReturnArgument, 1, &argument));
    void* result = &argument;
    // 0 = joined: the thread was not detached.
    ASSERT_EQ(0, pthread_join(win_thread_id, &result));
    EXPECT_EQ(nullptr, result);
    EXPECT_EQ(Calls{"default attributes"}, calls);
}

TEST(BeginThread, LatestThreadIsTheOneRemembered) {
    ASSERT_EQ(0, _beginthread(ReturnArgument, 0, nullptr));
    const pthread_t first = win_thread_id;
    ASSERT_EQ(0, _beginthread(ReturnArgument, 0, nullptr));
    const pthread_t second = win_thread_id;
    EXPECT_FALSE(pthread_equal(first, second));
    EXPECT_EQ(0, pthread_join(first, nullptr));
    EXPECT_EQ(0, pthread_join(second, nullptr));
}

TEST(BeginThread, FailureIsHandedOnAndNoThreadRemembered) {
    const pthread_t before = win_thread_id;
    threads_run_out = true;
    EXPECT_EQ(EAGAIN, _beginthread(ReturnArgument, 0, nullptr));
    threads_run_out = false;
    EXPECT_TRUE(pthread_equal(before, win_thread_id));
}

}  // namespace
