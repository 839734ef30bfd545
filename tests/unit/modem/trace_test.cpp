// The trace writer: one line a call, with its time stamp; the switch; the pause when it is off.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "linux/win_system.h"
#include "tests/support/without_descriptors.h"
#include "tests/unit/modem/handler_test.h"

namespace {

using test_support::TraceEntries;
using test_support::TraceText;
using ::testing::ElementsAre;
using namespace std::chrono_literals;

class TraceWriter : public HandlerTest {
 protected:
    static void Write(const char* text) { CCOMHdl::WritePageProtocolEntry(text); }
    static bool TraceExists() { return std::filesystem::exists(test_support::kTraceFile); }

    // Today, at this local time.
    static void SetLocalTime(int hour, int minute, int second) {
        const time_t now = time(nullptr);
        tm local = *localtime(&now);
        local.tm_hour = hour;
        local.tm_min = minute;
        local.tm_sec = second;
        pagersim::VirtualClock::Set(mktime(&local));
    }
};

TEST_F(TraceWriter, PadsTheTimeWithBlanks) {
    MakeTracingHandler();
    SetLocalTime(7, 5, 9);
    Write("good morning");
    EXPECT_EQ(" 7: 5: 9\tgood morning\n", TraceText());
}

TEST_F(TraceWriter, ShowsLocalTimeWithoutADate) {
    MakeTracingHandler();
    SetLocalTime(23, 59, 58);
    Write("a");
    Write("b");
    EXPECT_EQ("23:59:58\ta\n23:59:58\tb\n", TraceText());
}

TEST_F(TraceWriter, WritesTheTextUnchanged) {
    MakeTracingHandler();
    SetLocalTime(10, 0, 0);
    Write(
        "\x02"
        "123\rAB\xE9\r\x03"
        "1:1\r");
    Write("two\nlines\n");
    Write("100%s L:%d %");
    Write("");
    EXPECT_EQ(
        "10: 0: 0\t\x02"
        "123\rAB\xE9\r\x03"
        "1:1\r\n"
        "10: 0: 0\ttwo\nlines\n\n"
        "10: 0: 0\t100%s L:%d %\n"
        "10: 0: 0\t\n",
        TraceText());
}

TEST_F(TraceWriter, WritesAZeroByteAndWhatFollows) {
    MakeTracingHandler();
    SetLocalTime(10, 0, 0);
    CCOMHdl::WritePageProtocolEntry(CString("a\0b", 3));
    EXPECT_EQ(std::string("10: 0: 0\ta\0b\n", 13), TraceText());
}

TEST_F(TraceWriter, WritesALineOfAnyLength) {
    MakeTracingHandler();
    const std::string text(64 * 1024, 'x');
    Write(text.c_str());
    EXPECT_THAT(TraceEntries(), ElementsAre(text));
}

TEST_F(TraceWriter, MakesADeletedFileAgain) {
    MakeTracingHandler();
    Write("before");
    test_support::ForgetTrace();
    Write("after");
    EXPECT_THAT(TraceEntries(), ElementsAre("after"));
    struct stat status {};
    ASSERT_EQ(0, stat(test_support::kTraceFile, &status));
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(0644U & ~mask, status.st_mode & 0777U);
}

// The file has a hole, so it takes no room.
TEST_F(TraceWriter, GoesOnPastTwoGibibytes) {
    constexpr uintmax_t kTwoGibibytes = uintmax_t{1} << 31;
    MakeTracingHandler();
    for (const uintmax_t size : {kTwoGibibytes - 3, 2 * kTwoGibibytes}) {
        std::filesystem::resize_file(test_support::kTraceFile, size);
        Write("behind");
        const uintmax_t line = std::string("10: 0: 0\tbehind\n").size();
        EXPECT_EQ(size + line, std::filesystem::file_size(test_support::kTraceFile));
    }
    MakeTracingHandler();
    EXPECT_EQ("", TraceText()) << "a new handler empties it, however large";
}

TEST_F(TraceWriter, WritesInTheWorkingDirectoryOfTheMoment) {
    MakeTracingHandler();
    std::filesystem::create_directory("elsewhere");
    std::filesystem::current_path("elsewhere");
    Write("here");
    EXPECT_THAT(TraceEntries(), ElementsAre("here"));
}

TEST_F(TraceWriter, IsSwitchedOnByAnEmptyVariable) {
    setenv(test_support::kTraceSwitch, "", 1);
    MakeHandler();
    unsetenv(test_support::kTraceSwitch);
    EXPECT_EQ(5766, CCOMHdl::PageProtocol);
    Write("on");
    EXPECT_THAT(TraceEntries(), ElementsAre("on"));
}

TEST_F(TraceWriter, IsSwitchedOnByAnyValue) {
    setenv(test_support::kTraceSwitch, "0", 1);
    MakeHandler();
    unsetenv(test_support::kTraceSwitch);
    EXPECT_EQ(5766, CCOMHdl::PageProtocol);
}

TEST_F(TraceWriter, IsOffWithoutTheVariable) {
    MakeHandler();
    EXPECT_EQ(-1, CCOMHdl::PageProtocol);
    Write("nothing");
    EXPECT_FALSE(TraceExists());
}

TEST_F(TraceWriter, WhileOffLeavesAFileAlone) {
    std::ofstream(test_support::kTraceFile) << "mine";
    MakeHandler();
    Write("nothing");
    EXPECT_EQ("mine", TraceText());
}

TEST_F(TraceWriter, WhileOffPausesForEachCall) {
    MakeHandler();
    CCOMHdl::MPeekWait = 250;
    const auto before = pagersim::VirtualClock::Now();
    Write("one");
    Write("two");
    EXPECT_EQ(500ms, pagersim::VirtualClock::Now() - before);
}

TEST_F(TraceWriter, WhileOnDoesNotPause) {
    MakeTracingHandler();
    CCOMHdl::MPeekWait = 250;
    const auto before = pagersim::VirtualClock::Now();
    Write("one");
    EXPECT_EQ(0ms, pagersim::VirtualClock::Now() - before);
}

TEST_F(TraceWriter, IsOffForAnyOtherValueOfTheSwitch) {
    MakeTracingHandler();
    for (const int32_t value : {0, 1, 5765, 5767, -5766}) {
        CCOMHdl::PageProtocol = value;
        Write("nothing");
    }
    EXPECT_EQ("", TraceText());
}

TEST_F(TraceWriter, EachHandlerEmptiesTheFileAndDecidesAgain) {
    MakeTracingHandler();
    Write("first");
    MakeTracingHandler();
    EXPECT_TRUE(TraceExists());
    EXPECT_EQ("", TraceText());
    Write("second");
    MakeHandler();
    Write("third");
    EXPECT_THAT(TraceEntries(), ElementsAre("second"));
}

TEST_F(TraceWriter, KeepsEveryLineWholeWhenManyThreadsWrite) {
    MakeTracingHandler();
    constexpr int kThreads = 4;
    constexpr int kLines = 100;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([i] {
            const std::string text(200, static_cast<char>('a' + i));
            for (int line = 0; line < kLines; ++line) {
                Write(text.c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::vector<std::string> entries = TraceEntries();
    EXPECT_EQ(size_t{kThreads * kLines}, entries.size());
    for (const std::string& entry : entries) {
        ASSERT_EQ(std::string(200, entry[0]), entry);
    }
}

TEST_F(TraceWriter, DescriptorZeroIsAsGoodAsAnyOther) {
    const test_support::WithoutStandardInput closed;
    MakeTracingHandler();
    EXPECT_EQ(STDIN_FILENO, test_support::NextDescriptor()) << "the file isn't left open";
    Write("one");
    Write("two");
    EXPECT_THAT(TraceEntries(), ElementsAre("one", "two"));
    EXPECT_EQ(STDIN_FILENO, test_support::NextDescriptor());
}

// The one who fails goes on; everyone else waits at the next line.
TEST_F(TraceWriter, KeepsTheLockAfterAFileThatCannotBeMade) {
    MakeTracingHandler();
    std::filesystem::remove_all(folder.Path());
    Write("lost");
    Write("lost too, but not stuck");

    folder.Enter();
    std::atomic<bool> written{false};
    std::thread other([&written] {
        Write("late");
        written = true;
    });
    Sleep(1000);  // Time passes only when the other thread waits.
    EXPECT_FALSE(written);
    EXPECT_EQ("", TraceText());

    CCOMHdl::UnlockTrace();
    EXPECT_FALSE(written);
    CCOMHdl::UnlockTrace();
    other.join();
    EXPECT_TRUE(written);
    EXPECT_THAT(TraceEntries(), ElementsAre("late"));
}

}  // namespace
