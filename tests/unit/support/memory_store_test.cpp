// The store in memory: its records, its watch, its faults and hooks. What it shares with every
// store is held against the contract of the table access.
#include "tests/support/memory_store.h"

#include <gtest/gtest.h>
#include <pagerfwd/table_access.h>

#include <stdexcept>
#include <thread>

namespace {

using test_support::Call;
using test_support::MemoryStore;

using Lines = std::vector<std::string>;

constexpr char kPagers[] = "AlarmFwd_PagerSetting";

class MemoryStoreTest : public ::testing::Test {
 protected:
    MemoryStoreTest() { store.AddAllTables(); }

    DBAsciiHandle Open(const char* table) {
        DBAsciiHandle handle = nullptr;
        EXPECT_EQ(0, DBAsciiAccessOpen("alarms", 'n', &handle));
        EXPECT_EQ(0, DBAsciiAccessTableOpen(handle, table));
        return handle;
    }
    static int32_t Read(DBAsciiHandle handle, const char* table, const char* column,
                        const char* value, DBAsciiRowSet* rows) {
        return DBAsciiAccessGetAllEntriesByCondition(handle, table, column, rows, 0, value, 'r',
                                                     nullptr, 'n', 0, 0);
    }
    static int32_t AddInteger(DBAsciiHandle handle, const char* table, const char* column,
                              int32_t value, DBAsciiElementList* list) {
        return DBAsciiAccessAddElement(handle, table, column, 'i', &value, list);
    }

    MemoryStore store;
};

// --- Rows, as another program sees them.

TEST_F(MemoryStoreTest, RowsAreInsertedReadChangedAndDeleted) {
    store.Insert(kPagers, {{"description", "anna"}, {"OWNER", "Anna"}});
    store.Insert(kPagers, {{"description", "bert"}, {"owner", std::nullopt}});

    EXPECT_EQ(2U, store.RowCount(kPagers));
    EXPECT_EQ((Lines{"Anna", "(null)"}), store.Column(kPagers, "owner"));
    EXPECT_EQ("", store.Read(kPagers, {"description", "anna"}, "comport"));
    EXPECT_EQ("(no row)", store.Read(kPagers, {"description", "carl"}, "comport"));

    EXPECT_EQ(1U, store.Update(kPagers, {"description", "anna"}, {{"comport", "COM 1"}}));
    EXPECT_EQ("COM 1", store.Read(kPagers, {"description", "anna"}, "comport"));
    EXPECT_EQ(0U, store.Update(kPagers, {"description", "carl"}, {{"comport", "COM 1"}}));

    EXPECT_EQ(1U, store.Delete(kPagers, {"description", "anna"}));
    EXPECT_EQ(Lines{"bert"}, store.Column(kPagers, "description"));
    EXPECT_EQ(Lines{}, store.Calls()) << "none of it is a call";
}

TEST_F(MemoryStoreTest, MistakesOfATestAreThrown) {
    EXPECT_THROW(store.Insert("Nonesuch", {}), std::out_of_range);
    EXPECT_THROW(store.Insert(kPagers, {{"nonesuch", ""}}), std::out_of_range);
    EXPECT_THROW(store.Column(kPagers, "nonesuch"), std::out_of_range);
    EXPECT_THROW(store.Read(kPagers, {"nonesuch", ""}, "owner"), std::out_of_range);
}

TEST_F(MemoryStoreTest, TimeModelsHaveTheHoursFirst) {
    store.InsertTimeModel("office", "10");
    EXPECT_EQ("1", store.Read("AlarmFwd_TMSetting", {"description", "office"}, "Mo00"));
    EXPECT_EQ("0", store.Read("AlarmFwd_TMSetting", {"description", "office"}, "Mo01"));
    EXPECT_EQ("0", store.Read("AlarmFwd_TMSetting", {"description", "office"}, "Su23"));
}

TEST_F(MemoryStoreTest, StoresOfSeveralNamesLiveTogether) {
    MemoryStore second("second");
    second.AddTable(kPagers, {"description"});
    DBAsciiHandle handle = nullptr;

    ASSERT_EQ(0, DBAsciiAccessOpen("second", 'n', &handle));
    EXPECT_EQ(0, DBAsciiAccessTableOpen(handle, kPagers));
    EXPECT_EQ(0, DBAsciiAccessClose(handle));

    EXPECT_EQ(3U, second.Calls().size());
    EXPECT_EQ(Lines{}, store.Calls());
    EXPECT_EQ(-1, DBAsciiAccessOpen("third", 'n', &handle));
    EXPECT_EQ("", store.Verdict());
}

// --- The record.

TEST_F(MemoryStoreTest, RecordsEveryCallInOrder) {
    store.Insert(kPagers, {{"description", "anna"}});
    const DBAsciiHandle handle = Open(kPagers);
    DBAsciiRowSet rows = nullptr;
    EXPECT_EQ(1, Read(handle, kPagers, "description", "anna", &rows));
    EXPECT_EQ(3, DBAsciiAccessGetElementColumn(handle, kPagers, "PgType"));
    EXPECT_STREQ("anna", rows[0][0]);
    EXPECT_EQ(0, DBAsciiAccessFree(rows));
    EXPECT_EQ(1, DBAsciiAccessGetAllEntriesByCondition(handle, kPagers, "description", &rows, 0, "",
                                                       'r', "no", 'n', 'n', 0));
    EXPECT_EQ(0, DBAsciiAccessFree(rows));
    DBAsciiElementList list = nullptr;
    EXPECT_EQ(0, AddInteger(handle, kPagers, "pgtype", 4, &list));
    const char* text = "Anna";
    EXPECT_EQ(0, DBAsciiAccessAddElement(handle, kPagers, "owner", 't', &text, &list));
    EXPECT_EQ(0, DBAsciiAccessSet(handle, kPagers, list, 'y', 'y', 'y'));
    EXPECT_EQ(0, DBAsciiAccessSQLConditionSet(handle, kPagers, "WHERE ?", nullptr, 'y', 'y'));
    EXPECT_EQ(0, DBAsciiAccessSQLConditionDelete(handle, kPagers, "WHERE ?", 'y'));
    EXPECT_EQ(0, DBAsciiAccessCloseKeepStaticDllInfo(handle));

    const Lines expected = {
        "Open(alarms, 'n')",
        "TableOpen(AlarmFwd_PagerSetting)",
        "GetAllEntriesByCondition(AlarmFwd_PagerSetting, description = \"anna\") -> 1",
        "GetElementColumn(AlarmFwd_PagerSetting, PgType) -> 3",
        "Free()",
        "GetAllEntriesByCondition(AlarmFwd_PagerSetting, description, every row) -> 1",
        "Free()",
        "AddElement(AlarmFwd_PagerSetting, pgtype, 'i', 4)",
        "AddElement(AlarmFwd_PagerSetting, owner, 't', \"Anna\")",
        "Set(AlarmFwd_PagerSetting, {pgtype = 4, owner = \"Anna\"}, 'y', 'y', 'y')",
        "SQLConditionSet(AlarmFwd_PagerSetting, WHERE ?, {}, 'y', 'y') -> 0",
        "SQLConditionDelete(AlarmFwd_PagerSetting, WHERE ?, 'y') -> 0",
        "CloseKeepStaticDllInfo()"};
    EXPECT_EQ(expected, store.Calls());
    EXPECT_EQ("", store.Verdict());
}

TEST_F(MemoryStoreTest, RecordCanBeFilteredAndForgotten) {
    DBAsciiAccessClose(Open(kPagers));

    EXPECT_EQ(Lines{"Close()"}, store.Calls(Call::kClose));
    EXPECT_EQ((Lines{"Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerSetting)"}),
              store.CallsWith("Open("));
    store.ForgetCalls();
    EXPECT_EQ(Lines{}, store.Calls());
}

// --- The watch.

TEST_F(MemoryStoreTest, WhatStaysOpenIsTold) {
    store.Insert(kPagers, {{"description", "anna"}});
    const DBAsciiHandle handle = Open(kPagers);
    EXPECT_EQ("1 handles are not closed\n", store.Verdict());
    EXPECT_EQ(1U, store.OpenHandles());

    DBAsciiRowSet rows = nullptr;
    Read(handle, kPagers, "description", "anna", &rows);
    DBAsciiElementList list = nullptr;
    AddInteger(handle, kPagers, "pgtype", 4, &list);
    DBAsciiAccessLock(handle, kPagers, 400, 300);
    EXPECT_EQ(
        "1 handles are not closed\n1 row sets are not freed\n"
        "1 element lists are not consumed\n1 locks are not released\n",
        store.Verdict());

    DBAsciiAccessFree(rows);
    DBAsciiAccessSet(handle, kPagers, list, 'y', 'y', 'y');
    DBAsciiAccessUnlock(handle, kPagers);
    DBAsciiAccessClose(handle);
    EXPECT_EQ("", store.Verdict());
}

TEST_F(MemoryStoreTest, BrokenRulesAreRefusedAndTold) {
    const DBAsciiHandle handle = Open(kPagers);
    DBAsciiHandle other = nullptr;
    DBAsciiRowSet rows = nullptr;
    DBAsciiElementList list = nullptr;
    int32_t number = 0;

    EXPECT_EQ(-1, DBAsciiAccessOpen("alarms", 'w', &other));
    EXPECT_EQ(-1, DBAsciiAccessLock(handle, kPagers, 300, 400));
    EXPECT_EQ(-1, DBAsciiAccessGetElementColumn(handle, "AlarmLog", "details"));
    EXPECT_EQ(-1, DBAsciiAccessGetAllEntriesByCondition(handle, kPagers, "description", &rows, 0,
                                                        "x", 'r', "no", 'n', 'n', 0));
    EXPECT_EQ(-1, DBAsciiAccessAddElement(handle, kPagers, "owner", 'x', &number, &list));
    EXPECT_EQ(-1, DBAsciiAccessSet(handle, kPagers, nullptr, 'y', 'y', 'n'));
    EXPECT_EQ(-1, DBAsciiAccessSQLConditionSet(handle, kPagers, "WHERE ?", nullptr, 'y', 'x'));
    EXPECT_EQ(-1, DBAsciiAccessSQLConditionDelete(handle, kPagers, "WHERE ?", 'n'));
    EXPECT_EQ(-1, DBAsciiAccessUnlock(handle, kPagers));
    EXPECT_EQ(-1, DBAsciiAccessWrite(handle, kPagers, &number));
    EXPECT_EQ(0, DBAsciiAccessLock(handle, kPagers, 400, 300));
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
    EXPECT_EQ(-1, DBAsciiAccessClose(handle));
    EXPECT_EQ(-1, DBAsciiAccessFree(rows));

    EXPECT_EQ(
        "Open(alarms, 'w'): such arguments do not occur\n"
        "Lock(AlarmFwd_PagerSetting, 300, 400): such arguments do not occur\n"
        "GetElementColumn(AlarmLog, details): the table is not open\n"
        "GetAllEntriesByCondition(AlarmFwd_PagerSetting, description, 0, \"x\", 'r', \"no\", 'n', "
        "'n', 0): such arguments do not occur\n"
        "AddElement(AlarmFwd_PagerSetting, owner, 'x', null): such arguments do not occur\n"
        "Set(AlarmFwd_PagerSetting, {}, 'y', 'y', 'n'): such arguments do not occur\n"
        "SQLConditionSet(AlarmFwd_PagerSetting, WHERE ?, {}, 'y', 'x'): such arguments do not "
        "occur\n"
        "SQLConditionDelete(AlarmFwd_PagerSetting, WHERE ?, 'n'): such arguments do not occur\n"
        "Unlock(AlarmFwd_PagerSetting): the handle does not hold the lock\n"
        "Write(AlarmFwd_PagerSetting, 0): the lock result is not that of Lock\n"
        "Close(): the lock of AlarmFwd_PagerSetting was not released\n"
        "Close(): the handle is not open\n"
        "Free(): no such handle or row set\n",
        store.Verdict());
}

TEST_F(MemoryStoreTest, ARowSetIsFreedOnce) {
    store.Insert(kPagers, {{"description", "anna"}});
    const DBAsciiHandle handle = Open(kPagers);
    DBAsciiRowSet rows = nullptr;
    Read(handle, kPagers, "description", "anna", &rows);
    EXPECT_EQ(0, DBAsciiAccessFree(rows));
    EXPECT_EQ(-1, DBAsciiAccessFree(rows));
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
    EXPECT_EQ("Free(): no such handle or row set\n", store.Verdict());
}

TEST_F(MemoryStoreTest, ARowSetWithoutARowIsHandedOutOnDemand) {
    const DBAsciiHandle handle = Open(kPagers);
    DBAsciiRowSet rows = nullptr;
    Read(handle, kPagers, "description", "anna", &rows);
    EXPECT_EQ(nullptr, rows);
    store.HandOutEmptyRowSets();
    Read(handle, kPagers, "description", "anna", &rows);
    ASSERT_NE(nullptr, rows);
    EXPECT_EQ(0, DBAsciiAccessFree(rows));
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
    EXPECT_EQ("", store.Verdict());
}

TEST_F(MemoryStoreTest, AListIsConsumedOnce) {
    const DBAsciiHandle handle = Open(kPagers);
    DBAsciiElementList list = nullptr;
    AddInteger(handle, kPagers, "pgtype", 4, &list);
    EXPECT_EQ(0, DBAsciiAccessSQLConditionSet(handle, kPagers, "WHERE ?", list, 'y', 'y'));
    DBAsciiAccessSQLConditionSet(handle, kPagers, "WHERE ?", list, 'y', 'y');
    DBAsciiAccessClose(handle);
    EXPECT_EQ(
        "SQLConditionSet(AlarmFwd_PagerSetting, WHERE ?, {}, 'y', 'y'): "
        "the element list has ended\n",
        store.Verdict());
}

// --- Faults.

TEST_F(MemoryStoreTest, TheNthCallOfAKindFails) {
    DBAsciiHandle handle = nullptr;
    store.Fail(Call::kOpen, 2, 5);
    EXPECT_EQ("no Open came that could fail\n", store.Verdict());

    EXPECT_EQ(0, DBAsciiAccessOpen("alarms", 'n', &handle));
    DBAsciiAccessClose(handle);
    EXPECT_EQ(5, DBAsciiAccessOpen("alarms", 'n', &handle));
    EXPECT_EQ(0, DBAsciiAccessOpen("alarms", 'n', &handle));
    DBAsciiAccessClose(handle);

    EXPECT_EQ((Lines{"Open(alarms, 'n')", "Open(alarms, 'n') -> 5", "Open(alarms, 'n')"}),
              store.Calls(Call::kOpen));
    EXPECT_EQ("", store.Verdict());
}

TEST_F(MemoryStoreTest, TheNthOfAllCallsFails) {
    DBAsciiHandle handle = nullptr;
    store.FailAnyCall(2);
    EXPECT_EQ(0, DBAsciiAccessOpen("alarms", 'n', &handle));
    EXPECT_EQ(-1, DBAsciiAccessTableOpen(handle, kPagers));
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
    EXPECT_EQ("", store.Verdict());
}

TEST_F(MemoryStoreTest, AKindFailsUntilToldToStop) {
    DBAsciiHandle handle = nullptr;
    store.FailAlways(Call::kOpen);
    EXPECT_EQ(-1, DBAsciiAccessOpen("alarms", 'n', &handle));
    EXPECT_EQ(-1, DBAsciiAccessOpen("alarms", 'n', &handle));
    store.StopFailing();
    EXPECT_EQ(0, DBAsciiAccessOpen("alarms", 'n', &handle));
    DBAsciiAccessClose(handle);
}

TEST_F(MemoryStoreTest, FailingCallsChangeNothingButEndWhatTheyEnd) {
    store.Insert("AlarmLog", {{"alarmlogID", "7"}, {"pagerstate", "2"}});
    const DBAsciiHandle handle = Open("AlarmLog");
    for (const Call kind : {Call::kSet, Call::kSQLConditionSet, Call::kSQLConditionDelete,
                            Call::kWrite, Call::kClose, Call::kFree}) {
        store.Fail(kind);
    }
    DBAsciiElementList list = nullptr;
    AddInteger(handle, "AlarmLog", "pagerstate", 4, &list);
    EXPECT_EQ(-1, DBAsciiAccessSet(handle, "AlarmLog", list, 'y', 'y', 'y'));
    list = nullptr;
    AddInteger(handle, "AlarmLog", "pagerstate", 4, &list);
    EXPECT_EQ(-1, DBAsciiAccessSQLConditionSet(handle, "AlarmLog", "WHERE alarmlogID = 7", list,
                                               'y', 'y'));
    EXPECT_EQ(-1, DBAsciiAccessSQLConditionDelete(handle, "AlarmLog", "WHERE alarmlogID = 7", 'y'));
    int32_t lock = DBAsciiAccessLock(handle, "AlarmLog", 400, 300);
    EXPECT_EQ(-1, DBAsciiAccessWrite(handle, "AlarmLog", &lock));
    EXPECT_EQ(0, DBAsciiAccessUnlock(handle, "AlarmLog"));
    DBAsciiRowSet rows = nullptr;
    EXPECT_EQ(1, Read(handle, "AlarmLog", "alarmlogID", "7", &rows));
    EXPECT_EQ(-1, DBAsciiAccessFree(rows));
    EXPECT_EQ(-1, DBAsciiAccessClose(handle));

    EXPECT_EQ(Lines{"2"}, store.Column("AlarmLog", "pagerstate"));
    EXPECT_EQ("", store.Verdict());
}

// --- Hooks.

TEST_F(MemoryStoreTest, AHookRunsOnceJustBeforeItsCallAndMayUseTheStore) {
    store.Insert(kPagers, {{"description", "anna"}});
    store.Before(Call::kGetAllEntriesByCondition, 2, [this] {
        store.Delete(kPagers, {"description", "anna"});
    });
    EXPECT_EQ("no GetAllEntriesByCondition came for its hook\n", store.Verdict());
    const DBAsciiHandle handle = Open(kPagers);
    DBAsciiRowSet rows = nullptr;
    EXPECT_EQ(1, Read(handle, kPagers, "description", "anna", &rows));
    DBAsciiAccessFree(rows);
    EXPECT_EQ(0, Read(handle, kPagers, "description", "anna", &rows));
    store.Insert(kPagers, {{"description", "anna"}});
    EXPECT_EQ(1, Read(handle, kPagers, "description", "anna", &rows));
    DBAsciiAccessFree(rows);
    DBAsciiAccessClose(handle);
    EXPECT_EQ("", store.Verdict());
}

TEST_F(MemoryStoreTest, AHookBeforeEachCallSeesItsLine) {
    Lines seen;
    store.BeforeEach([&](const std::string& call) { seen.push_back(call); });
    DBAsciiAccessClose(Open(kPagers));
    EXPECT_EQ(store.Calls(), seen);
}

// --- Locks.

TEST_F(MemoryStoreTest, TheThreadThatHoldsALockIsRefusedASecondOne) {
    const DBAsciiHandle first = Open("AlarmLog");
    const DBAsciiHandle second = Open("AlarmLog");
    EXPECT_EQ(0, DBAsciiAccessLock(first, "AlarmLog", 400, 300));
    EXPECT_EQ(1, DBAsciiAccessLock(second, "AlarmLog", 400, 300));
    EXPECT_EQ(0, DBAsciiAccessLock(second, kPagers, 400, 300)) << "another table";
    EXPECT_EQ(0, DBAsciiAccessUnlock(first, "AlarmLog"));
    EXPECT_EQ(0, DBAsciiAccessUnlock(second, kPagers));
    EXPECT_EQ(0, DBAsciiAccessClose(first));
    EXPECT_EQ(0, DBAsciiAccessClose(second));
    EXPECT_EQ("", store.Verdict());
}

TEST_F(MemoryStoreTest, AnotherThreadWaitsForTheLock) {
    store.LockAsOther("AlarmLog");
    const DBAsciiHandle handle = Open("AlarmLog");
    std::thread writer([&] {
        EXPECT_EQ(0, DBAsciiAccessLock(handle, "AlarmLog", 400, 300));
        EXPECT_EQ(0, DBAsciiAccessUnlock(handle, "AlarmLog"));
    });
    EXPECT_EQ(Lines{}, store.Calls(Call::kLock));
    store.UnlockAsOther("AlarmLog");
    writer.join();
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
    EXPECT_EQ("", store.Verdict());
}

TEST_F(MemoryStoreTest, AWriteMayGiveTheLockUp) {
    store.GiveUpLockWhileWriting();
    const DBAsciiHandle handle = Open("AlarmLog");
    int32_t lock = DBAsciiAccessLock(handle, "AlarmLog", 400, 300);
    EXPECT_EQ(0, DBAsciiAccessWrite(handle, "AlarmLog", &lock));
    EXPECT_EQ(1, lock);
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
    EXPECT_EQ("", store.Verdict());
}

TEST_F(MemoryStoreTest, ManyThreadsWorkAtOnce) {
    const auto work = [this] {
        for (int i = 0; i < 200; ++i) {
            const DBAsciiHandle handle = Open(kPagers);
            DBAsciiElementList list = nullptr;
            AddInteger(handle, kPagers, "pgtype", i, &list);
            DBAsciiAccessSet(handle, kPagers, list, 'y', 'y', 'y');
            DBAsciiAccessClose(handle);
        }
    };
    std::thread first(work);
    std::thread second(work);
    work();
    first.join();
    second.join();
    EXPECT_EQ(600U, store.RowCount(kPagers));
    EXPECT_EQ(3000U, store.Calls().size());
    EXPECT_EQ("", store.Verdict());
}

}  // namespace
