// Ports that stay taken, seen in the trace.
#include "host/service/port_watch.h"

#include <gtest/gtest.h>

namespace host {
namespace {

constexpr time_t kNow = 978948000;
constexpr const char* kFailure = "10: 0: 7\tCOM port cannot be opened!\n";
constexpr const char* kSuccess = "10: 0: 7\tMessage transfered!\n";

TEST(Ports, AreFreeAtFirst) {
    PortWatch ports;
    EXPECT_FALSE(ports.IsAnyTaken());
    EXPECT_FALSE(ports.IsDue(kNow));
}

TEST(Ports, AreTakenWhenOneCouldNotBeOpened) {
    PortWatch ports;
    ports.Read(kFailure);
    EXPECT_TRUE(ports.IsAnyTaken());
    EXPECT_TRUE(ports.IsDue(kNow));
}

TEST(Ports, AreSeenHoweverTheTraceIsSplit) {
    const std::string trace = std::string("10: 0: 6\tCOM: COM 1\n") + kFailure + "10: 0: 8\tx\n";
    for (size_t split = 0; split <= trace.size(); ++split) {
        PortWatch ports;
        ports.Read(std::string_view(trace).substr(0, split));
        ports.Read(std::string_view(trace).substr(split));
        EXPECT_TRUE(ports.IsAnyTaken()) << split;
    }
    PortWatch ports;
    for (const char c : trace) {
        ports.Read({&c, 1});
    }
    EXPECT_TRUE(ports.IsAnyTaken());
}

TEST(Ports, AreNotTakenByTextsThatOnlyHoldTheWords) {
    for (const char* line :
         {"COM port cannot be opened!\n", "10: 0: 7\t COM port cannot be opened!\n",
          "10: 0: 7\tMessage to send: COM port cannot be opened!\n",
          "10: 0: 7\tCOM port cannot be opened!!\n", "10: 0: 7\tCOM port cannot be opened!"}) {
        PortWatch ports;
        ports.Read(line);
        EXPECT_FALSE(ports.IsAnyTaken()) << line;
    }
}

TEST(Ports, AreSeenBehindALineWithoutEnd) {
    PortWatch ports;
    for (int i = 0; i < 100; ++i) {
        ports.Read(std::string(1000, 'x'));
    }
    ports.Read(std::string("\tCOM port cannot be opened!\n"));
    EXPECT_FALSE(ports.IsAnyTaken());
    ports.Read(kFailure);
    EXPECT_TRUE(ports.IsAnyTaken());
}

TEST(Ports, AreTakenUpAgainAfterGrowingPauses) {
    PortWatch ports;
    time_t now = kNow;
    for (const time_t minutes : {5, 10, 20, 40, 60, 60, 60}) {
        ports.Read(kFailure);
        EXPECT_TRUE(ports.IsDue(now));
        ports.Renewed(now);
        EXPECT_FALSE(ports.IsAnyTaken());
        EXPECT_FALSE(ports.IsDue(now + 24 * 60 * 60));
        ports.Read(kFailure);
        EXPECT_FALSE(ports.IsDue(now + minutes * 60 - 1)) << minutes;
        now += minutes * 60;
        EXPECT_TRUE(ports.IsDue(now)) << minutes;
    }
}

TEST(Ports, AreTakenUpSoonAgainAfterAPageThatWentOut) {
    PortWatch ports;
    for (time_t now = kNow; now < kNow + 5; ++now) {
        ports.Read(kFailure);
        ports.Renewed(now);
    }
    ports.Read(kSuccess);
    ports.Read(kFailure);
    ports.Renewed(kNow);
    ports.Read(kFailure);
    EXPECT_FALSE(ports.IsDue(kNow + 5 * 60 - 1));
    EXPECT_TRUE(ports.IsDue(kNow + 5 * 60));
}

// The rest of a line of the trace before belongs to no line of the new one.
TEST(Ports, BeginAnewWithTheEngine) {
    PortWatch ports;
    ports.Read("10: 0: 7\tCOM port cannot");
    ports.Renewed(kNow);
    ports.Read(" be opened!\n");
    EXPECT_FALSE(ports.IsAnyTaken());
}

}  // namespace
}  // namespace host
