// What the library relies on, held against a table store.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pagerfwd/table_access.h>

#include <atomic>
#include <string>
#include <thread>

#include "tests/unit/host/store_under_test.h"
#include "tests/unit/host/table_client.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StoreContract : public ::testing::Test {
 protected:
    void TearDown() override { EXPECT_EQ("", store->Verdict()); }

    OpenTable Open(const char* table) const { return {store->Database(), table}; }
    OpenTable Pagers() const { return Open("AlarmFwd_PagerSetting"); }
    OpenTable Events() const { return Open("AlarmFwd_PagerEvents"); }
    OpenTable Alarms() const { return Open("AlarmLog"); }

    static void AddEvent(OpenTable& events, int32_t alarm, const char* pager, int32_t state) {
        ASSERT_EQ(0, events.Insert({{"AlmLogID", alarm},
                                    {"AlmGroup", "ops"},
                                    {"PagerDescr", pager},
                                    {"PagerState", state}}));
    }
    static std::string Key(int32_t alarm, const std::string& pager) {
        return "WHERE AlmGroup = \"ops\" AND AlmLogID = " + std::to_string(alarm) +
               " AND PagerDescr = \"" + pager + "\"";
    }
    static void AddAlarm(OpenTable& alarms, int32_t number) {
        ASSERT_EQ(0, alarms.Insert({{"alarmlogID", number}, {"pagerstate", 2}}));
    }

    const std::unique_ptr<StoreUnderTest> store = MakeStore();
};

// --- Opening.

TEST_F(StoreContract, ADatabaseThatDoesNotExistIsNotOpened) {
    DBAsciiHandle handle = nullptr;
    EXPECT_NE(0, DBAsciiAccessOpen("/nowhere/at/all.db", 'n', &handle));
}

TEST_F(StoreContract, ATableThatDoesNotExistIsNotOpened) {
    DBAsciiHandle handle = nullptr;
    ASSERT_EQ(0, DBAsciiAccessOpen(store->Database().c_str(), 'n', &handle));
    EXPECT_NE(0, DBAsciiAccessTableOpen(handle, "Nonesuch"));
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
}

TEST_F(StoreContract, AllFiveTablesOpen) {
    for (const char* table : {"AlarmFwd_COMProperties", "AlarmFwd_PagerSetting",
                              "AlarmFwd_TMSetting", "AlarmFwd_PagerEvents", "AlarmLog"}) {
        EXPECT_TRUE(Open(table).IsOpen()) << table;
    }
}

TEST_F(StoreContract, EitherCloseEndsTheHandle) {
    DBAsciiHandle handle = nullptr;
    ASSERT_EQ(0, DBAsciiAccessOpen(store->Database().c_str(), 'n', &handle));
    EXPECT_EQ(0, DBAsciiAccessCloseKeepStaticDllInfo(handle));
    ASSERT_EQ(0, DBAsciiAccessOpen(store->Database().c_str(), 'n', &handle));
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
}

// --- Columns.

TEST_F(StoreContract, ColumnsHaveAPlaceWhateverTheirCase) {
    const OpenTable events = Events();
    EXPECT_GE(events.IndexOf("PagerState"), 0);
    EXPECT_EQ(events.IndexOf("PagerState"), events.IndexOf("Pagerstate"));
    EXPECT_NE(events.IndexOf("PagerState"), events.IndexOf("PagerRetries"));
}

TEST_F(StoreContract, AnUnknownColumnHasNoPlace) {
    EXPECT_EQ(-1, Events().IndexOf("Nonesuch"));
}

TEST_F(StoreContract, TheDescriptionOfATimeModelStandsBehindTheHours) {
    EXPECT_EQ(168, Open("AlarmFwd_TMSetting").IndexOf("description"));
}

// --- Reading.

TEST_F(StoreContract, AnEmptyTableHasNoRows) {
    const OpenTable pagers = Pagers();
    EXPECT_THAT(pagers.ReadAll("owner"), IsEmpty());
    EXPECT_THAT(pagers.Read("owner", "description", "duty"), IsEmpty());
}

TEST_F(StoreContract, EveryCellIsAText) {
    OpenTable pagers = Pagers();
    ASSERT_EQ(0, pagers.Insert({{"description", "duty"}, {"numretries", -5}, {"pgtype", 0}}));
    EXPECT_THAT(pagers.ReadAll("description"), ElementsAre("duty"));
    EXPECT_THAT(pagers.ReadAll("numretries"), ElementsAre("-5"));
    EXPECT_THAT(pagers.ReadAll("pgtype"), ElementsAre("0"));
}

TEST_F(StoreContract, AColumnThatWasNotGivenIsEmpty) {
    OpenTable pagers = Pagers();
    ASSERT_EQ(0, pagers.Insert({{"description", "duty"}}));
    EXPECT_THAT(pagers.ReadAll("owner"), ElementsAre(""));
}

TEST_F(StoreContract, AKeySelectsTheRowsThatEqualIt) {
    OpenTable pagers = Pagers();
    for (const char* description : {"duty", "Duty", "duty ", "dut", "", "duty"}) {
        ASSERT_EQ(0, pagers.Insert({{"description", description}}));
    }
    EXPECT_THAT(pagers.Read("description", "description", "duty"), ElementsAre("duty", "duty"));
    EXPECT_THAT(pagers.Read("description", "description", ""), ElementsAre(""));
    EXPECT_THAT(pagers.Read("description", "description", "d%"), IsEmpty());
}

TEST_F(StoreContract, ANumberIsAKeyToo) {
    OpenTable events = Events();
    AddEvent(events, 7, "a", 2);
    AddEvent(events, 70, "b", 2);
    EXPECT_THAT(events.Read("PagerDescr", "AlmLogID", "7"), ElementsAre("a"));
}

TEST_F(StoreContract, TextsComeBackByteForByte) {
    const std::string large(65536, 'x');
    const std::string odd[] = {"J\xFCrgen",        "\xB1\x5C", "it's",
                               "\"quoted\"",       "100%s%n",  "'; DROP TABLE AlarmLog; --",
                               " lead and trail ", large};
    OpenTable pagers = Pagers();
    for (const std::string& text : odd) {
        ASSERT_EQ(0, pagers.Insert({{"description", "duty"}, {"owner", text.c_str()}}));
    }
    EXPECT_THAT(pagers.ReadAll("owner"), ::testing::ElementsAreArray(odd));
    EXPECT_THAT(pagers.Read("owner", "owner", odd[5].c_str()), ElementsAre(odd[5]));
}

TEST_F(StoreContract, AWriteIsSeenThroughEveryOtherHandle) {
    OpenTable writer = Pagers();
    const OpenTable reader = Pagers();
    ASSERT_EQ(0, writer.Insert({{"description", "duty"}}));
    EXPECT_THAT(reader.ReadAll("description"), ElementsAre("duty"));
}

// --- The order of rows.

TEST_F(StoreContract, RowsStandInOrderOfInsertion) {
    OpenTable events = Events();
    AddEvent(events, 30, "c", 2);
    AddEvent(events, 10, "a", 2);
    AddEvent(events, 20, "b", 2);
    EXPECT_THAT(events.ReadAll("PagerDescr"), ElementsAre("c", "a", "b"));
    EXPECT_THAT(events.Read("PagerDescr", "PagerState", "2"), ElementsAre("c", "a", "b"));
}

TEST_F(StoreContract, AReplacedRowStandsAtTheEnd) {
    OpenTable events = Events();
    for (const char* pager : {"a", "b", "c"}) {
        AddEvent(events, 7, pager, 2);
    }
    ASSERT_EQ(1, events.Delete(Key(7, "a")));
    AddEvent(events, 7, "a", 2);
    EXPECT_THAT(events.Read("PagerDescr", "AlmLogID", "7"), ElementsAre("b", "c", "a"));

    ASSERT_EQ(1, events.Delete(Key(7, "a")));
    AddEvent(events, 7, "a", 3);
    EXPECT_THAT(events.Read("PagerDescr", "AlmLogID", "7"), ElementsAre("b", "c", "a"));
}

TEST_F(StoreContract, AChangedRowKeepsItsPlace) {
    OpenTable events = Events();
    AddEvent(events, 7, "a", 2);
    AddEvent(events, 7, "b", 2);
    ASSERT_EQ(1, events.Set(Key(7, "a"), {{"PagerState", 3}}));
    EXPECT_THAT(events.ReadAll("PagerState"), ElementsAre("3", "2"));
}

// --- Changing rows.

TEST_F(StoreContract, AConditionSelectsTheRowOfItsKey) {
    OpenTable events = Events();
    AddEvent(events, 7, "a", 2);
    AddEvent(events, 7, "b", 2);
    AddEvent(events, 8, "a", 2);
    EXPECT_EQ(1, events.Set(Key(7, "a"), {{"Pagerstate", 3}, {"PagerRetries", 4}}));
    EXPECT_THAT(events.ReadAll("PagerState"), ElementsAre("3", "2", "2"));
    EXPECT_THAT(events.ReadAll("PagerRetries"), ElementsAre("4", "", ""));
    EXPECT_EQ(0, events.Set(Key(9, "a"), {{"PagerState", 3}}));
}

TEST_F(StoreContract, WhatIsNotAConditionSelectsNothing) {
    OpenTable events = Events();
    AddEvent(events, 7, "a", 2);
    for (const std::string& text :
         {std::string(""), std::string("WHERE 1"), "where" + Key(7, "a").substr(5),
          Key(7, "a") + " ", std::string("WHERE alarmlogID = 7"),
          std::string("WHERE alarmlogID = 7 OR 1 = 1"),
          std::string("WHERE AlarmFwd_PagerEvents.AlmLogID = 7"),
          std::string("WHERE AlarmFwd_PagerEvents.PagerState <> 2 OR 1 = 1"),
          std::string("WHERE AlmGroup = \"ops\" AND AlmLogID = seven AND PagerDescr = \"a\"")}) {
        EXPECT_EQ(0, events.Set(text, {{"PagerState", 3}})) << text;
        EXPECT_EQ(0, events.Delete(text)) << text;
    }
    EXPECT_THAT(events.ReadAll("PagerState"), ElementsAre("2"));
}

TEST_F(StoreContract, AChangeIsSeenOnceItIsWritten) {
    OpenTable alarms = Alarms();
    AddAlarm(alarms, 7);
    int32_t noLock = -1;
    EXPECT_EQ(1, alarms.Set("WHERE alarmlogID = 7", {{"pagerstate", 4}}, 'n'));
    EXPECT_THAT(Alarms().ReadAll("pagerstate"), ElementsAre("2"));
    EXPECT_EQ(1, DBAsciiAccessWrite(alarms.handle, "AlarmLog", &noLock));
    EXPECT_THAT(Alarms().ReadAll("pagerstate"), ElementsAre("4"));
}

TEST_F(StoreContract, AChangeIsWrittenUnderTheLock) {
    {
        OpenTable alarms = Alarms();
        AddAlarm(alarms, 7);
        AddAlarm(alarms, 8);
        int32_t lock = DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300);
        ASSERT_EQ(0, lock);
        EXPECT_EQ(1, alarms.Set("WHERE alarmlogID = 8", {{"pagerstate", 4}}, 'n'));
        EXPECT_EQ(1, DBAsciiAccessWrite(alarms.handle, "AlarmLog", &lock));
        if (lock == 0) {
            EXPECT_EQ(0, DBAsciiAccessUnlock(alarms.handle, "AlarmLog"));
        }
    }
    EXPECT_THAT(Alarms().ReadAll("pagerstate"), ElementsAre("2", "4"));
}

// --- Deleting rows.

TEST_F(StoreContract, EventsInOtherStatesAreDeleted) {
    OpenTable events = Events();
    AddEvent(events, 7, "a", 1);
    AddEvent(events, 7, "b", 2);
    AddEvent(events, 7, "c", 3);
    AddEvent(events, 7, "d", 22);
    EXPECT_EQ(3, events.Delete("WHERE AlarmFwd_PagerEvents.PagerState <> 2"));
    EXPECT_THAT(events.ReadAll("PagerDescr"), ElementsAre("b"));
}

TEST_F(StoreContract, AllEventsOfAnAlarmAreDeleted) {
    OpenTable events = Events();
    AddEvent(events, 7, "a", 2);
    AddEvent(events, 8, "a", 2);
    AddEvent(events, 7, "b", 3);
    EXPECT_EQ(2, events.Delete("WHERE AlarmFwd_PagerEvents.AlmLogID  = 7"));
    EXPECT_THAT(events.ReadAll("AlmLogID"), ElementsAre("8"));
}

TEST_F(StoreContract, ADeletedEventIsNotSeenAgain) {
    OpenTable events = Events();
    AddEvent(events, 7, "a", 2);
    EXPECT_EQ(1, events.Delete(Key(7, "a")));
    EXPECT_EQ(0, events.Delete(Key(7, "a")));
    EXPECT_EQ(0, events.Set(Key(7, "a"), {{"PagerState", 3}}));
    EXPECT_EQ(0, events.Delete("WHERE AlarmFwd_PagerEvents.AlmLogID  = 7"));
    EXPECT_THAT(Events().ReadAll("PagerDescr"), IsEmpty());
}

TEST_F(StoreContract, AlarmsAreDeletedByTheirNumber) {
    OpenTable alarms = Alarms();
    AddAlarm(alarms, 7);
    AddAlarm(alarms, 77);
    EXPECT_EQ(1, alarms.Delete("WHERE alarmlogID = 7"));
    EXPECT_THAT(alarms.ReadAll("alarmlogID"), ElementsAre("77"));
}

// --- The lock.

TEST_F(StoreContract, TheLockIsTakenBeforeTheTableIsOpened) {
    DBAsciiHandle handle = nullptr;
    ASSERT_EQ(0, DBAsciiAccessOpen(store->Database().c_str(), 'n', &handle));
    EXPECT_EQ(0, DBAsciiAccessLock(handle, "AlarmLog", 400, 300));
    EXPECT_EQ(0, DBAsciiAccessTableOpen(handle, "AlarmLog"));
    EXPECT_EQ(0, DBAsciiAccessUnlock(handle, "AlarmLog"));
    EXPECT_EQ(0, DBAsciiAccessClose(handle));
}

TEST_F(StoreContract, WritersUnderTheLockDoNotLoseEachOthersChanges) {
    {
        OpenTable alarms = Alarms();
        AddAlarm(alarms, 7);
    }
    // Each adds 1 to what it reads: an interleaving would lose a step.
    const auto count = [this] {
        for (int i = 0; i < 20; ++i) {
            OpenTable alarms = Alarms();
            int32_t lock = DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300);
            ASSERT_EQ(0, lock);
            const int32_t state = std::stoi(alarms.ReadAll("pagerstate").at(0));
            ASSERT_EQ(1, alarms.Set("WHERE alarmlogID = 7", {{"pagerstate", state + 1}}, 'n'));
            ASSERT_EQ(1, DBAsciiAccessWrite(alarms.handle, "AlarmLog", &lock));
            if (lock == 0) {
                DBAsciiAccessUnlock(alarms.handle, "AlarmLog");
            }
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_THAT(Alarms().ReadAll("pagerstate"), ElementsAre("42"));
}

TEST_F(StoreContract, ReadersDoNotWaitForTheLock) {
    OpenTable alarms = Alarms();
    AddAlarm(alarms, 7);
    ASSERT_EQ(0, DBAsciiAccessLock(alarms.handle, "AlarmLog", 400, 300));
    EXPECT_THAT(Alarms().ReadAll("alarmlogID"), ElementsAre("7"));
    EXPECT_EQ(0, DBAsciiAccessUnlock(alarms.handle, "AlarmLog"));
}

// --- Lists.

TEST_F(StoreContract, AListIsConsumedByAWriteThatHitsNothing) {
    OpenTable alarms = Alarms();
    EXPECT_EQ(0, alarms.Set("WHERE alarmlogID = 7", {{"pagerstate", 4}}));
    EXPECT_EQ(0, alarms.Set("not a condition", {{"pagerstate", 4}}));
}

TEST_F(StoreContract, TheTextOfAnElementIsCopied) {
    OpenTable pagers = Pagers();
    std::string text = "duty";
    const char* pointer = text.c_str();
    DBAsciiElementList list = nullptr;
    ASSERT_EQ(0, DBAsciiAccessAddElement(pagers.handle, "AlarmFwd_PagerSetting", "description", 't',
                                         &pointer, &list));
    text = "gone";
    ASSERT_EQ(0, DBAsciiAccessSet(pagers.handle, "AlarmFwd_PagerSetting", list, 'y', 'y', 'y'));
    EXPECT_THAT(pagers.ReadAll("description"), ElementsAre("duty"));
}

}  // namespace
