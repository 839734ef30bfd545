// Tests of engine/events_table.cpp: which table calls keep a row in step with its entry, and in
// which order.
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kFind =
    R"(GetAllEntriesByCondition(AlarmFwd_PagerEvents, AlmLogID = "7") -> )";
constexpr const char* kDelete =
    R"(SQLConditionDelete(AlarmFwd_PagerEvents, )"
    R"(WHERE AlmGroup = "OPS/1" AND AlmLogID = 7 AND PagerDescr = "anna", 'y') -> 1)";

std::string Found(int rows) {
    return kFind + std::to_string(rows);
}

std::string Inserted(int retries, int state) {
    return R"(Set(AlarmFwd_PagerEvents, {AlmLogID = 7, AlmGroup = "OPS/1", PagerDescr = "anna", )"
           "PagerState = " +
           std::to_string(state) + ", PagerRetries = " + std::to_string(retries) +
           R"(, Severity = 2, ServerN = "SRV1"}, 'y', 'y', 'y'))";
}

// The fold into the alarm log, of the one row there is.
std::vector<std::string> Folded(int state) {
    return {Found(1), "Lock(AlarmLog, 400, 300)",
            "SQLConditionSet(AlarmLog, WHERE alarmlogID = 7, {pagerstate = " +
                std::to_string(state) + "}, 'y', 'n') -> 1",
            "Write(AlarmLog, 0) -> 1", "Unlock(AlarmLog)"};
}

class EventsTable : public EngineTest {
 protected:
    EventsTable() {
        AddAlarm(7);
        Start();
        entry = MakeEntry(7, "anna");
        store.ForgetCalls();
    }
    ~EventsTable() override { CPagerHdl::FreeQEntry(entry); }

    NoWorker noWorker;
    ForwardQEntry* entry;
};

TEST_F(EventsTable, NewEntryGetsARow) {
    EXPECT_TRUE(CPagerHdl::AddEntryToEventsDB(entry));
    EXPECT_THAT(RowCalls(), ElementsAre(Found(0), Inserted(0, 2)));
    EXPECT_EQ(nullptr, entry->pagerFwdEvent);
    EXPECT_EQ(1, CountInTrace("AddEntryToEventsDB: 0\n"));
}

TEST_F(EventsTable, EveryTableIsOpenedAndClosedForEachOperation) {
    CPagerHdl::AddEntryToEventsDB(entry);
    EXPECT_THAT(store.CallsWith("pen("),
                ElementsAre("Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)",
                            "Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)"));
    EXPECT_EQ(2U, store.CallsWith("Close(").size());
}

TEST_F(EventsTable, RowThatIsThereIsReplaced) {
    AddRow(7, "anna", 1);
    EXPECT_TRUE(CPagerHdl::AddEntryToEventsDB(entry));
    EXPECT_THAT(RowCalls(), ElementsAre(Found(1), kDelete, Inserted(0, 2)));
    ASSERT_NE(nullptr, entry->pagerFwdEvent) << "the old row stays with the entry";
    EXPECT_EQ(1U, entry->pagerFwdEvent->pagerRetries);
}

TEST_F(EventsTable, SourceRowIsReleasedForTheOneThatIsFound) {
    AddRow(7, "anna", 1);
    CPagerHdl::AddEntryToEventsDB(entry);
    entry->retries = 2;
    CPagerHdl::AddEntryToEventsDB(entry);
    ASSERT_NE(nullptr, entry->pagerFwdEvent);
    EXPECT_EQ(0U, entry->pagerFwdEvent->pagerRetries);
    EXPECT_EQ(1, CountInTrace("AddEntryToEventsDB: 0\n"));
    EXPECT_EQ(1, CountInTrace("AddEntryToEventsDB: ROW\n"));
}

TEST_F(EventsTable, SourceRowIsForgottenWhenTheTableHasNone) {
    AddRow(7, "anna");
    CPagerHdl::AddEntryToEventsDB(entry);
    store.Delete(kEvents, {"AlmLogID", "7"});
    CPagerHdl::AddEntryToEventsDB(entry);
    EXPECT_EQ(nullptr, entry->pagerFwdEvent);
}

TEST_F(EventsTable, RowOfAnotherPagerOrGroupIsNotIts) {
    AddRow(7, "bert");
    AddRow(7, "anna", 0, 2, "OPS/2");
    CPagerHdl::AddEntryToEventsDB(entry);
    EXPECT_THAT(RowCalls(), ElementsAre(Found(2), Inserted(0, 2)));
    EXPECT_THAT(Rows(), ElementsAre("7 bert 0 2", "7 anna 0 2", "7 anna 0 2"));
}

TEST_F(EventsTable, UpdateReplacesTheRowAndFoldsTheStates) {
    AddRow(7, "anna");
    entry->retries = 4;
    entry->state = kForwardOffLimit;
    EXPECT_TRUE(CPagerHdl::UpdateEntryInEventsDB(entry));
    EXPECT_EQ((std::vector<std::string>{Found(1), kDelete, Inserted(4, 3)} + Folded(3)),
              RowCalls());
    EXPECT_EQ("3", AlarmState(7));
    EXPECT_EQ(1, CountInTrace("UpdateEntryInEventsDB: 0\n"));
}

TEST_F(EventsTable, UpdateOfADeletedRowWritesNothing) {
    SetAlarmState(7, 1);
    entry->state = kForwardOffLimit;
    EXPECT_TRUE(CPagerHdl::UpdateEntryInEventsDB(entry));
    EXPECT_THAT(RowCalls(), ElementsAre(Found(0)));
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ("1", AlarmState(7));
}

TEST_F(EventsTable, RemovalDeletesTheRowAndKeepsItInMind) {
    AddRow(7, "anna", 3);
    CPagerHdl::RemoveEntryFromEventsDB(entry);
    EXPECT_THAT(RowCalls(), ElementsAre(Found(1), kDelete));
    ASSERT_NE(nullptr, entry->pagerFwdEvent);
    EXPECT_EQ(3U, entry->pagerFwdEvent->pagerRetries);
}

TEST_F(EventsTable, RemovalOfADeletedRowDoesNothing) {
    CPagerHdl::RemoveEntryFromEventsDB(entry);
    EXPECT_THAT(RowCalls(), ElementsAre(Found(0)));
}

TEST_F(EventsTable, RemovalOfAnAlarmDeletesAllItsRows) {
    AddRow(7, "anna");
    AddRow(7, "bert");
    AddRow(8, "anna");
    CPagerHdl::RemoveEntryFromEventsDB(7L);
    EXPECT_THAT(RowCalls(), ElementsAre("SQLConditionDelete(AlarmFwd_PagerEvents, "
                                        "WHERE AlarmFwd_PagerEvents.AlmLogID  = 7, 'y') -> 2"));
    EXPECT_THAT(Rows(), ElementsAre("8 anna 0 2"));
}

TEST_F(EventsTable, FailedWritesAreAnsweredAsSuccess) {
    store.FailAlways(test_support::Call::kSet);
    EXPECT_TRUE(CPagerHdl::AddEntryToEventsDB(entry));
    store.StopFailing();
    store.FailAlways(test_support::Call::kOpen);
    EXPECT_TRUE(CPagerHdl::UpdateEntryInEventsDB(entry));
    store.StopFailing();
}

// Nor a row that can't be made whole: it would be deleted by the next start, as one that is over.
TEST_F(EventsTable, HalfARowIsNone) {
    store.Fail(test_support::Call::kAddElement, 4);  // its state
    EXPECT_TRUE(CPagerHdl::AddEntryToEventsDB(entry));
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(EventsTable, QueueingAndRetiringWriteInThisOrder) {
    CPagerHdl::InsertInPagingQueue(entry);
    CPagerHdl::ReinsertInPagingQueue(entry, 5);
    CPagerHdl::DeleteFromPagingQueue(entry);
    EXPECT_EQ((std::vector<std::string>{Found(0), Inserted(0, 2)} +
               std::vector<std::string>{Found(1), kDelete, Inserted(0, 2)} + Folded(2) +
               std::vector<std::string>{Found(1), kDelete, Inserted(0, 3)} + Folded(3)),
              RowCalls());
    store.ForgetCalls();
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
    EXPECT_THAT(RowCalls(), ElementsAre(Found(1), kDelete));
    entry = nullptr;
}

}  // namespace
