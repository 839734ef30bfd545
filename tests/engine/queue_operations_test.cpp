// Tests of making, queueing, retiring, acknowledging and asking, entry by entry and without a
// worker: engine/queue_entries.cpp, queueing.cpp, retiring.cpp, acknowledgement.cpp.
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// CTime can be compared by > and <= only.
bool IsDueAt(const ForwardQEntry* entry, const CTime& time) {
    return entry->queueTime <= time && time <= entry->queueTime;
}

class QueueOperations : public EngineTest {
 protected:
    QueueOperations() {
        for (const int alarm : {7, 8}) {
            AddAlarm(alarm);
        }
        Start();
    }

    NoWorker noWorker;
};

// --- Making entries

TEST_F(QueueOperations, EntryIsMadeFromALiveAlarm) {
    AlarmLogEntry* alarm = CPagerHdl::m_pAlarmLogSet->FindAlarmLogEntry(7);
    ForwardQEntry* entry = CPagerHdl::CreateQEntry(nullptr, "anna", 3, kForwardOffLimit, alarm,
                                                   "OPS/1", kSeverityCritical, "SRV1");
    EXPECT_EQ(nullptr, entry->pagerFwdEvent);
    EXPECT_EQ("anna", entry->pagerDescr);
    EXPECT_TRUE(IsDueAt(entry, CTime::GetCurrentTime()));
    EXPECT_EQ(kForwardOffLimit, entry->state);
    EXPECT_EQ(3U, entry->retries);
    EXPECT_EQ(alarm, entry->alarmLogEntry);
    EXPECT_EQ("OPS/1", entry->almGroup);
    EXPECT_EQ("SRV1", entry->serverN);
    EXPECT_EQ(0U, entry->serverId);
    EXPECT_FALSE(entry->postponed);
    CPagerHdl::FreeQEntry(entry);
}

TEST_F(QueueOperations, EntryFindsItsAlarm) {
    ForwardQEntry* entry = MakeEntry(7, "anna");
    ASSERT_NE(nullptr, entry);
    EXPECT_EQ(7, entry->alarmLogEntry->alarmLogId);
    EXPECT_STREQ("pump 3 failed", entry->alarmLogEntry->details);
    EXPECT_EQ(2, entry->alarmLogEntry->severity) << "the alarm's own, not the one given";
    CPagerHdl::FreeQEntry(entry);
}

TEST_F(QueueOperations, WithoutItsAlarmThereIsNoEntry) {
    EXPECT_EQ(nullptr, MakeEntry(99, "anna"));
}

TEST_F(QueueOperations, EntryOfARowKeepsTheRow) {
    AddRow(7, "anna", 3, 2, "OPS/9");
    PagerFwdEvent* row = CPagerHdl::pagerFwdEvents->FindFwdEvent(7, "OPS/9", "anna");
    ForwardQEntry* entry = CPagerHdl::CreateQEntry(row);
    EXPECT_EQ(row, entry->pagerFwdEvent);
    EXPECT_EQ("anna", entry->pagerDescr);
    EXPECT_EQ(3U, entry->retries);
    EXPECT_EQ(kForwardBeingPaged, entry->state);
    EXPECT_EQ(7, entry->alarmLogEntry->alarmLogId);
    EXPECT_EQ("OPS/9", entry->almGroup);
    EXPECT_EQ("SRV1", entry->serverN);
    CPagerHdl::FreeQEntry(entry);
}

TEST_F(QueueOperations, EntriesHaveTextsOfTheirOwn) {
    const CString pager("anna");
    AlarmLogEntry* alarm = CPagerHdl::m_pAlarmLogSet->FindAlarmLogEntry(7);
    ForwardQEntry* entry = CPagerHdl::CreateQEntry(nullptr, pager, 0, kForwardBeingPaged, alarm,
                                                   "OPS/1", kSeverityMajor, "SRV1");
    EXPECT_NE(static_cast<const char*>(pager), static_cast<const char*>(entry->pagerDescr));
    CPagerHdl::FreeQEntry(entry);
}

TEST_F(QueueOperations, FreeingNothingIsAllowed) {
    CPagerHdl::FreeQEntry(nullptr);
}

// --- Queueing

TEST_F(QueueOperations, AlarmIsQueuedAtTheHeadWithItsRow) {
    EXPECT_TRUE(CPagerHdl::PagingAlarm("anna", "SRV1", "OPS/1", 7, 0));
    EXPECT_TRUE(CPagerHdl::PagingAlarm("bert", "SRV2", "OPS/2", 8, 3));
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("8 bert", "7 anna"));
    EXPECT_THAT(Rows(), ElementsAre("7 anna 0 2", "8 bert 3 2"));
    EXPECT_THAT(
        EngineTrace(),
        ElementsAre("CPagerHdl::CPagerHdl: alarms\n", "PagingAlarm: anna SRV1 OPS/1\nalarms\n",
                    "InsertInPagingQueue: anna\n", "AddEntryToEventsDB: 0\n", "Check4Dial\n",
                    "Check4Dial: Already running\n", "PagingAlarm: bert SRV2 OPS/2\nalarms\n",
                    "InsertInPagingQueue: bert\n", "AddEntryToEventsDB: 0\n", "Check4Dial\n",
                    "Check4Dial: Already running\n"));
}

TEST_F(QueueOperations, AlarmWithoutARowIsRefused) {
    EXPECT_FALSE(CPagerHdl::PagingAlarm("anna", "SRV1", "OPS/1", 99, 0));
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(1, CountInTrace("PagingAlarm: No AlarmLog Entry\n"));
    EXPECT_EQ(0, CountInTrace("Check4Dial\n"));
}

TEST_F(QueueOperations, AlarmWithTwoRowsIsRefused) {
    AddAlarm(7);
    EXPECT_FALSE(CPagerHdl::PagingAlarm("anna", "SRV1", "OPS/1", 7, 0));
}

TEST_F(QueueOperations, NoEntryIsRefused) {
    EXPECT_FALSE(CPagerHdl::PagingAlarm(nullptr));
}

TEST_F(QueueOperations, EntryIsQueuedAsItIs) {
    EXPECT_TRUE(CPagerHdl::PagingAlarm(MakeEntry(7, "anna", 4)));
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna"));
    EXPECT_THAT(Rows(), ElementsAre("7 anna 4 2"));
    EXPECT_EQ(1, CountInTrace("Check4Dial\n"));
}

// --- Putting off

TEST_F(QueueOperations, ReinsertedIsDueSoMuchAfterItsOldDueTime) {
    ForwardQEntry* entry = Queue(7, "anna");
    entry->queueTime = CTime(2001, 1, 8, 10, 0, 0);
    pagersim::VirtualClock::Set(978948000 + 30 * 60);  // it is half past ten
    EXPECT_TRUE(CPagerHdl::ReinsertInPagingQueue(entry, 45));
    EXPECT_TRUE(IsDueAt(entry, CTime(2001, 1, 8, 10, 45, 0)));
    EXPECT_EQ(1, CountInTrace("ReinsertInPagingQueue: anna\n"));
}

TEST_F(QueueOperations, ReinsertedStandsInTimeOrder) {
    ForwardQEntry* anna = Queue(7, "anna");
    Queue(8, "bert");
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("8 bert", "7 anna"));
    EXPECT_TRUE(CPagerHdl::ReinsertInPagingQueue(anna, -1));
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna", "8 bert"));
    EXPECT_TRUE(CPagerHdl::ReinsertInPagingQueue(anna, 2));
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("8 bert", "7 anna"));
}

TEST_F(QueueOperations, ReinsertedRewritesItsRow) {
    ForwardQEntry* entry = Queue(7, "anna");
    entry->retries = 2;
    CPagerHdl::ReinsertInPagingQueue(entry, 45);
    EXPECT_THAT(Rows(), ElementsAre("7 anna 2 2"));
}

TEST_F(QueueOperations, ReinsertedNeedNotHaveBeenInTheQueue) {
    ForwardQEntry* entry = MakeEntry(7, "anna");
    EXPECT_TRUE(CPagerHdl::ReinsertInPagingQueue(entry, 5));
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna"));
    EXPECT_THAT(Rows(), IsEmpty()) << "a row that isn't there is not made again";
}

// --- Retiring

TEST_F(QueueOperations, GivenUpIsOffLimit) {
    ForwardQEntry* entry = Queue(7, "anna", 6);
    EXPECT_TRUE(CPagerHdl::DeleteFromPagingQueue(entry));
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), ElementsAre("7 anna"));
    EXPECT_EQ(kForwardOffLimit, entry->state);
    EXPECT_THAT(Rows(), ElementsAre("7 anna 6 3"));
    EXPECT_EQ("3", AlarmState(7));
    EXPECT_EQ(1, CountInTrace("DeleteFromPagingQueue: anna\n"));
}

TEST_F(QueueOperations, DoneStaysDone) {
    ForwardQEntry* entry = Queue(7, "anna");
    entry->state = kForwardDone;
    EXPECT_TRUE(CPagerHdl::DeleteFromPagingQueue(entry));
    EXPECT_EQ(kForwardDone, entry->state);
    EXPECT_THAT(Rows(), ElementsAre("7 anna 0 4"));
    EXPECT_EQ("4", AlarmState(7));
}

TEST_F(QueueOperations, RetiringWhatIsNotQueuedFreesIt) {
    EXPECT_FALSE(CPagerHdl::DeleteFromPagingQueue(MakeEntry(7, "anna")));
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), IsEmpty());
}

TEST_F(QueueOperations, OffLimitKeepsDoneAndTurnsEveryOtherState) {
    for (const int state : {0, 1, 2, 3, 4, 5}) {
        ForwardQEntry* entry = MakeEntry(7, "anna");
        entry->state = static_cast<ForwardState>(state);
        EXPECT_TRUE(CPagerHdl::InsertInOffLimitQueue(entry));
        EXPECT_EQ(state == 4 ? 4 : 3, entry->state) << "from state " << state;
    }
}

TEST_F(QueueOperations, OffLimitStandsAtTheHead) {
    CPagerHdl::InsertInOffLimitQueue(MakeEntry(7, "anna"));
    CPagerHdl::InsertInOffLimitQueue(MakeEntry(8, "bert"), "ignored", "too");
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), ElementsAre("8 bert", "7 anna"));
}

TEST_F(QueueOperations, OffLimitOrDiscardNeverDiscards) {
    CPagerHdl::OffLimitOrDiscardEntry(MakeEntry(7, "anna"));
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), ElementsAre("7 anna"));
}

TEST_F(QueueOperations, OffLimitEntryIsDeletedWithItsRow) {
    Queue(7, "anna");
    Queue(7, "bert");
    CPagerHdl::AckAllPagingAlarms();
    EXPECT_TRUE(CPagerHdl::DeleteFromOffLimitQueue(7));
    EXPECT_EQ(1, m_pOffLimitQ->GetCount());
    EXPECT_EQ(1U, Rows().size());
    EXPECT_TRUE(CPagerHdl::DeleteFromOffLimitQueue(7));
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_FALSE(CPagerHdl::DeleteFromOffLimitQueue(7));
}

// --- Acknowledging

TEST_F(QueueOperations, AcknowledgedAlarmLeavesQueueAndTable) {
    Queue(7, "anna");
    Queue(8, "anna");
    CPagerHdl::AckPagingAlarm(7);
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("8 anna"));
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), IsEmpty());
    EXPECT_THAT(Rows(), ElementsAre("8 anna 0 2"));
    EXPECT_EQ(1, CountInTrace("DeleteFromPagingQueue: 7:anna\n"));
}

TEST_F(QueueOperations, AcknowledgementTakesOneEntryButAllRows) {
    Queue(7, "anna");
    Queue(7, "bert");
    CPagerHdl::AckPagingAlarm(7);
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna")) << "the first from the head is gone";
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(QueueOperations, AcknowledgementReachesAnOffLimitEntry) {
    CPagerHdl::DeleteFromPagingQueue(Queue(7, "anna"));
    EXPECT_TRUE(CPagerHdl::DeleteFromPagingQueue(7L));
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(QueueOperations, AcknowledgementOfAQueuedAlarmLeavesItsOffLimitEntry) {
    CPagerHdl::DeleteFromPagingQueue(Queue(7, "anna"));
    Queue(7, "bert");
    EXPECT_TRUE(CPagerHdl::DeleteFromPagingQueue(7L));
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), ElementsAre("7 anna"));
}

TEST_F(QueueOperations, AcknowledgementOfAnUnknownAlarmStillDeletesItsRows) {
    AddRow(7, "anna");
    EXPECT_TRUE(CPagerHdl::DeleteFromPagingQueue(7L));
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(QueueOperations, AcknowledgingAllMovesEverythingOffLimit) {
    Queue(7, "anna", 1);
    Queue(8, "bert");
    CPagerHdl::AckAllPagingAlarms();
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), ElementsAre("7 anna", "8 bert"));
    EXPECT_THAT(Rows(), ElementsAre("8 bert 0 3", "7 anna 1 3"));
}

// Acknowledged entries are freed at once while nobody is looking at any.
TEST_F(QueueOperations, AcknowledgedEntryIsFreedAtOnceWithoutAWorker) {
    Queue(7, "anna");
    CPagerHdl::AckPagingAlarm(7);
    EXPECT_EQ(0, m_pPagingQ->GetCount());  // the leak check says the rest
}

// --- Asking

TEST_F(QueueOperations, UnknownAlarmIs0AndUnknownServer1) {
    EXPECT_EQ(0, CPagerHdl::GetPagingState(99));
    EXPECT_EQ(1, CPagerHdl::GetServerState(99));
}

TEST_F(QueueOperations, PendingAlarmIs2) {
    Queue(7, "anna");
    EXPECT_EQ(2, CPagerHdl::GetPagingState(7));
    EXPECT_EQ(2, CPagerHdl::GetPagingState(7)) << "asking changes nothing";
    EXPECT_EQ(0, CPagerHdl::GetPagingState(8));
}

TEST_F(QueueOperations, OffLimitAlarmIsTold3Once) {
    CPagerHdl::DeleteFromPagingQueue(Queue(7, "anna"));
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7));
}

TEST_F(QueueOperations, PendingGoesBeforeOffLimit) {
    CPagerHdl::DeleteFromPagingQueue(Queue(7, "anna"));
    Queue(7, "bert");
    EXPECT_EQ(2, CPagerHdl::GetPagingState(7));
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), ElementsAre("7 anna"));
}

TEST_F(QueueOperations, ServerStateComesFromItsEntries) {
    ForwardQEntry* entry = Queue(7, "anna");
    entry->serverId = 5;
    EXPECT_EQ(2, CPagerHdl::GetServerState(5));
    CPagerHdl::DeleteFromPagingQueue(entry);
    EXPECT_EQ(3, CPagerHdl::GetServerState(5));
    EXPECT_EQ(3, CPagerHdl::GetServerState(5)) << "asking for a server removes nothing";
}

TEST_F(QueueOperations, KeepsHandingThePagerToTheEntryThatIsAskedFor) {
    Queue(7, "anna");
    Queue(7, "bert");
    EXPECT_TRUE(CPagerHdl::IsInPagingQueue(7, "OPS/1", "carl"));
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 carl", "7 anna"));
}

TEST_F(QueueOperations, AskingForAnotherAlarmOrGroupChangesNothing) {
    Queue(7, "anna");
    EXPECT_FALSE(CPagerHdl::IsInPagingQueue(8, "OPS/1", "carl"));
    EXPECT_FALSE(CPagerHdl::IsInPagingQueue(7, "OPS/2", "carl"));
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna"));
}

TEST_F(QueueOperations, FindsPagersByTheirDescription) {
    AddPager({"anna", kSms1});
    Pager* pager = CPagerHdl::GetPager("anna");
    ASSERT_NE(nullptr, pager);
    EXPECT_EQ(kSms1, pager->pagerType);
    CDB_PagerSettings::FreePager(pager);
    EXPECT_EQ(nullptr, CPagerHdl::GetPager("bert"));
}

TEST_F(QueueOperations, TwoOperationsHaveNoEffect) {
    ForwardQEntry* entry = Queue(7, "anna");
    CPagerHdl::SmsAcknowledge(entry);
    CPagerHdl::RemoveEventsDBEntries();
    EXPECT_THAT(EntriesIn(m_pPagingQ), ElementsAre("7 anna"));
    EXPECT_THAT(Rows(), ElementsAre("7 anna 0 2"));
}

}  // namespace
