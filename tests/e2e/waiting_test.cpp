// What waiting for an answer costs a process that loads the library, on a real terminal and the
// real clock: the process's time isn't virtual.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <string>

#include "host/site/site_file.h"
#include "host/site/site_tables.h"
#include "host/store/connection.h"
#include "host/store/schema.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host/child_process.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// The telephone's end of a terminal, which the library opens as its port.
class Telephone {
 public:
    Telephone() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        char name[64];
        EXPECT_EQ(0, grantpt(master_));
        EXPECT_EQ(0, unlockpt(master_));
        EXPECT_EQ(0, ptsname_r(master_, name, sizeof name));
        terminal_ = name;
    }
    ~Telephone() { close(master_); }
    Telephone(const Telephone&) = delete;
    Telephone& operator=(const Telephone&) = delete;

    const std::string& Terminal() const { return terminal_; }

    void Say(const std::string& bytes) const {
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()), write(master_, bytes.data(), bytes.size()));
    }

    // When all of it has been heard next.
    Clock::time_point Hear(const std::string& expected) const {
        constexpr int kLongestMs = 60000;
        std::string heard;
        pollfd readable{master_, POLLIN, 0};
        while (heard.size() < expected.size() && poll(&readable, 1, kLongestMs) > 0) {
            char byte = 0;
            // Until the library has opened the terminal there is nobody to hear.
            read(master_, &byte, 1) == 1 ? heard.push_back(byte) : (void)usleep(1000);
        }
        EXPECT_EQ(expected, heard);
        return Clock::now();
    }

 private:
    int master_;
    std::string terminal_;
};

double ProcessorSecondsOf(pid_t process) {
    clockid_t clock{};
    timespec used{};
    EXPECT_EQ(0, clock_getcpuclockid(process, &clock));
    EXPECT_EQ(0, clock_gettime(clock, &used));
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

TEST(WaitingForAnAnswer, CostsHardlyAnyProcessorTimeAndEndsWithTheAnswer) {
    const test_support::TempDir folder;
    {
        host::Connection database("site.db", host::Connection::Mode::kCreate);
        host::CreateTables(database);
        host::StoreSite(database, host::ParseSite("[[port]]\nname = \"COM 1\"\n").site);
    }
    const Telephone telephone;
    const ChildProcess host({WAITING_HOST, LIBRARY, "site.db", telephone.Terminal()});

    const auto asked = telephone.Hear("+++");
    const double before = ProcessorSecondsOf(host.Number());
    const auto given_up = telephone.Hear("ATHV1\r\n");
    const double used = ProcessorSecondsOf(host.Number()) - before;
    EXPECT_GE(given_up - asked, 900ms) << "nobody answered";
    EXPECT_LT(used, 0.02 * Seconds(given_up - asked));

    telephone.Say("OK\r\n");
    EXPECT_LT(telephone.Hear("ATZ\r") - given_up, 1500ms) << "not by its answer, but after 2 s";
}

}  // namespace
