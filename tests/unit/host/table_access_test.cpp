// What the host's table store does beyond the contract: between processes, and when things fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pagerfwd/table_access.h>

#include <filesystem>

#include "tests/unit/host/another_program.h"
#include "tests/unit/host/child_process.h"
#include "tests/unit/host/host_test.h"
#include "tests/unit/host/table_client.h"

namespace host {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TableAccess : public HostTest {
 protected:
    OpenTable Alarms() const { return {database, "AlarmLog"}; }
    OpenTable Events() const { return {database, "AlarmFwd_PagerEvents"}; }

    void AddAlarm(int32_t number, int32_t state) const {
        ASSERT_EQ(0, Alarms().Insert({{"alarmlogID", number}, {"pagerstate", state}}));
    }
};

// --- What strangers write.

// The library writes texts into its trace as they are.
TEST_F(TableAccess, HandsOutNoControlCharacters) {
    std::string all;
    for (char c = 1; c < ' '; ++c) {
        all += c;
    }
    const std::string text = "a" + all + "\x7F\x81z";
    ASSERT_EQ(0, Alarms().Insert({{"alarmlogID", 7}, {"details", text.c_str()}}));
    EXPECT_THAT(Alarms().ReadAll("details"), ElementsAre("a" + std::string(32, ' ') + "\x81z"));
}

TEST_F(TableAccess, LeavesOutARowThatIsTooLargeAndTellsOfIt) {
    AddAlarm(7, 0);
    AddAlarm(8, 0);
    AddAlarm(9, 0);
    WriteAsAnother(database,
                   "UPDATE AlarmLog SET details = hex(zeroblob(600000)) WHERE alarmlogID = '8'");
    EXPECT_THAT(Alarms().ReadAll("alarmlogID"), ElementsAre("7", "9"));
    EXPECT_THAT(faults, ElementsAre(HasSubstr("row 2 of AlarmLog is left out")));
    EXPECT_THAT(Alarms().Read("alarmlogID", "alarmlogID", "8"), IsEmpty());
}

TEST_F(TableAccess, WritesNoTextOfMoreThanAMebibyte) {
    const std::string large((size_t{1} << 20) + 1, 'x');
    EXPECT_NE(0, Alarms().Insert({{"alarmlogID", 7}, {"details", large.c_str()}}));
    EXPECT_THAT(Alarms().ReadAll("alarmlogID"), IsEmpty());
}

// --- Between processes.

TEST_F(TableAccess, WritersInTwoProcessesDoNotLoseEachOthersChanges) {
    AddAlarm(7, 0);
    ChildProcess one({STORE_PROCESS, database, "count"});
    ChildProcess other({STORE_PROCESS, database, "count"});
    EXPECT_EQ("counted", one.ReadLine());
    EXPECT_EQ("counted", other.ReadLine());
    EXPECT_THAT(Alarms().ReadAll("pagerstate"), ElementsAre("100"));
}

TEST_F(TableAccess, ReadsWhileAnotherProcessHoldsTheLock) {
    AddAlarm(7, 2);
    ChildProcess holder({STORE_PROCESS, database, "lock"});
    ASSERT_EQ("locked", holder.ReadLine());
    EXPECT_THAT(Alarms().ReadAll("pagerstate"), ElementsAre("2"));
}

TEST_F(TableAccess, GetsTheLockOfAProcessThatIsKilled) {
    ChildProcess holder({STORE_PROCESS, database, "lock"});
    ASSERT_EQ("locked", holder.ReadLine());
    holder.Kill();
    const OpenTable alarms = Alarms();
    EXPECT_EQ(0, DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300));
}

// --- The lock and unwritten changes.

TEST_F(TableAccess, TakesTheLockOnce) {
    const OpenTable alarms = Alarms();
    EXPECT_EQ(0, DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300));
    EXPECT_NE(0, DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300));
    EXPECT_EQ(0, DBAsciiAccessUnlock(alarms.handle, "AlarmLog"));
    EXPECT_EQ(0, DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300));
}

TEST_F(TableAccess, GivesUpTheLockByWriting) {
    AddAlarm(7, 2);
    OpenTable alarms = Alarms();
    int32_t lock = DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300);
    ASSERT_EQ(1, alarms.Set("WHERE alarmlogID = 7", {{"pagerstate", 4}}, 'n'));
    EXPECT_EQ(1, DBAsciiAccessWrite(alarms.handle, "AlarmLog", &lock));
    EXPECT_NE(0, lock);
    AddAlarm(8, 2);  // by another connection
    EXPECT_THAT(faults, IsEmpty());
}

TEST_F(TableAccess, GivesUpTheLockWithTheHandle) {
    {
        const OpenTable alarms = Alarms();
        ASSERT_EQ(0, DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300));
    }
    AddAlarm(7, 2);
    EXPECT_THAT(faults, IsEmpty());
}

TEST_F(TableAccess, UndoesUnwrittenChangesWithTheHandle) {
    AddAlarm(7, 2);
    { EXPECT_EQ(1, Alarms().Set("WHERE alarmlogID = 7", {{"pagerstate", 4}}, 'n')); }
    EXPECT_THAT(Alarms().ReadAll("pagerstate"), ElementsAre("2"));
}

TEST_F(TableAccess, UndoesUnwrittenChangesWithTheLockAndSaysSo) {
    AddAlarm(7, 2);
    OpenTable alarms = Alarms();
    ASSERT_EQ(0, DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300));
    ASSERT_EQ(1, alarms.Set("WHERE alarmlogID = 7", {{"pagerstate", 4}}, 'n'));
    EXPECT_NE(0, DBAsciiAccessUnlock(alarms.handle, "AlarmLog"));
    EXPECT_THAT(alarms.ReadAll("pagerstate"), ElementsAre("2"));
    EXPECT_THAT(faults, ElementsAre(HasSubstr("undone")));
}

TEST_F(TableAccess, KeepsTheLockThroughAChangeThatHitsNothing) {
    OpenTable alarms = Alarms();
    ASSERT_EQ(0, DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300));
    EXPECT_EQ(0, alarms.Set("WHERE alarmlogID = 7", {{"pagerstate", 4}}, 'n'));
    EXPECT_NE(0, DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300));
    EXPECT_EQ(0, DBAsciiAccessUnlock(alarms.handle, "AlarmLog"));
}

TEST_F(TableAccess, HoldsNothingAfterAChangeThatHitsNothing) {
    OpenTable alarms = Alarms();
    EXPECT_EQ(0, alarms.Set("WHERE alarmlogID = 7", {{"pagerstate", 4}}, 'n'));
    AddAlarm(8, 2);  // by another connection
    EXPECT_THAT(faults, IsEmpty());
}

TEST_F(TableAccess, WritesNothingWhereNothingWasChanged) {
    const OpenTable alarms = Alarms();
    int32_t lock = -1;
    EXPECT_EQ(0, DBAsciiAccessWrite(alarms.handle, "AlarmLog", &lock));
}

// --- Conditions.

TEST_F(TableAccess, FindsTheRowsOfTextsWithQuotes) {
    for (const char* group : {"say \"hi\"", "it's", "\" OR \"1\" = \"1"}) {
        OpenTable events = Events();
        ASSERT_EQ(
            0,
            events.Insert(
                {{"AlmGroup", group}, {"AlmLogID", 7}, {"PagerDescr", "duty"}, {"PagerState", 3}}));
        const std::string key = std::string("WHERE AlmGroup = \"") + group +
                                "\" AND AlmLogID = 7 AND PagerDescr = \"duty\"";
        EXPECT_EQ(1, events.Set(key, {{"PagerState", 4}})) << group;
        EXPECT_EQ(1, events.Delete(key)) << group;
    }
    EXPECT_THAT(Events().ReadAll("AlmGroup"), IsEmpty());
    EXPECT_THAT(faults, IsEmpty());
}

TEST_F(TableAccess, TellsTheOperatorOfAConditionThatItDoesNotUnderstand) {
    EXPECT_EQ(0, Events().Delete("WHERE 1 = 1"));
    EXPECT_THAT(faults, ElementsAre("deleting from AlarmFwd_PagerEvents: this condition is not "
                                    "understood, and no row is touched: WHERE 1 = 1"));
}

TEST_F(TableAccess, SetsNoColumnOfAnEmptyListButCountsTheRows) {
    AddAlarm(7, 2);
    EXPECT_EQ(1, Alarms().Set("WHERE alarmlogID = 7", {}));
    EXPECT_THAT(Alarms().ReadAll("pagerstate"), ElementsAre("2"));
}

TEST_F(TableAccess, AppendsAnEmptyRowOfAnEmptyList) {
    EXPECT_EQ(0, Alarms().Insert({}));
    EXPECT_THAT(Alarms().ReadAll("alarmlogID"), ElementsAre(""));
}

TEST_F(TableAccess, TakesTheLastOfTwoValuesForOneColumn) {
    EXPECT_EQ(0, Events().Insert({{"PagerState", 2}, {"Pagerstate", 3}}));
    EXPECT_THAT(Events().ReadAll("PagerState"), ElementsAre("3"));
}

// --- Failures: a quiet result for the library, a message for the operator.

TEST_F(TableAccess, SaysWhyADatabaseIsNotOpened) {
    DBAsciiHandle handle = nullptr;
    EXPECT_NE(0, DBAsciiAccessOpen("none.db", 'n', &handle));
    EXPECT_THAT(faults, ElementsAre(HasSubstr("opening none.db: ")));
}

TEST_F(TableAccess, SaysWhyATableIsNotOpened) {
    DBAsciiHandle handle = nullptr;
    ASSERT_EQ(0, DBAsciiAccessOpen(database.c_str(), 'n', &handle));
    EXPECT_NE(0, DBAsciiAccessTableOpen(handle, "Host_Settings"));
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
    EXPECT_THAT(faults,
                ElementsAre("opening Host_Settings: the library has no table of this name"));
}

TEST_F(TableAccess, AnswersEveryCallWithoutAHandle) {
    DBAsciiRowSet rows = nullptr;
    DBAsciiElementList list = nullptr;
    const int32_t number = 7;
    int32_t lock = 0;
    EXPECT_NE(0, DBAsciiAccessTableOpen(nullptr, "AlarmLog"));
    EXPECT_NE(0, DBAsciiAccessClose(nullptr));
    EXPECT_NE(0, DBAsciiAccessCloseKeepStaticDllInfo(nullptr));
    EXPECT_NE(0, DBAsciiAccessLock(nullptr, "AlarmLog", 400, 300));
    EXPECT_NE(0, DBAsciiAccessUnlock(nullptr, "AlarmLog"));
    EXPECT_GT(0, DBAsciiAccessGetAllEntriesByCondition(nullptr, "AlarmLog", "alarmlogID", &rows, 0,
                                                       "7", 'r', nullptr, 'n', 0, 0));
    EXPECT_EQ(-1, DBAsciiAccessGetElementColumn(nullptr, "AlarmLog", "alarmlogID"));
    EXPECT_NE(0, DBAsciiAccessAddElement(nullptr, "AlarmLog", "alarmlogID", 'i', &number, &list));
    EXPECT_NE(0, DBAsciiAccessSet(nullptr, "AlarmLog", nullptr, 'y', 'y', 'y'));
    EXPECT_GT(0, DBAsciiAccessSQLConditionSet(nullptr, "AlarmLog", "WHERE alarmlogID = 7", nullptr,
                                              'y', 'y'));
    EXPECT_GT(0, DBAsciiAccessSQLConditionDelete(nullptr, "AlarmLog", "WHERE alarmlogID = 7", 'y'));
    EXPECT_GT(0, DBAsciiAccessWrite(nullptr, "AlarmLog", &lock));
    EXPECT_EQ(0, DBAsciiAccessFree(nullptr));
    EXPECT_EQ(nullptr, rows);
    EXPECT_EQ(nullptr, list);
    EXPECT_EQ(12U, faults.size());
}

TEST_F(TableAccess, AnswersEveryCallWithoutItsTexts) {
    DBAsciiHandle handle = nullptr;
    EXPECT_NE(0, DBAsciiAccessOpen(nullptr, 'n', &handle));
    OpenTable alarms = Alarms();
    EXPECT_NE(0, DBAsciiAccessTableOpen(alarms.handle, nullptr));
    EXPECT_EQ(-1, alarms.IndexOf(nullptr));
    const char* nothing = nullptr;
    DBAsciiElementList list = nullptr;
    EXPECT_NE(0,
              DBAsciiAccessAddElement(alarms.handle, "AlarmLog", "server", 't', &nothing, &list));
    EXPECT_NE(0, DBAsciiAccessAddElement(alarms.handle, "AlarmLog", "server", 't', nullptr, &list));
    EXPECT_NE(0,
              DBAsciiAccessAddElement(alarms.handle, "AlarmLog", "server", 'x', &nothing, &list));
    EXPECT_EQ(nullptr, list);
    EXPECT_EQ(6U, faults.size());
    EXPECT_THAT(faults, Contains("writing AlarmLog: a value is missing"));
}

TEST_F(TableAccess, ReportsAKeyColumnThatDoesNotExist) {
    EXPECT_THAT(Alarms().Read("server", "nonesuch", "7"), IsEmpty());
    EXPECT_THAT(faults, ElementsAre("reading AlarmLog: there is no column nonesuch"));
}

TEST_F(TableAccess, WritesARowWithoutTheColumnsThatAnOldDatabaseLacks) {
    Connection(database).Execute("ALTER TABLE AlarmFwd_PagerEvents DROP COLUMN ServerN");
    EXPECT_EQ(0, Events().Insert({{"AlmLogID", 7}, {"ServerN", "srv"}, {"PagerState", 2}}));
    EXPECT_THAT(Events().ReadAll("PagerState"), ElementsAre("2"));
    EXPECT_THAT(faults, ElementsAre("writing AlarmFwd_PagerEvents: there is no column ServerN"));
}

TEST_F(TableAccess, SeesThatAnotherProgramHasChangedATable) {
    ASSERT_EQ(0, Events().Insert({{"AlmLogID", 7}, {"ServerN", "srv"}, {"PagerState", 2}}));
    Connection(database).Execute("ALTER TABLE AlarmFwd_PagerEvents DROP COLUMN ServerN");
    EXPECT_EQ(-1, Events().IndexOf("ServerN"));
    EXPECT_THAT(Events().ReadAll("PagerState"), ElementsAre("2"));
}

TEST_F(TableAccess, ReportsAWriteThatFails) {
    Connection(database).Execute(
        "CREATE TRIGGER full BEFORE INSERT ON AlarmLog"
        " BEGIN SELECT RAISE(ABORT, 'the disk is full'); END");
    EXPECT_NE(0, Alarms().Insert({{"alarmlogID", 7}}));
    EXPECT_THAT(faults, ElementsAre(HasSubstr("writing AlarmLog: ")));
    EXPECT_THAT(faults, ElementsAre(HasSubstr("the disk is full")));
    EXPECT_THAT(Alarms().ReadAll("alarmlogID"), IsEmpty());
}

// An insert is one step with the disappearance of what it replaces.
TEST_F(TableAccess, KeepsAHiddenEventWhoseReplacementFails) {
    ASSERT_EQ(
        0, Events().Insert(
               {{"AlmGroup", "ops"}, {"AlmLogID", 7}, {"PagerDescr", "duty"}, {"PagerState", 2}}));
    {
        ChildProcess deleter({STORE_PROCESS, database, "delete-event"});
        ASSERT_EQ("deleted", deleter.ReadLine());
        Connection(database).Execute(
            "CREATE TRIGGER full BEFORE INSERT ON AlarmFwd_PagerEvents"
            " BEGIN SELECT RAISE(ABORT, 'the disk is full'); END");
        EXPECT_NE(
            0,
            Events().Insert(
                {{"AlmGroup", "ops"}, {"AlmLogID", 7}, {"PagerDescr", "duty"}, {"PagerState", 2}}));
    }
    EXPECT_THAT(Events().ReadAll("PagerDescr"), ElementsAre("duty"));
}

}  // namespace
}  // namespace host
