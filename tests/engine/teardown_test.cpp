// Tests of taking the engine down while its worker sleeps, sends, or is stuck.
#include "engine/longest_page.h"
#include "engine/pager_fwd.h"
#include "linux/win_system.h"
#include "tests/engine/engine_test.h"
#include "tests/support/process_counts.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using pagersim::VirtualClock;

class Teardown : public EngineTest {
 protected:
    Teardown() {
        AddPager({"sms", kSms1});
        AddPager({"anna", kAlphanumeric, 5, 45});
        AddAlarm(7);
        AddAlarm(8);
        Start();
    }
};

TEST_F(Teardown, WhileTheWorkerSleepsTakesNoTime) {
    Forward(7, {"anna"});
    Wait(45s);
    const auto before = VirtualClock::Now();
    Stop();
    EXPECT_EQ(before, VirtualClock::Now());
    EXPECT_FALSE(WorkerRuns());
    EXPECT_THAT(Rows(), ElementsAre("7 anna 1 2")) << "the page stays pending in the table";
    EXPECT_EQ(1, CountInTrace("End Check4DialThread\n"));
    EXPECT_EQ(0, CountInTrace("End Loop Check4DialThread\n")) << "the queue was not empty";
}

TEST_F(Teardown, WhileAPageIsInProgressFinishesIt) {
    Forward(7, {"sms"});
    Wait(10s);
    EXPECT_THAT(Pages(), IsEmpty());
    Stop();
    EXPECT_THAT(Pages(), SizeIs(1));
    EXPECT_EQ(1, line.Closes() - line.Opens() + 1) << "the line was given back";
    EXPECT_THAT(Rows(), ElementsAre("7 sms 0 4")) << "and the outcome noted";
    EXPECT_GT(VirtualClock::Now(), 12s);
    EXPECT_LT(VirtualClock::Now(), 60s) << "without the pause behind the page";
}

TEST_F(Teardown, BeginsNoFurtherPage) {
    {
        const NoWorker noWorker;
        Queue(7, "sms");
        Queue(8, "sms");
    }
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    Wait(10s);
    Stop();
    EXPECT_THAT(modem->Calls(), SizeIs(1));
    EXPECT_THAT(Rows(), ElementsAre("7 sms 0 2", "8 sms 0 4"));
}

TEST_F(Teardown, PendingPagesAreTakenUpByTheNextStart) {
    modem->Plan({PagingModem::Answer::kBusy});
    Forward(7, {"sms"});
    Wait(30s);
    Stop();
    Start();
    Wait(30s);
    EXPECT_THAT(Pages(), SizeIs(1));
}

TEST_F(Teardown, AfterTheWorkerHasEndedByItself) {
    Forward(7, {"sms"});
    UntilWorkerEnds();
    const auto before = VirtualClock::Now();
    Stop();
    EXPECT_EQ(before, VirtualClock::Now());
}

TEST_F(Teardown, OfAWorkerThatIsStuckBesideTheLineGivesUpSoon) {
    DuringTheNextPage([] { Sleep(3600 * 1000); });  // a table that doesn't answer for an hour
    Forward(7, {"sms"});
    Wait(1s);
    const auto limit = std::chrono::milliseconds(kTablesAndTraceMs);
    const auto before = VirtualClock::Now();
    Stop();
    EXPECT_EQ(before + limit, VirtualClock::Now());
    EXPECT_FALSE(CPagerHdl::IsRunning());
    EXPECT_NE(nullptr, m_pPagingQ) << "what the worker uses stays";
    EXPECT_NE(nullptr, CPagerHdl::ccom);
    EXPECT_STREQ("alarms", CPagerHdl::m_dB);

    // As long as it is stuck no engine comes up beside it, but alarms are taken.
    Start();
    EXPECT_FALSE(CPagerHdl::IsRunning());
    EXPECT_EQ(1, Forward(8, {"sms"}));
    EXPECT_EQ(5, Test({"test", kSms1}));
    EXPECT_NE(nullptr, pagerHdl) << "what a test page has not made stays";
    EXPECT_EQ(2U, Rows().size());

    // It comes back and sees that it was asked to stop.
    Wait(3600s);
    EXPECT_FALSE(WorkerRuns());
    Stop();
    EXPECT_EQ(nullptr, m_pPagingQ);
    Start();
    EXPECT_TRUE(CPagerHdl::IsRunning());
    UntilWorkerEnds();
    EXPECT_THAT(Pages(), SizeIs(2));
}

TEST_F(Teardown, OfAWorkerThatWasStuckLeavesTheWayFree) {
    DuringTheNextPage([] { Sleep(3600 * 1000); });
    Forward(7, {"sms"});
    Wait(1s);
    Stop();
    Wait(3600s);
    Start();
    EXPECT_TRUE(CPagerHdl::IsRunning()) << "the new handler clears up after the old one";
}

// Also for an engine that was asked for while it was stuck: the next call tries again.
TEST_F(Teardown, OfAWorkerThatWasStuckLeavesTheWayFreeForTheNextCall) {
    DuringTheNextPage([] { Sleep(3600 * 1000); });
    Forward(7, {"sms"});
    Wait(1s);
    Stop();
    Start();
    EXPECT_FALSE(CPagerHdl::IsRunning());
    Wait(3600s);
    EXPECT_EQ(1, Forward(8, {"sms"}));
    EXPECT_TRUE(CPagerHdl::IsRunning());
    UntilWorkerEnds();
    EXPECT_THAT(Pages(), SizeIs(2)) << "with the one that was pending";
}

TEST_F(Teardown, DatabaseNameOfTheOldHandlerServesTheNext) {
    DuringTheNextPage([] { Sleep(3600 * 1000); });
    Forward(7, {"sms"});
    Wait(1s);
    Stop();
    Wait(3600s);
    const CPagerHdl next(CPagerHdl::m_dB);  // which is freed when the next comes up
    EXPECT_STREQ("alarms", CPagerHdl::m_dB);
    UntilWorkerEnds();
}

// It gets to the line after the stop has been asked for.
TEST_F(Teardown, WaitsForAPageThatComesToTheLineMeanwhile) {
    DuringTheNextPage([] { Sleep(50 * 1000); });
    modem->Plan({PagingModem::Answer::kFallsSilent});
    Forward(7, {"sms"});
    Wait(1s);
    Stop();
    EXPECT_EQ(nullptr, m_pPagingQ) << "it has ended in time";
    EXPECT_GT(VirtualClock::Now(), 1min);
    EXPECT_LT(VirtualClock::Now(), std::chrono::milliseconds(LongestPageMs()));
    EXPECT_THAT(Rows(), ElementsAre("7 sms 0 2"));
}

TEST_F(Teardown, GivesBackTheDescriptorsOfTheWorker) {
    const int up = test_support::CountDescriptors();
    Stop();
    const int down = test_support::CountDescriptors();
    EXPECT_LT(down, up);
    Start();
    Forward(7, {"sms"});
    UntilWorkerEnds();
    Stop();
    EXPECT_EQ(down, test_support::CountDescriptors());
}

TEST_F(Teardown, OfNothingDoesNothing) {
    Stop();
    Stop();
    EXPECT_EQ(nullptr, pagerFwd);
}

}  // namespace
