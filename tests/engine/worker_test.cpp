// Tests of engine/dial_worker.cpp: when a worker starts, what a pass does, and when it ends.
#include "tests/engine/engine_test.h"
#include "tests/support/process_counts.h"
#include "tests/support/without_descriptors.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class Worker : public EngineTest {
 protected:
    Worker() {
        AddPager({"anna"});
        AddPager({"sms", kSms1});
        AddAlarm(7);
        AddAlarm(8);
    }
};

TEST_F(Worker, WholePageAsTheTraceTellsIt) {
    Start();
    const std::string now = LocalTime("%x\t%X\t");
    Forward(7, {"sms"}, "OPS/042");
    UntilWorkerEnds();
    Stop();
    EXPECT_THAT(
        EngineTrace(),
        ElementsAre(
            "CPagerHdl::CPagerHdl: alarms\n",
            // the service's thread
            "AlarmFwdPager: sms\n", "CDB_PagerSettings::GetPager: sms: ",
            "CDB_PagerSettings::GetPager:Count: 1\n", "PagingAlarm: sms SRV1 OPS/042\nalarms\n",
            "InsertInPagingQueue: sms\n", "AddEntryToEventsDB: 0\n", "Check4Dial\n",
            // the worker
            "Start Check4DialThread\n", "Loop Check4DialThread\n", "pWorkingQ: sms\n",
            "Check4DialThreadLoop: sms\n", "*** START PAGING ***",
            "CDB_PagerSettings::GetPager: sms: ", "CDB_PagerSettings::GetPager:Count: 1\n",
            "Try to page for sms at " + now + ": ", "COM: COM 1", "Pagernumber: 555 (SMS1(TAP) )",
            "Timemodel: always",
            "Caused through alarm: OPS/042 (approximately logging time:01/01/70 / 00:00:07)",
            "Server: SRV1\tSeverity: Major", "IsHourSet: 2 10 1\n",
            "Message to send: OPS/Major/SRV1/pump 3 failed", "Before Dial", "After Dial",
            "Before TransMsg", "Message transfered!", "Before CloseComPort", "*** END PAGING ***",
            "PagerSendMessage successful!!\n",
            "CDB_PagerSettings::GetPager: sms: ", "CDB_PagerSettings::GetPager:Count: 1\n",
            "Check4DialThreadLoop: Sent successful: sms\n", "DeleteFromPagingQueue: sms\n",
            "UpdateEntryInEventsDB: 0\n", "Check4DialThread: sleep\n",
            "End Loop Check4DialThread\n", "End Check4DialThread\n"));
    EXPECT_THAT(Pages(), ElementsAre("555|OPS/Major/SRV1/pump 3 failed"));
}

TEST_F(Worker, EndsWithTheQueueEmptyAndTheFlagClear) {
    Start();
    Forward(7, {"sms"});
    EXPECT_TRUE(WorkerRuns());
    Wait(61s);
    EXPECT_TRUE(WorkerRuns()) << "the pause counts from the end of the page";
    Wait(30s);
    EXPECT_FALSE(WorkerRuns());
    EXPECT_EQ(1, CountInTrace("End Loop Check4DialThread\n"));
    EXPECT_EQ(1, CountInTrace("End Check4DialThread\n"));
}

TEST_F(Worker, WithNothingToDoNoneStarts) {
    Start();
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    EXPECT_FALSE(WorkerRuns());
    EXPECT_EQ(1, CountInTrace("Check4Dial: Nothing to do\n"));
    EXPECT_EQ(0, CountInTrace("Start Check4DialThread\n"));
}

TEST_F(Worker, WithNothingToDoRowsThatAreOverAreStillRemoved) {
    Start();
    AddRow(99, "anna", 0, 3);
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(Worker, PageQueuedWhileItSleepsIsSentInTheNextPass) {
    Start();
    Forward(7, {"sms"});
    Wait(40s);
    EXPECT_EQ(1U, Pages().size());
    Forward(8, {"sms"});
    Wait(20s);
    EXPECT_EQ(1U, Pages().size()) << "it sleeps";
    Wait(40s);
    EXPECT_EQ(2U, Pages().size());
    EXPECT_EQ(1, CountInTrace("Start Check4DialThread\n"));
    EXPECT_EQ(1, CountInTrace("Check4Dial: Already running\n"));
}

TEST_F(Worker, PageQueuedAfterItsEndStartsAnother) {
    Start();
    Forward(7, {"sms"});
    UntilWorkerEnds();
    Forward(8, {"sms"});
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    EXPECT_EQ(2, CountInTrace("Start Check4DialThread\n"));
    EXPECT_EQ(2, CountInTrace("End Check4DialThread\n"));
}

TEST_F(Worker, PageThatIsNotDueWaits) {
    modem->Plan({PagingModem::Answer::kBusy});
    Start();
    Forward(7, {"sms"});
    Wait(100s);
    EXPECT_EQ(1U, modem->Calls().size());
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Wait\n"));
}

TEST_F(Worker, PausesAMinuteBetweenPasses) {
    modem->Plan({PagingModem::Answer::kBusy});
    Start();
    Forward(7, {"sms"});
    Wait(4min + 30s);
    EXPECT_EQ(5, CountInTrace("Loop Check4DialThread\n"))
        << "at 0:00, and from the end of the busy call on at 1:12, 2:12, 3:12 and 4:12";
}

TEST_F(Worker, PassTakesTheQueueFromHeadToTail) {
    Start();
    {
        const NoWorker noWorker;
        for (const char* pager : {"sms", "anna", "ghost"}) {
            Queue(7, pager);
        }
    }
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    Wait(1s);
    const std::vector<std::string> trace = EngineTrace();
    const auto first = std::find(trace.begin(), trace.end(), "pWorkingQ: ghost\n");
    ASSERT_LT(3, trace.end() - first);
    EXPECT_EQ("pWorkingQ: anna\n", first[1]);
    EXPECT_EQ("pWorkingQ: sms\n", first[2]);
    EXPECT_EQ("Check4DialThreadLoop: ghost\n", first[3]);
}

// Two pages, of which the second falls due while the first is being sent.
class WorkerTime : public Worker {
 protected:
    void SendFirst(const char* pager) {
        Start();
        {
            const NoWorker noWorker;
            ForwardQEntry* second = Queue(8, "anna");
            second->queueTime += CTimeSpan(5);
            Queue(7, pager);
        }
        CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
        Wait(50s);  // the first pass is over, the second has not begun
    }
};

TEST_F(WorkerTime, GoesOnWithAPageThatIsPutOff) {
    SendFirst("anna");
    EXPECT_EQ(2U, Pages().size());
    EXPECT_EQ(0, CountInTrace("Check4DialThreadLoop: Wait\n"));
}

TEST_F(WorkerTime, GoesOnWithAPageThatFailed) {
    modem->Plan({PagingModem::Answer::kBusy});
    SendFirst("sms");
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(0, CountInTrace("Check4DialThreadLoop: Wait\n"));
}

TEST_F(WorkerTime, GoesOnWithAPageThatIsGivenUp) {
    AddPager({"once", kAlphanumeric, 0});
    SendFirst("once");
    EXPECT_EQ(2U, Pages().size());
    EXPECT_EQ(0, CountInTrace("Check4DialThreadLoop: Wait\n"));
}

TEST_F(WorkerTime, StaysAsItWasBehindAPageThatIsDone) {
    SendFirst("sms");
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Wait\n"));
}

TEST_F(WorkerTime, StaysAsItWasBehindAPageThatIsAcknowledged) {
    SetAlarmState(7, 1);
    store.BeforeEach([](const std::string& call) {
        if (call.find("AlmLogID  = 7") != std::string::npos) {
            Wait(10s);  // the table takes its time to delete the rows
        }
    });
    SendFirst("sms");
    store.BeforeEach([](const std::string&) {});
    EXPECT_THAT(Pages(), IsEmpty());
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Wait\n"));
}

TEST_F(WorkerTime, StaysAsItWasBehindAPageWhosePagerVanishes) {
    DuringTheNextPage([this] { store.Delete(kPagers, {"description", "sms"}); });
    SendFirst("sms");
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: Wait\n"));
}

TEST_F(WorkerTime, StaysAsItWasBehindAPageThatWaits) {
    AddAlarm(9);
    Start();
    {
        const NoWorker noWorker;
        Queue(8, "anna")->queueTime += CTimeSpan(5);
        Queue(9, "anna")->queueTime += CTimeSpan(3600);
        Queue(7, "sms");
    }
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    Wait(50s);
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(2, CountInTrace("Check4DialThreadLoop: Wait\n"));
}

TEST_F(Worker, StartRemovesRowsThatAreOver) {
    Start();
    AddRow(99, "anna", 0, 3);
    AddRow(99, "bert", 0, 2);
    Forward(7, {"sms"});
    EXPECT_THAT(Rows(), UnorderedElementsAre("99 bert 0 2", "7 sms 0 2"));
}

TEST_F(Worker, WhileOneRunsNoRowsAreRemoved) {
    modem->Plan({}, PagingModem::Answer::kBusy);
    Start();
    Forward(7, {"sms"});
    Wait(30s);
    AddRow(99, "anna", 0, 3);
    Forward(8, {"sms"});
    EXPECT_EQ(3U, Rows().size());
}

TEST_F(Worker, MissingAlarmCountsAsAcknowledged) {
    Start();
    {
        const NoWorker noWorker;
        Queue(7, "sms");
    }
    store.Delete(kAlarms, {"alarmlogID", "7"});
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    UntilWorkerEnds();
    EXPECT_THAT(modem->Calls(), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(1, CountInTrace("Check4DialThreadLoop: sms acked\n"));
    EXPECT_EQ(1, CountInTrace("DeleteFromPagingQueue: 7:sms\n"));
    EXPECT_EQ(1, CountInTrace("Paging acknowledged by AlMan ???\n"));
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

// What a worker needs was made with the handler. Its page fails for want of a line, and is tried
// again as any other.
TEST_F(Worker, PageAcceptedWithoutDescriptorsHasItsWorker) {
    unsetenv(test_support::kTraceSwitch);
    Start();
    {
        const test_support::WithoutDescriptors none;
        EXPECT_EQ(1, Forward(7, {"sms"}));
        EXPECT_TRUE(WorkerRuns());
        Wait(30s);
    }
    Stop();  // the port that couldn't be opened stays taken until the engine is made anew
    Start();
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size());
}

// Neither threads nor their stacks, nor descriptors, add up.
TEST_F(Worker, TwoThousandOneAfterTheOther) {
    unsetenv(test_support::kTraceSwitch);
    const int threads = test_support::CountThreads();
    Start();
    SetAlarmState(7, 1);  // so that a pass drops the page, and the worker ends
    Forward(7, {"sms"});
    UntilWorkerEnds();
    ASSERT_TRUE(test_support::ComesDownToThreads(threads));
    const int descriptors = test_support::CountDescriptors();
    for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(1, Forward(7, {"sms"}));
        ASSERT_TRUE(WorkerRuns());
        UntilWorkerEnds();
        ASSERT_TRUE(test_support::ComesDownToThreads(threads)) << "after " << i;
    }
    EXPECT_EQ(descriptors, test_support::CountDescriptors());
    EXPECT_THAT(modem->Calls(), IsEmpty());
}

}  // namespace
