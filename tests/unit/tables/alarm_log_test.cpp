// The alarm log: look-ups by id, the waiting alarms, and the writes under the table's lock.
#include "tables/alarm_log.h"

#include <thread>

#include "tests/support/store_test.h"
#include "tests/unit/tables/records.h"

namespace {

using test_support::Call;
using test_support::MemoryStore;

constexpr char kAlarmTable[] = "AlarmLog";

class AlarmLog : public test_support::StoreTest {
 protected:
    // A row whose integers all differ.
    void InsertAlarm(int32_t id, const MemoryStore::Cells& changes = {}) {
        MemoryStore::Cells cells = {{"acktime", "101"},
                                    {"alarmack", "102"},
                                    {"alarmlogID", std::to_string(id)},
                                    {"alarmName", "ups.fail"},
                                    {"alarmnote", "call the porter"},
                                    {"broadcaststate", "106"},
                                    {"details", "UPS on battery"},
                                    {"eventlogstate", "107"},
                                    {"execstate", "103"},
                                    {"mailstate", "104"},
                                    {"monitoronly", "105"},
                                    {"pagerstate", "3"},
                                    {"server", "srv1"},
                                    {"severity", "2"},
                                    {"stationstate", "1"},
                                    {"timestamp", "978948000"}};
        cells.insert(cells.end(), changes.begin(), changes.end());
        store.Insert(kAlarmTable, cells);
    }
    std::string State(int32_t id, const char* column) {
        return store.Read(kAlarmTable, {"alarmlogID", std::to_string(id)}, column);
    }

    CDB_AlarmLog log{MemoryStore::kDatabase};
};

void ExpectAlarm(const AlarmLogEntry& entry, int32_t id) {
    EXPECT_EQ(101, entry.ackTime);
    EXPECT_EQ(102, entry.alarmAck);
    EXPECT_EQ(id, entry.alarmLogId);
    EXPECT_EQ("ups.fail", Text(entry.alarmName));
    EXPECT_EQ("call the porter", Text(entry.alarmNote));
    EXPECT_EQ("UPS on battery", Text(entry.details));
    EXPECT_EQ(103, entry.execState);
    EXPECT_EQ(104, entry.mailState);
    EXPECT_EQ(105, entry.monitorOnly);
    EXPECT_EQ(kForwardOffLimit, entry.pagerState);
    EXPECT_EQ(106, entry.broadcastState);
    EXPECT_EQ(107, entry.eventLogState);
    EXPECT_EQ("srv1", Text(entry.server));
    EXPECT_EQ(kSeverityMajor, entry.severity);
    EXPECT_EQ(978948000, entry.timestamp);
}

// With the id's column where the alarms are listed, without it where the id is known.
Lines EntryLookUps(const Lines& idColumn) {
    return LookUps(
        kAlarmTable,
        Lines{"acktime -> 1", "alarmack -> 2"} + idColumn +
            Lines{"alarmName -> 3", "alarmnote -> 4", "details -> 6", "execstate -> 8",
                  "mailstate -> 9", "monitoronly -> 10", "pagerstate -> 11", "stationstate -> 14",
                  "pagerstate -> 11", "broadcaststate -> 5", "eventlogstate -> 7", "server -> 12",
                  "severity -> 13", "timestamp -> 15"});
}

const Lines kReadAlarm7 = {"Open(alarms, 'n')", "TableOpen(AlarmLog)",
                           "GetAllEntriesByCondition(AlarmLog, alarmlogID = \"7\") -> 1"};

// --- One alarm.

TEST_F(AlarmLog, FillsEveryFieldFromItsOwnColumn) {
    InsertAlarm(7);

    const auto entry = Hold(log.FindAlarmLogEntry(7));

    ASSERT_NE(nullptr, entry);
    ExpectAlarm(*entry, 7);
    EXPECT_EQ(kForwardAcknowledged, entry->stationState);
}

TEST_F(AlarmLog, KeepsTheSecondLookUpOfPagerstate) {
    InsertAlarm(7);

    Hold(log.FindAlarmLogEntry(7));

    EXPECT_EQ(kReadAlarm7 + EntryLookUps({}) + (Lines{"Free()", "Close()"}), store.Calls());
    EXPECT_EQ(2U, store.CallsWith("pagerstate").size());
}

TEST_F(AlarmLog, NoRowAndTwoRowsAreNoAlarm) {
    InsertAlarm(8);
    InsertAlarm(8);

    EXPECT_EQ(nullptr, log.FindAlarmLogEntry(7));
    const Lines noRow = {"Open(alarms, 'n')", "TableOpen(AlarmLog)",
                         "GetAllEntriesByCondition(AlarmLog, alarmlogID = \"7\") -> 0", "Close()"};
    EXPECT_EQ(noRow, store.Calls());

    store.ForgetCalls();
    EXPECT_EQ(nullptr, log.FindAlarmLogEntry(8));
    const Lines twoRows = {"Open(alarms, 'n')", "TableOpen(AlarmLog)",
                           "GetAllEntriesByCondition(AlarmLog, alarmlogID = \"8\") -> 2", "Free()",
                           "Close()"};
    EXPECT_EQ(twoRows, store.Calls());

    EXPECT_EQ(nullptr, log.GetAlarmLogFwdInfo(7));
    EXPECT_EQ(nullptr, log.GetAlarmLogFwdInfo(8));
    EXPECT_EQ(0, log.GetStationState(7));
    EXPECT_EQ(0, log.GetStationState(8));
}

TEST_F(AlarmLog, MissingColumnsLeaveNullAnd0AndTheIdIsTheOneAskedFor) {
    store.AddTable(kAlarmTable, {"alarmlogID"});
    store.Insert(kAlarmTable, {{"alarmlogID", "7"}});

    const auto entry = Hold(log.FindAlarmLogEntry(7));

    ASSERT_NE(nullptr, entry);
    EXPECT_EQ(7, entry->alarmLogId);
    EXPECT_EQ(0, entry->ackTime);
    EXPECT_EQ(nullptr, entry->alarmName);
    EXPECT_EQ(nullptr, entry->alarmNote);
    EXPECT_EQ(nullptr, entry->details);
    EXPECT_EQ(0, entry->pagerState);
    EXPECT_EQ(0, entry->stationState);
    EXPECT_EQ(nullptr, entry->server);
    EXPECT_EQ(0, entry->severity);
    EXPECT_EQ(0, entry->timestamp);
}

TEST_F(AlarmLog, CellsWithoutTextAreNullAnd0) {
    InsertAlarm(7, {{"details", std::nullopt}, {"severity", std::nullopt}});

    const auto entry = Hold(log.FindAlarmLogEntry(7));

    ASSERT_NE(nullptr, entry);
    EXPECT_EQ(nullptr, entry->details);
    EXPECT_EQ(0, entry->severity);
    EXPECT_EQ("ups.fail", Text(entry->alarmName));
}

TEST_F(AlarmLog, FwdInfoIsWhatAPageNeeds) {
    InsertAlarm(7);

    const auto info = Hold(log.GetAlarmLogFwdInfo(7));

    ASSERT_NE(nullptr, info);
    EXPECT_EQ(7, info->alarmLogId);
    EXPECT_EQ("ups.fail", Text(info->alarmName));
    EXPECT_EQ("UPS on battery", Text(info->details));
    EXPECT_EQ(kForwardAcknowledged, info->stationState);
    EXPECT_EQ(kForwardOffLimit, info->pagerState);
    EXPECT_EQ(978948000, info->timestamp);
    EXPECT_EQ(kReadAlarm7 +
                  LookUps(kAlarmTable, {"alarmName -> 3", "details -> 6", "stationstate -> 14",
                                        "pagerstate -> 11", "timestamp -> 15"}) +
                  (Lines{"Free()", "Close()"}),
              store.Calls());
}

TEST_F(AlarmLog, StationStateOfAnAlarm) {
    InsertAlarm(7, {{"stationstate", "4"}});

    EXPECT_EQ(4, log.GetStationState(7));

    EXPECT_EQ(kReadAlarm7 +
                  (Lines{"GetElementColumn(AlarmLog, stationstate) -> 14", "Free()", "Close()"}),
              store.Calls());
}

TEST_F(AlarmLog, StationStateWithoutItsColumnIs0) {
    InsertAlarm(7);
    store.Fail(Call::kGetElementColumn);
    EXPECT_EQ(0, log.GetStationState(7));
}

// --- The waiting alarms.

TEST_F(AlarmLog, WaitingAlarmsAreThoseInStationState2InRowOrder) {
    InsertAlarm(7, {{"stationstate", "2"}});
    InsertAlarm(8);
    InsertAlarm(9, {{"stationstate", "2"}});

    AlarmLogEntry** rows = nullptr;
    ASSERT_EQ(2, log.GetAllAlarmLogEntries(&rows));

    const auto waiting = HoldAll(rows, 2);
    ExpectAlarm(*waiting[0], 7);
    ExpectAlarm(*waiting[1], 9);
    EXPECT_EQ(kForwardBeingPaged, waiting[0]->stationState);
    const Lines expected = Lines{"Open(alarms, 'n')", "TableOpen(AlarmLog)",
                                 "GetAllEntriesByCondition(AlarmLog, stationstate = \"2\") -> 2"} +
                           EntryLookUps({"alarmlogID -> 0"}) + Lines{"Free()", "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(AlarmLog, KeepsHandingOutAnArrayWhenNoAlarmWaits) {
    InsertAlarm(8);
    AlarmLogEntry** rows = nullptr;

    EXPECT_EQ(0, log.GetAllAlarmLogEntries(&rows));

    EXPECT_NE(nullptr, rows);
    delete[] rows;
    const Lines expected = {"Open(alarms, 'n')", "TableOpen(AlarmLog)",
                            "GetAllEntriesByCondition(AlarmLog, stationstate = \"2\") -> 0",
                            "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(AlarmLog, ANegativeCountOfWaitingAlarmsIsNone) {
    store.Fail(Call::kGetAllEntriesByCondition, 1, -2);
    AlarmLogEntry** rows = nullptr;

    EXPECT_EQ(0, log.GetAllAlarmLogEntries(&rows));

    EXPECT_NE(nullptr, rows);
    delete[] rows;
}

TEST_F(AlarmLog, AnUnreadableTableHandsNothingOut) {
    AlarmLogEntry* untouched = nullptr;
    for (const Call failing : {Call::kOpen, Call::kTableOpen}) {
        AlarmLogEntry** rows = &untouched;
        store.Fail(failing);
        EXPECT_EQ(-1, log.GetAllAlarmLogEntries(&rows));
        EXPECT_EQ(&untouched, rows);
    }
}

// --- Writes.

// What differs between the two writes.
struct Write {
    const char* column;
    const char* close;
    int32_t (CDB_AlarmLog::*set)(int32_t, ForwardState);
};
constexpr Write kWrites[] = {
    {"stationstate", "CloseKeepStaticDllInfo()", &CDB_AlarmLog::SetStationState},
    {"pagerstate", "Close()", &CDB_AlarmLog::SetPagerState},
};

class AlarmLogWrite : public AlarmLog, public ::testing::WithParamInterface<Write> {
 protected:
    int32_t Set(int32_t id, ForwardState state) { return (log.*GetParam().set)(id, state); }

    // The call that hits the row of alarm 7 with state 4.
    Lines Change(const std::string& result) {
        const std::string column = GetParam().column;
        return {"AddElement(AlarmLog, " + column + ", 'i', 4)",
                "SQLConditionSet(AlarmLog, WHERE alarmlogID = 7, {" + column +
                    " = 4}, 'y', 'n') -> " + result};
    }
    Lines Close() { return {GetParam().close}; }
};

INSTANTIATE_TEST_SUITE_P(Each, AlarmLogWrite, ::testing::ValuesIn(kWrites),
                         [](const auto& write) { return std::string(write.param.column); });

TEST_P(AlarmLogWrite, TakesTheLockBeforeTheTableIsOpenedAndWritesUnderIt) {
    InsertAlarm(7);
    InsertAlarm(70);

    EXPECT_EQ(1, Set(7, kForwardDone));

    EXPECT_EQ("4", State(7, GetParam().column));
    EXPECT_NE("4", State(70, GetParam().column));
    EXPECT_EQ((Lines{"Open(alarms, 'n')", "Lock(AlarmLog, 400, 300)", "TableOpen(AlarmLog)"}) +
                  Change("1") + (Lines{"Write(AlarmLog, 0) -> 1", "Unlock(AlarmLog)"}) + Close(),
              store.Calls());
}

TEST_P(AlarmLogWrite, AnUnknownAlarmChangesNothingAndIsNotWritten) {
    InsertAlarm(8);

    EXPECT_EQ(0, Set(7, kForwardDone));

    EXPECT_NE("4", State(8, GetParam().column));
    EXPECT_EQ((Lines{"Open(alarms, 'n')", "Lock(AlarmLog, 400, 300)", "TableOpen(AlarmLog)"}) +
                  Change("0") + Lines{"Unlock(AlarmLog)"} + Close(),
              store.Calls());
}

TEST_P(AlarmLogWrite, AFailedChangeIsNotWritten) {
    InsertAlarm(7);
    store.Fail(Call::kSQLConditionSet, 1, -4);

    EXPECT_EQ(-4, Set(7, kForwardDone));

    EXPECT_EQ((Lines{"Open(alarms, 'n')", "Lock(AlarmLog, 400, 300)", "TableOpen(AlarmLog)"}) +
                  Change("-4") + Lines{"Unlock(AlarmLog)"} + Close(),
              store.Calls());
}

TEST_P(AlarmLogWrite, AStateThatCannotBeAddedIsNotWritten) {
    InsertAlarm(7);
    store.Fail(Call::kAddElement);

    EXPECT_EQ(-1, Set(7, kForwardDone));

    EXPECT_NE("4", State(7, GetParam().column));
    const std::string added = "AddElement(AlarmLog, " + std::string(GetParam().column);
    EXPECT_EQ((Lines{"Open(alarms, 'n')", "Lock(AlarmLog, 400, 300)", "TableOpen(AlarmLog)",
                     added + ", 'i', 4) -> -1", "Unlock(AlarmLog)"}) +
                  Close(),
              store.Calls());
}

TEST_P(AlarmLogWrite, ResultOfTheWriteReplacesTheCount) {
    InsertAlarm(7);
    InsertAlarm(7);
    EXPECT_EQ(2, Set(7, kForwardDone));

    store.Fail(Call::kWrite, 1, -6);
    EXPECT_EQ(-6, Set(7, kForwardDone));
    store.Fail(Call::kWrite, 1, 0);
    EXPECT_EQ(0, Set(7, kForwardDone));
}

TEST_P(AlarmLogWrite, ALockThatIsNotTakenIsNotReleasedAndTheWriteGoesOn) {
    InsertAlarm(7);
    store.Fail(Call::kLock, 1, 1);

    EXPECT_EQ(1, Set(7, kForwardDone));

    EXPECT_EQ("4", State(7, GetParam().column));
    EXPECT_EQ((Lines{"Open(alarms, 'n')", "Lock(AlarmLog, 400, 300) -> 1", "TableOpen(AlarmLog)"}) +
                  Change("1") + Lines{"Write(AlarmLog, 1) -> 1"} + Close(),
              store.Calls());
}

TEST_P(AlarmLogWrite, ALockThatTheWriteGaveUpIsNotReleasedAgain) {
    InsertAlarm(7);
    store.GiveUpLockWhileWriting();

    EXPECT_EQ(1, Set(7, kForwardDone));

    EXPECT_EQ(Lines{}, store.Calls(Call::kUnlock));
}

TEST_P(AlarmLogWrite, WithoutTheDatabaseNothingElseIsCalled) {
    store.Fail(Call::kOpen);
    EXPECT_EQ(-1, Set(7, kForwardDone));
    EXPECT_EQ(Lines{"Open(alarms, 'n') -> -1"}, store.Calls());
}

TEST_P(AlarmLogWrite, WithoutTheTableTheLockIsReleasedAndTheDatabaseClosed) {
    store.Fail(Call::kTableOpen);
    EXPECT_EQ(-1, Set(7, kForwardDone));
    EXPECT_EQ((Lines{"Open(alarms, 'n')", "Lock(AlarmLog, 400, 300)", "TableOpen(AlarmLog) -> -1",
                     "Unlock(AlarmLog)"}) +
                  Close(),
              store.Calls());
}

TEST_P(AlarmLogWrite, WithoutTheTableALockThatWasNotTakenIsNotReleased) {
    store.Fail(Call::kLock, 1, 1);
    store.Fail(Call::kTableOpen);
    EXPECT_EQ(-1, Set(7, kForwardDone));
    EXPECT_EQ(
        (Lines{"Open(alarms, 'n')", "Lock(AlarmLog, 400, 300) -> 1", "TableOpen(AlarmLog) -> -1"}) +
            Close(),
        store.Calls());
}

TEST_P(AlarmLogWrite, WaitsForTheOtherWriterOfTheTable) {
    InsertAlarm(7);
    store.LockAsOther(kAlarmTable);
    std::thread writer([this] { EXPECT_EQ(1, Set(7, kForwardDone)); });
    while (store.OpenHandles() == 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(Lines{}, store.Calls(Call::kTableOpen)) << "not before the lock is taken";
    store.UnlockAsOther(kAlarmTable);
    writer.join();
    EXPECT_EQ("4", State(7, GetParam().column));
}

}  // namespace
