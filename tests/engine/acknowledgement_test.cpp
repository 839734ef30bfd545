// Tests of acknowledgements that meet the worker: engine/dial_worker.cpp, retiring.cpp and
// entry_ledger.cpp. That entries are freed, and once, is told by the address and leak checks.
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

using Answer = PagingModem::Answer;

class Acknowledgement : public EngineTest {
 protected:
    Acknowledgement() {
        AddPager({"anna", kAlphanumeric, 5, 45});
        AddPager({"bert", kAlphanumeric, 5, 45});
        AddPager({"once", kAlphanumeric, 0, 45});
        AddPager({"sms", kSms1, 5, 45});
        AddAlarm(7);
        Start();
    }
};

// --- In the alarm log

TEST_F(Acknowledgement, InTheAlarmLogStopsThePagesOfEveryPager) {
    Forward(7, {"anna", "bert"});
    Wait(2min);
    EXPECT_EQ(2U, Pages().size());
    SetAlarmState(7, 1);
    Wait(2min);
    EXPECT_FALSE(WorkerRuns());
    EXPECT_EQ(2U, Pages().size());
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: anna acked\n"));
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: bert acked\n"));
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(Acknowledgement, StopsPagesThatAreNotYetDue) {
    Forward(7, {"anna"});
    Wait(1min);
    SetAlarmState(7, 1);
    Wait(2min);
    EXPECT_FALSE(WorkerRuns()) << "44 minutes before the next page";
}

TEST_F(Acknowledgement, OtherStatesOfTheAlarmDoNotStopItsPages) {
    for (const int state : {0, 3, 4}) {
        SetAlarmState(7, state);
        Forward(7, {"sms"});
        UntilWorkerEnds();
    }
    EXPECT_EQ(3U, Pages().size());
}

TEST_F(Acknowledgement, LeavesTheOtherAlarmsAlone) {
    AddAlarm(8);
    Forward(7, {"anna"});
    Forward(8, {"anna"});
    Wait(3min);
    SetAlarmState(7, 1);
    Wait(2min);
    EXPECT_TRUE(WorkerRuns());
    EXPECT_THAT(Rows(), ElementsAre("8 anna 1 2"));
}

// --- Of the entries

TEST_F(Acknowledgement, OfOneOfTwoPagersLeavesTheOtherBeingPaged) {
    Forward(7, {"bert"});
    Wait(90s);
    Forward(7, {"anna"});  // at the head until it is sent
    CPagerHdl::AckPagingAlarm(7);
    EXPECT_THAT(Rows(), IsEmpty()) << "the rows of both are gone";
    Wait(50min);
    EXPECT_THAT(Pages(), SizeIs(2)) << "bert's, at once and after 45 minutes";
    EXPECT_EQ(1, CountInTrace("DeleteFromPagingQueue: 7:anna\n"));
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(Acknowledgement, OfAPageThatIsOverForgetsIt) {
    for (const char* pager : {"sms", "once"}) {  // done, and given up
        Forward(7, {pager});
        UntilWorkerEnds();
        EXPECT_EQ(1, m_pOffLimitQ->GetCount()) << pager;
        EXPECT_EQ(1U, Rows().size()) << pager;
        CPagerHdl::AckPagingAlarm(7);
        EXPECT_EQ(0, m_pOffLimitQ->GetCount()) << pager;
        EXPECT_THAT(Rows(), IsEmpty()) << pager;
    }
}

// --- While a page is being sent

TEST_F(Acknowledgement, DuringAnSmsPageThatSucceeds) {
    DuringTheNextPage([] { CPagerHdl::AckPagingAlarm(7); });
    Forward(7, {"sms"});
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size());
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7)) << "in neither queue";
}

TEST_F(Acknowledgement, DuringAOneWayPageThatSucceeds) {
    DuringTheNextPage([this] {
        CPagerHdl::AckPagingAlarm(7);
        SetAlarmState(7, 1);
    });
    Forward(7, {"anna"});
    Wait(30s);
    EXPECT_EQ(2, CPagerHdl::GetPagingState(7)) << "the worker has put it back";
    EXPECT_THAT(Rows(), IsEmpty()) << "but its row is not made again";
    EXPECT_EQ("1", AlarmState(7)) << "nor is the alarm's state touched";
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(Acknowledgement, DuringALastOneWayPage) {
    DuringTheNextPage([] { CPagerHdl::AckPagingAlarm(7); });
    Forward(7, {"once"});
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Retries exceeded: once\n"));
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(Acknowledgement, DuringAPageThatFails) {
    modem->Plan({Answer::kBusy});
    DuringTheNextPage([this] {
        CPagerHdl::AckPagingAlarm(7);
        SetAlarmState(7, 1);
    });
    Forward(7, {"sms"});
    UntilWorkerEnds();
    EXPECT_EQ(1U, modem->Calls().size());
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

// Without a state in the alarm log nothing tells the next pass.
TEST_F(Acknowledgement, OfTheEntryOnlyDoesNotStopAPageThatIsPutBack) {
    modem->Plan({Answer::kBusy});
    DuringTheNextPage([] { CPagerHdl::AckPagingAlarm(7); });
    Forward(7, {"sms"});
    UntilWorkerEnds();
    EXPECT_EQ(2U, modem->Calls().size());
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(Acknowledgement, DuringThePageOfAnotherPagerOfTheAlarm) {
    {
        const NoWorker noWorker;
        Queue(7, "sms");
        Queue(7, "anna");
    }
    // anna stands at the head and is being sent; it is the one that is taken out.
    DuringTheNextPage([this] {
        CPagerHdl::AckPagingAlarm(7);
        SetAlarmState(7, 1);
    });
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: sms acked\n"));
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(Acknowledgement, FromAnotherThreadInTheMiddleOfTheCall) {
    Forward(7, {"sms"});
    Wait(10s);  // the modem has dialled at 8 s, the service answers at 12 s
    EXPECT_EQ(1U, modem->Calls().size());
    EXPECT_THAT(Pages(), IsEmpty());
    CPagerHdl::AckPagingAlarm(7);
    EXPECT_EQ(10, pagersim::VirtualClock::Now() / 1s) << "it didn't wait for the page";
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size()) << "a page in progress is finished";
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

// --- Of all alarms

TEST_F(Acknowledgement, OfAllDuringAnSmsPage) {
    DuringTheNextPage([] { CPagerHdl::AckAllPagingAlarms(); });
    Forward(7, {"sms"});
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7)) << "it went off limit, and was not freed there";
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(Acknowledgement, OfAllDuringAOneWayPagePutsTheEntryIntoBothQueues) {
    DuringTheNextPage([] { CPagerHdl::AckAllPagingAlarms(); });
    Forward(7, {"anna"});
    Wait(30s);
    EXPECT_EQ(2, CPagerHdl::GetPagingState(7));
    Stop();  // frees it once
}

TEST_F(Acknowledgement, StateAskedForWhileThePageIsPutBack) {
    DuringTheNextPage([] {
        CPagerHdl::AckAllPagingAlarms();
        EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
        EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
    });
    Forward(7, {"anna"});
    Wait(30s);
    EXPECT_EQ(2, CPagerHdl::GetPagingState(7));
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(Acknowledgement, OfAllWhileTheWorkerSleeps) {
    AddAlarm(8);
    Forward(7, {"anna"});
    Forward(8, {"bert"});
    Wait(130s);  // asleep by then, whether the first pass had both pages or the second had one
    CPagerHdl::AckAllPagingAlarms();
    UntilWorkerEnds();
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), UnorderedElementsAre("7 anna", "8 bert"));
    EXPECT_THAT(Rows(), UnorderedElementsAre("7 anna 1 3", "8 bert 1 3"));
}

}  // namespace
