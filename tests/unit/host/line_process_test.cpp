// The process of a line: here this program, under a name that says what it does.
#include "host/node/line_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string_view>

namespace host {
namespace {

constexpr const char* kWaits = "a line that waits";
constexpr const char* kEnds = "a line that ends";
constexpr int kItsStatus = 7;

// Before anything else of the program.
const bool plays_a_line = [] {
    const std::string_view name = program_invocation_name;
    while (name == kWaits) {
        pause();
    }
    if (name == kEnds) {
        _exit(kItsStatus);
    }
    return false;
}();

int WaitForEndOf(const LineProcess& process) {
    siginfo_t end{};
    waitid(P_PID, static_cast<id_t>(process.Number()), &end, WEXITED | WNOWAIT);
    return end.si_status;
}

TEST(ProcessOfALine, SaysHowItEnded) {
    LineProcess process({kEnds}, ".", {STDERR_FILENO});
    EXPECT_EQ(kItsStatus, WaitForEndOf(process));
    EXPECT_TRUE(process.HasEnded());
    const std::optional<int> status = process.Ended();
    ASSERT_TRUE(status && WIFEXITED(*status));
    EXPECT_EQ(kItsStatus, WEXITSTATUS(*status));
}

TEST(ProcessOfALine, EndsWhenItIsAsked) {
    LineProcess process({kWaits}, ".", {STDERR_FILENO});
    EXPECT_FALSE(process.HasEnded());
    EXPECT_EQ(std::nullopt, process.Ended());
    process.AskToEnd();
    EXPECT_EQ(SIGTERM, WaitForEndOf(process));
    EXPECT_TRUE(process.Ended());
}

TEST(ProcessOfALine, DoesNotOutliveItsOwner) {
    pid_t number = -1;
    {
        const LineProcess process({kWaits}, ".", {STDERR_FILENO});
        number = process.Number();
        EXPECT_EQ(0, kill(number, 0));
    }
    EXPECT_EQ(-1, kill(number, 0));
    EXPECT_EQ(ESRCH, errno);
}

}  // namespace
}  // namespace host
