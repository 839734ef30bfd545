// What holds for every operation of every table class: what a failed open leads to, and that each
// call that can fail leaves nothing open, held or lost.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>

#include "tests/support/store_test.h"
#include "tests/unit/tables/records.h"

namespace {

using test_support::Call;
using test_support::MemoryStore;

struct Operation {
    const char* name;
    const char* table;
    const char* whenNotOpen;  // its result then
    bool isLocked;
    const char* close;
    std::function<std::string()> run;
};

// In the messages of a failed test.
std::ostream& operator<<(std::ostream& out, const Operation& operation) {
    return out << operation.name;
}

constexpr const char* kDatabase = MemoryStore::kDatabase;

template <class Record>
std::string Result(Record* record) {
    return Hold(record) != nullptr ? "a record" : "null";
}

std::string Result(int32_t number) {
    return std::to_string(number);
}

template <class Record>
std::string Result(int32_t count, Record** records) {
    HoldAll(records, count);
    return std::to_string(count);
}

const std::vector<Operation>& EveryOperation() {
    static const std::vector<Operation> operations = {
        {"FindComPort", "AlarmFwd_COMProperties", "null", false, "Close()",
         [] { return Result(CDB_ComPorts(kDatabase).FindComPort("COM 1")); }},
        {"GetPager", "AlarmFwd_PagerSetting", "null", false, "Close()",
         [] { return Result(CDB_PagerSettings(kDatabase).GetPager("anna")); }},
        {"GetAllPagers", "AlarmFwd_PagerSetting", "-1", false, "Close()",
         [] {
             Pager** pagers = nullptr;
             const int32_t count = CDB_PagerSettings(kDatabase).GetAllPagers(&pagers);
             return Result(count, pagers);
         }},
        {"FindTimeModel", "AlarmFwd_TMSetting", "null", false, "Close()",
         [] { return Result(CDB_TimeModels(kDatabase).FindTimeModel("office")); }},
        {"DeleteInactiveEvents", "AlarmFwd_PagerEvents", "-1", false, "Close()",
         [] { return Result(CDB_PagerFwdEvents(kDatabase).DeleteInactiveEvents()); }},
        {"GetActiveEvents", "AlarmFwd_PagerEvents", "0", false, "Close()",
         [] {
             PagerFwdEvent** events = nullptr;
             const int32_t count = CDB_PagerFwdEvents(kDatabase).GetActiveEvents(&events);
             return Result(count, events);
         }},
        {"FindFwdEvent", "AlarmFwd_PagerEvents", "null", false, "Close()",
         [] { return Result(CDB_PagerFwdEvents(kDatabase).FindFwdEvent(7, "ops", "anna")); }},
        {"NewPagerFwdEvent", "AlarmFwd_PagerEvents", "-1", false, "Close()",
         [] {
             return Result(CDB_PagerFwdEvents(kDatabase).NewPagerFwdEvent(
                 "ops", 7, "anna", "srv", kSeverityMajor, 5, kForwardBeingPaged));
         }},
        {"SetForwardState", "AlarmFwd_PagerEvents", "-1", false, "Close()",
         [] {
             return Result(
                 CDB_PagerFwdEvents(kDatabase).SetForwardState("ops", 7, "anna", kForwardDone));
         }},
        {"SetPagerForwarded", "AlarmFwd_PagerEvents", "-1", false, "Close()",
         [] {
             return Result(CDB_PagerFwdEvents(kDatabase).SetPagerForwarded("ops", 7, "anna", 4,
                                                                           kForwardDone));
         }},
        {"DeletePagerFwdEvent", "AlarmFwd_PagerEvents", "-1", false, "Close()",
         [] {
             return Result(CDB_PagerFwdEvents(kDatabase).DeletePagerFwdEvent("ops", 7, "anna"));
         }},
        {"DeleteEventsByAlarmLogId", "AlarmFwd_PagerEvents", "-1", false, "Close()",
         [] { return Result(CDB_PagerFwdEvents(kDatabase).DeleteEventsByAlarmLogId(7)); }},
        {"UpdateAlarmLog", "AlarmFwd_PagerEvents", "nothing", false, "Close()",
         [] {
             CDB_PagerFwdEvents(kDatabase).UpdateAlarmLog(7);
             return std::string("nothing");
         }},
        {"FindAlarmLogEntry", "AlarmLog", "null", false, "Close()",
         [] { return Result(CDB_AlarmLog(kDatabase).FindAlarmLogEntry(7)); }},
        {"GetAlarmLogFwdInfo", "AlarmLog", "null", false, "Close()",
         [] { return Result(CDB_AlarmLog(kDatabase).GetAlarmLogFwdInfo(7)); }},
        {"GetStationState", "AlarmLog", "0", false, "Close()",
         [] { return Result(CDB_AlarmLog(kDatabase).GetStationState(7)); }},
        {"SetStationState", "AlarmLog", "-1", true, "CloseKeepStaticDllInfo()",
         [] { return Result(CDB_AlarmLog(kDatabase).SetStationState(7, kForwardDone)); }},
        {"SetPagerState", "AlarmLog", "-1", true, "Close()",
         [] { return Result(CDB_AlarmLog(kDatabase).SetPagerState(7, kForwardDone)); }},
        {"GetAllAlarmLogEntries", "AlarmLog", "-1", false, "Close()",
         [] {
             AlarmLogEntry** entries = nullptr;
             const int32_t count = CDB_AlarmLog(kDatabase).GetAllAlarmLogEntries(&entries);
             return Result(count, entries);
         }},
    };
    return operations;
}

class EveryTableOperation : public ::testing::TestWithParam<Operation> {
 protected:
    // A row in each table that the operations find.
    static void Fill(MemoryStore& store) {
        store.AddAllTables();
        store.Insert("AlarmFwd_COMProperties", {{"Description", "COM 1"}});
        store.Insert("AlarmFwd_PagerSetting", {{"description", "anna"}});
        store.InsertTimeModel("office", "1");
        store.Insert(
            "AlarmFwd_PagerEvents",
            {{"AlmLogID", "7"}, {"AlmGroup", "ops"}, {"PagerDescr", "anna"}, {"PagerState", "2"}});
        store.Insert("AlarmLog", {{"alarmlogID", "7"}, {"stationstate", "2"}});
    }
};

INSTANTIATE_TEST_SUITE_P(Each, EveryTableOperation, ::testing::ValuesIn(EveryOperation()),
                         [](const auto& operation) { return operation.param.name; });

TEST_P(EveryTableOperation, WithoutTheDatabaseNothingElseIsCalled) {
    MemoryStore store;
    Fill(store);
    store.Fail(Call::kOpen);

    EXPECT_EQ(GetParam().whenNotOpen, GetParam().run());

    EXPECT_EQ(Lines{"Open(alarms, 'n') -> -1"}, store.Calls());
    EXPECT_EQ("", store.Verdict());
}

TEST_P(EveryTableOperation, WithoutTheTableTheDatabaseIsClosed) {
    MemoryStore store;
    Fill(store);
    store.Fail(Call::kTableOpen);

    EXPECT_EQ(GetParam().whenNotOpen, GetParam().run());

    const std::string table = GetParam().table;
    Lines expected = {"Open(alarms, 'n')", "TableOpen(" + table + ") -> -1", GetParam().close};
    if (GetParam().isLocked) {
        expected.insert(expected.begin() + 1, "Lock(" + table + ", 400, 300)");
        expected.insert(expected.end() - 1, "Unlock(" + table + ")");
    }
    EXPECT_EQ(expected, store.Calls());
    EXPECT_EQ("", store.Verdict());
}

TEST_P(EveryTableOperation, WhateverCallFailsNothingStaysOpenOrHeld) {
    for (int nth = 1;; ++nth) {
        SCOPED_TRACE("call " + std::to_string(nth) + " fails");
        MemoryStore store;
        Fill(store);
        store.FailAnyCall(nth);

        GetParam().run();

        if (store.Calls().size() < static_cast<size_t>(nth)) {
            EXPECT_GT(nth, 3) << "hardly a call was made";
            return;
        }
        EXPECT_EQ("", store.Verdict());
        ASSERT_LT(nth, 100) << "the calls never end";
    }
}

TEST_P(EveryTableOperation, ATableWithoutAnyColumnDoesNoHarm) {
    MemoryStore store;
    Fill(store);
    store.FailAlways(Call::kGetElementColumn);
    store.FailAlways(Call::kAddElement);

    GetParam().run();

    EXPECT_EQ("", store.Verdict());
}

TEST_P(EveryTableOperation, ANegativeCountIsNoRow) {
    MemoryStore store;
    Fill(store);
    store.FailAlways(Call::kGetAllEntriesByCondition, -7);

    GetParam().run();

    EXPECT_EQ(Lines{}, store.Calls(Call::kGetElementColumn));
    EXPECT_EQ(Lines{}, store.Calls(Call::kFree));
    EXPECT_EQ("", store.Verdict());
}

TEST_P(EveryTableOperation, ARowSetWithoutARowIsFreedToo) {
    MemoryStore store;
    store.AddAllTables();
    store.HandOutEmptyRowSets();

    EXPECT_THAT(GetParam().run(), ::testing::Ne("a record"));

    const size_t reads = store.Calls(Call::kGetAllEntriesByCondition).size();
    EXPECT_EQ(reads, store.Calls(Call::kFree).size());
    EXPECT_EQ(Lines{}, store.Calls(Call::kGetElementColumn));
    EXPECT_EQ("", store.Verdict());
}

TEST(EveryTableClass, OpensTheDatabaseOfItsName) {
    MemoryStore store("second");
    store.AddAllTables();
    std::string name = "second";
    CDB_ComPorts ports(name.c_str());
    CDB_AlarmLog log(name.c_str());
    name = "other!";  // the name is copied

    EXPECT_EQ(nullptr, ports.FindComPort("COM 1"));
    EXPECT_EQ(0, log.GetStationState(1));

    EXPECT_EQ(2U, store.CallsWith("Open(second, 'n')").size());
}

TEST(EveryTableClass, TakesNullTextsForEmptyOnes) {
    MemoryStore store("");
    store.AddAllTables();
    EXPECT_EQ(nullptr, CDB_ComPorts(nullptr).FindComPort(nullptr));
    EXPECT_EQ(nullptr, CDB_PagerSettings(nullptr).GetPager(nullptr));
    EXPECT_EQ(nullptr, CDB_TimeModels(nullptr).FindTimeModel(nullptr));
    CDB_PagerFwdEvents events(nullptr);
    EXPECT_EQ(0, events.NewPagerFwdEvent(nullptr, 7, nullptr, nullptr, kSeverityMajor, 5,
                                         kForwardBeingPaged));
    EXPECT_EQ("a record", Result(events.FindFwdEvent(7, nullptr, nullptr)));
    EXPECT_EQ(1, events.DeletePagerFwdEvent(nullptr, 7, nullptr));
    EXPECT_EQ("", store.Verdict());
}

}  // namespace
