// Tests of engine/queue_rebuild.cpp: what a start makes of the rows that the last run has left.
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StartUp : public EngineTest {
 protected:
    StartUp() {
        AddPager({"anna"});
        AddPager({"bert"});
        AddAlarm(7);
        AddAlarm(8);
    }
};

// The pass alone, without the worker that it starts.
class StartUpPass : public StartUp {
 protected:
    NoWorker noWorker;
};

TEST_F(StartUp, EmptyTableQueuesNothingAndStartsNoWorker) {
    Start();
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_FALSE(WorkerRuns());
    EXPECT_FALSE(CPagerHdl::m_pPagingQIsInitialized);
    EXPECT_EQ(0, CountInTrace("Check4Dial\n"));
}

TEST_F(StartUpPass, PendingRowIsQueuedAgain) {
    AddRow(7, "anna", 3);
    Start();
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna"));
    const ForwardQEntry* entry = m_pPagingQ->FindEntryByAlmLogID(7);
    EXPECT_EQ(3U, entry->retries);
    EXPECT_EQ(kForwardBeingPaged, entry->state);
    EXPECT_EQ("OPS/1", entry->almGroup);
    EXPECT_EQ("SRV1", entry->serverN);
    EXPECT_FALSE(entry->postponed);
    EXPECT_TRUE(entry->queueTime <= CTime::GetCurrentTime()) << "due at once";
    EXPECT_THAT(Rows(), ElementsAre("7 anna 3 2"));
    EXPECT_TRUE(CPagerHdl::m_pPagingQIsInitialized);
    EXPECT_EQ(nullptr, CPagerHdl::m_pPagerEventsList);
}

TEST_F(StartUpPass, SucceedsWithRowsAndWithout) {
    Start();
    EXPECT_TRUE(CPagerHdl::InitializePagerQueue());
    AddRow(7, "anna");
    EXPECT_TRUE(CPagerHdl::InitializePagerQueue());
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna"));
}

TEST_F(StartUpPass, RowsAreQueuedInTheirOrder) {
    AddRow(7, "anna");
    AddRow(7, "bert");
    AddRow(8, "anna");
    Start();
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna", "7 bert", "8 anna"));
    EXPECT_THAT(Rows(), ElementsAre("8 anna 0 2", "7 bert 0 2", "7 anna 0 2"))
        << "filed last row first";
}

struct RowCase {
    const char* situation;
    int alarm;
    const char* pager;
    int alarmState;
    bool isQueued;
    bool staysInTable;
};

TEST_F(StartUpPass, EachRowGoesItsWay) {
    const RowCase kCases[] = {
        {"still being paged", 7, "anna", 2, true, true},
        {"acknowledged", 7, "anna", 1, false, false},
        {"off limit", 7, "anna", 3, false, false},
        {"done", 7, "anna", 4, false, false},
        {"not yet paged", 7, "anna", 0, false, false},
        {"the pager is gone", 7, "carl", 2, false, true},
        {"the pager is gone, the alarm acknowledged", 7, "carl", 1, false, true},
        {"the alarm is gone", 99, "anna", 2, false, true},
        {"both are gone", 99, "carl", 2, false, true},
    };
    for (const RowCase& c : kCases) {
        store.Delete(kEvents, {"ServerN", "SRV1"});
        AddRow(c.alarm, c.pager, 1);
        SetAlarmState(7, c.alarmState);
        Start();
        EXPECT_EQ(c.isQueued ? 1 : 0, m_pPagingQ->GetCount()) << c.situation;
        EXPECT_EQ(c.staysInTable ? 1U : 0U, Rows().size()) << c.situation;
        EXPECT_TRUE(CPagerHdl::m_pPagingQIsInitialized) << c.situation;
        Stop();
    }
}

TEST_F(StartUpPass, OneRowDoesNotKeepTheOthersBack) {
    AddRow(99, "anna");
    AddRow(7, "carl");
    AddRow(8, "bert");
    SetAlarmState(7, 1);
    AddRow(7, "anna");
    AddRow(8, "anna");
    Start();
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("8 bert", "8 anna"));
    EXPECT_THAT(Rows(), ElementsAre("99 anna 0 2", "7 carl 0 2", "8 anna 0 2", "8 bert 0 2"));
}

TEST_F(StartUpPass, AlarmThatVanishesMeanwhileIsSkipped) {
    AddRow(7, "anna");
    AddRow(8, "bert");
    // The pager's look-up stands between the two of the alarm.
    store.Before(test_support::Call::kGetAllEntriesByCondition, 3, [this] {
        store.Delete(kAlarms, {"alarmlogID", "7"});
    });
    Start();
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("8 bert"));
    EXPECT_THAT(Rows(), ElementsAre("7 anna 0 2", "8 bert 0 2"));
}

TEST_F(StartUpPass, InactiveRowsAreRemovedFirst) {
    for (const int state : {0, 1, 3, 4}) {
        AddRow(7, "anna", 0, state);
    }
    Start();
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
}

TEST_F(StartUpPass, TheSameRowTwiceIsTwoEntriesWithOneRow) {
    AddRow(7, "anna", 1);
    AddRow(7, "anna", 2);
    Start();
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna", "7 anna"));
    EXPECT_THAT(Rows(), ElementsAre("7 anna 1 2"));
}

TEST_F(StartUpPass, CallsTheTablesInThisOrder) {
    AddRow(7, "anna", 3);
    Start();
    EXPECT_THAT(
        RowCalls(),
        ElementsAre(
            R"(GetAllEntriesByCondition(AlarmFwd_COMProperties, Description = "COM 1") -> 1)",
            "SQLConditionDelete(AlarmFwd_PagerEvents, "
            "WHERE AlarmFwd_PagerEvents.PagerState <> 2, 'y') -> 0",
            R"(GetAllEntriesByCondition(AlarmFwd_PagerEvents, PagerState = "2") -> 1)",
            R"(GetAllEntriesByCondition(AlarmLog, alarmlogID = "7") -> 1)",
            R"(GetAllEntriesByCondition(AlarmFwd_PagerSetting, description = "anna") -> 1)",
            R"(GetAllEntriesByCondition(AlarmLog, alarmlogID = "7") -> 1)",
            R"(GetAllEntriesByCondition(AlarmFwd_PagerEvents, AlmLogID = "7") -> 1)",
            R"(SQLConditionDelete(AlarmFwd_PagerEvents, )"
            R"(WHERE AlmGroup = "OPS/1" AND AlmLogID = 7 AND PagerDescr = "anna", 'y') -> 1)",
            R"(Set(AlarmFwd_PagerEvents, {AlmLogID = 7, AlmGroup = "OPS/1", PagerDescr = "anna", )"
            R"(PagerState = 2, PagerRetries = 3, Severity = 2, ServerN = "SRV1"}, )"
            R"('y', 'y', 'y'))"));
}

TEST_F(StartUpPass, TracesItsSteps) {
    AddRow(7, "anna");
    Start();
    EXPECT_THAT(
        EngineTrace(),
        ElementsAre("CPagerHdl::CPagerHdl: alarms\n", "CDB_PagerSettings::GetPager: anna: ",
                    "CDB_PagerSettings::GetPager:Count: 1\n", "InsertInPagingQueue: anna\n",
                    "AddEntryToEventsDB: ROW\n", "Check4Dial\n", "Check4Dial: Already running\n"));
}

TEST_F(StartUp, WorkerStartsByItself) {
    AddRow(7, "anna");
    Start();
    EXPECT_TRUE(WorkerRuns());
    Wait(30s);
    EXPECT_EQ(1U, Pages().size());
}

// Two failures are one counted attempt; the count goes on where it was, the uncounted first failure
// has its turn again.
TEST_F(StartUp, AttemptsAreCountedOnAfterARestart) {
    AddPager({"dora", kAlphanumeric, 1, 45});
    modem->Plan({}, PagingModem::Answer::kBusy);
    Start();
    Forward(7, {"dora"});
    Wait(10min);
    EXPECT_THAT(Rows(), ElementsAre("7 dora 1 2"));
    Stop();
    Wait(1min);
    Start();
    UntilWorkerEnds();
    EXPECT_THAT(CallMinutes(), ElementsAre(0, 5, 11, 16));
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
}

TEST_F(StartUp, AlarmAcknowledgedWhileTheEngineWasDownIsNotPaged) {
    modem->Plan({}, PagingModem::Answer::kBusy);
    Start();
    Forward(7, {"anna", "bert"});
    Wait(1min);
    Stop();
    SetAlarmState(7, 1);
    Start();
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_FALSE(WorkerRuns());
}

}  // namespace
