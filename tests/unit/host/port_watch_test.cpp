// Ports that stay taken, seen in the pages of the trace.
#include "host/line/port_watch.h"

#include <gtest/gtest.h>

#include "tests/unit/host/recorded_trace.h"

namespace host {
namespace {

constexpr time_t kNow = 978948000;

// What the trace of one page makes of it.
void Read(PortWatch& ports, TraceWriter& trace) {
    for (const TracedPage& page : RecordedTrace::Of(trace.Text()).pages) {
        ports.PageEnded(page);
    }
}
void Fail(PortWatch& ports) {
    TraceWriter trace;
    Read(ports, trace.Begin().Say("COM port cannot be opened!").Say("*** END PAGING ***"));
}
void Succeed(PortWatch& ports) {
    TraceWriter trace;
    Read(ports, trace.Begin().Say("Message transfered!").Say("*** END PAGING ***"));
}

TEST(Ports, AreFreeAtFirst) {
    PortWatch ports;
    EXPECT_FALSE(ports.IsAnyTaken());
    EXPECT_FALSE(ports.IsDue(kNow));
}

TEST(Ports, AreTakenWhenOneCouldNotBeOpened) {
    PortWatch ports;
    Fail(ports);
    EXPECT_TRUE(ports.IsAnyTaken());
    EXPECT_TRUE(ports.IsDue(kNow));
}

// Of a pager whose number says so, of a far end that does, or outside of any page.
TEST(Ports, AreNotTakenByTextsThatOnlyHoldTheWords) {
    for (const char* label : {"Dial:", "TransMsg: msg + rn:"}) {
        PortWatch ports;
        TraceWriter trace;
        Read(ports,
             trace.Begin().Say(label).Say("COM port cannot be opened!").Say("*** END PAGING ***"));
        EXPECT_FALSE(ports.IsAnyTaken()) << label;
    }
    PortWatch ports;
    TraceWriter heard;
    Read(ports, heard.Begin()
                    .Say("Message to send: x")
                    .Say("WaitString [modemsay=a")
                    .Say("COM port cannot be opened!")
                    .Say("*** END PAGING ***"));
    TraceWriter alone;
    Read(ports, alone.Say("COM port cannot be opened!"));
    EXPECT_FALSE(ports.IsAnyTaken());
}

TEST(Ports, AreTakenUpAgainAfterGrowingPauses) {
    PortWatch ports;
    time_t now = kNow;
    for (const time_t minutes : {5, 10, 20, 40, 60, 60, 60}) {
        Fail(ports);
        EXPECT_TRUE(ports.IsDue(now));
        ports.Renewed(now);
        EXPECT_FALSE(ports.IsAnyTaken());
        EXPECT_FALSE(ports.IsDue(now + 24 * 60 * 60));
        Fail(ports);
        EXPECT_FALSE(ports.IsDue(now + minutes * 60 - 1)) << minutes;
        now += minutes * 60;
        EXPECT_TRUE(ports.IsDue(now)) << minutes;
    }
}

TEST(Ports, AreTakenUpSoonAgainAfterAPageThatWentOut) {
    PortWatch ports;
    for (time_t now = kNow; now < kNow + 5; ++now) {
        Fail(ports);
        ports.Renewed(now);
    }
    Succeed(ports);
    Fail(ports);
    ports.Renewed(kNow);
    Fail(ports);
    EXPECT_FALSE(ports.IsDue(kNow + 5 * 60 - 1));
    EXPECT_TRUE(ports.IsDue(kNow + 5 * 60));
}

}  // namespace
}  // namespace host
