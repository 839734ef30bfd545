// Pager forward events: conditions, the order of calls, rows, and the fold into the alarm log.
#include "tables/pager_fwd_events.h"

#include <limits>

#include "tests/support/store_test.h"
#include "tests/unit/tables/records.h"

namespace {

using test_support::Call;
using test_support::MemoryStore;

constexpr char kEventTable[] = "AlarmFwd_PagerEvents";

class PagerFwdEvents : public test_support::StoreTest {
 protected:
    void InsertEvent(int32_t alarm, const std::string& group, const std::string& pager, int state) {
        store.Insert(kEventTable, {{"AlmLogID", std::to_string(alarm)},
                                   {"AlmGroup", group},
                                   {"PagerDescr", pager},
                                   {"ServerN", "srv"},
                                   {"Severity", "3"},
                                   {"PagerRetries", "5"},
                                   {"PagerState", std::to_string(state)}});
    }

    CDB_PagerFwdEvents events{MemoryStore::kDatabase};
};

// --- Reading.

const Lines kColumnLookUps =
    LookUps(kEventTable, {"AlmGroup -> 1", "AlmLogID -> 0", "PagerDescr -> 2", "PagerRetries -> 5",
                          "PagerState -> 6", "ServerN -> 3", "Severity -> 4"});

TEST_F(PagerFwdEvents, ActiveEventsAreThoseInState2InRowOrder) {
    InsertEvent(7, "ops", "anna", 2);
    InsertEvent(7, "ops", "bert", 3);
    InsertEvent(8, "net", "carl", 2);

    PagerFwdEvent** rows = nullptr;
    ASSERT_EQ(2, events.GetActiveEvents(&rows));

    const auto active = HoldAll(rows, 2);
    EXPECT_EQ("ops", Text(active[0]->almGroup));
    EXPECT_EQ(7, active[0]->almLogId);
    EXPECT_EQ("anna", Text(active[0]->pagerDescr));
    EXPECT_EQ(5U, active[0]->pagerRetries);
    EXPECT_EQ(kForwardBeingPaged, active[0]->pagerState);
    EXPECT_EQ("srv", Text(active[0]->serverN));
    EXPECT_EQ(kSeverityMinor, active[0]->severity);
    EXPECT_EQ("carl", Text(active[1]->pagerDescr));
    const Lines expected =
        Lines{"Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)",
              "GetAllEntriesByCondition(AlarmFwd_PagerEvents, PagerState = \"2\") -> 2"} +
        kColumnLookUps + Lines{"Free()", "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerFwdEvents, NoActiveEventIs0AndHandsNothingOut) {
    InsertEvent(7, "ops", "bert", 3);
    PagerFwdEvent* untouched = nullptr;
    PagerFwdEvent** rows = &untouched;

    EXPECT_EQ(0, events.GetActiveEvents(&rows));

    EXPECT_EQ(&untouched, rows);
    const Lines expected = {
        "Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)",
        "GetAllEntriesByCondition(AlarmFwd_PagerEvents, PagerState = \"2\") -> 0", "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerFwdEvents, AnUnreadableTableHasNoActiveEventAndHandsNothingOut) {
    InsertEvent(7, "ops", "anna", 2);
    PagerFwdEvent* untouched = nullptr;
    for (const Call failing : {Call::kOpen, Call::kTableOpen, Call::kGetAllEntriesByCondition}) {
        PagerFwdEvent** rows = &untouched;
        store.Fail(failing);
        EXPECT_EQ(0, events.GetActiveEvents(&rows));
        EXPECT_EQ(&untouched, rows);
    }
}

TEST_F(PagerFwdEvents, FindsTheFirstRowThatMatchesTheWholeKey) {
    InsertEvent(8, "ops", "anna", 1);
    InsertEvent(7, "net", "anna", 1);
    InsertEvent(7, "ops", "bert", 1);
    InsertEvent(7, "ops", "anna", 3);
    InsertEvent(7, "ops", "anna", 4);

    const auto event = Hold(events.FindFwdEvent(7, "ops", "anna"));

    ASSERT_NE(nullptr, event);
    EXPECT_EQ(7, event->almLogId);
    EXPECT_EQ("ops", Text(event->almGroup));
    EXPECT_EQ("anna", Text(event->pagerDescr));
    EXPECT_EQ(kForwardOffLimit, event->pagerState);
    const Lines expected =
        Lines{"Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)",
              "GetAllEntriesByCondition(AlarmFwd_PagerEvents, AlmLogID = \"7\") -> 4"} +
        kColumnLookUps + Lines{"Free()", "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerFwdEvents, KeysAreComparedExactly) {
    InsertEvent(7, "ops", "anna", 2);
    const struct {
        int32_t alarm;
        const char* group;
        const char* pager;
        const char* why;
    } strangers[] = {
        {7, "Ops", "anna", "another case in the group"},
        {7, "ops", "Anna", "another case in the pager"},
        {7, "op", "anna", "a part of the group"},
        {7, "ops", "anna ", "a blank behind the pager"},
        {7, "", "", "empty texts"},
        {7, "anna", "ops", "the other way round"},
        {70, "ops", "anna", "another alarm"},
    };
    for (const auto& each : strangers) {
        EXPECT_EQ(nullptr, events.FindFwdEvent(each.alarm, each.group, each.pager)) << each.why;
    }
    EXPECT_NE(nullptr, Hold(events.FindFwdEvent(7, "ops", "anna")));
}

TEST_F(PagerFwdEvents, NegativeIdsAreDecimalTextToo) {
    InsertEvent(std::numeric_limits<int32_t>::min(), "ops", "anna", 2);

    const auto event =
        Hold(events.FindFwdEvent(std::numeric_limits<int32_t>::min(), "ops", "anna"));

    ASSERT_NE(nullptr, event);
    EXPECT_EQ(std::numeric_limits<int32_t>::min(), event->almLogId);
}

TEST_F(PagerFwdEvents, WithoutTheColumnsOfTheKeyNoRowMatches) {
    store.AddTable(kEventTable, {"AlmLogID", "PagerState"});
    store.Insert(kEventTable, {{"AlmLogID", "7"}});
    EXPECT_EQ(nullptr, events.FindFwdEvent(7, "", ""));
}

TEST_F(PagerFwdEvents, MissingColumnsLeaveNullAnd0) {
    store.AddTable(kEventTable, {"PagerState"});
    store.Insert(kEventTable, {{"PagerState", "2"}});

    PagerFwdEvent** rows = nullptr;
    ASSERT_EQ(1, events.GetActiveEvents(&rows));

    const auto active = HoldAll(rows, 1);
    EXPECT_EQ(nullptr, active[0]->almGroup);
    EXPECT_EQ(0, active[0]->almLogId);
    EXPECT_EQ(nullptr, active[0]->pagerDescr);
    EXPECT_EQ(0U, active[0]->pagerRetries);
    EXPECT_EQ(kForwardBeingPaged, active[0]->pagerState);
    EXPECT_EQ(nullptr, active[0]->serverN);
    EXPECT_EQ(0, active[0]->severity);
}

// --- Writing.

TEST_F(PagerFwdEvents, NewRowIsBuiltInTheOrderOfItsColumns) {
    EXPECT_EQ(
        0, events.NewPagerFwdEvent("ops", 7, "anna", "srv", kSeverityMajor, 5, kForwardBeingPaged));

    const Lines expected = {
        "Open(alarms, 'n')",
        "TableOpen(AlarmFwd_PagerEvents)",
        "AddElement(AlarmFwd_PagerEvents, AlmLogID, 'i', 7)",
        "AddElement(AlarmFwd_PagerEvents, AlmGroup, 't', \"ops\")",
        "AddElement(AlarmFwd_PagerEvents, PagerDescr, 't', \"anna\")",
        "AddElement(AlarmFwd_PagerEvents, PagerState, 'i', 2)",
        "AddElement(AlarmFwd_PagerEvents, PagerRetries, 'i', 5)",
        "AddElement(AlarmFwd_PagerEvents, Severity, 'i', 2)",
        "AddElement(AlarmFwd_PagerEvents, ServerN, 't', \"srv\")",
        ("Set(AlarmFwd_PagerEvents, {AlmLogID = 7, AlmGroup = \"ops\", PagerDescr = \"anna\", "
         "PagerState = 2, PagerRetries = 5, Severity = 2, ServerN = \"srv\"}, 'y', 'y', 'y')"),
        "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerFwdEvents, NewRowReadsBackAsWritten) {
    const auto unknown = static_cast<TRAP_SEVERITY>(-9);
    events.NewPagerFwdEvent("o\"ps", -7, "anna", "", unknown, 4294967295U, kForwardBeingPaged);

    const auto event = Hold(events.FindFwdEvent(-7, "o\"ps", "anna"));

    ASSERT_NE(nullptr, event);
    EXPECT_EQ(4294967295U, event->pagerRetries);
    EXPECT_EQ(kForwardBeingPaged, event->pagerState);
    EXPECT_EQ("", Text(event->serverN));
    EXPECT_EQ(unknown, event->severity);
}

TEST_F(PagerFwdEvents, ResultOfTheNewRowIsThatOfTheWrite) {
    store.Fail(Call::kSet, 1, 12);
    EXPECT_EQ(12, events.NewPagerFwdEvent("ops", 7, "anna", "srv", kSeverityMajor, 5,
                                          kForwardBeingPaged));
    EXPECT_EQ(0U, store.RowCount(kEventTable));
}

// A page without a state would be deleted by the next start.
TEST_F(PagerFwdEvents, NoHalfRowIsWritten) {
    for (int failing = 1; failing <= 7; ++failing) {
        SCOPED_TRACE("element " + std::to_string(failing));
        store.ForgetCalls();
        store.Fail(Call::kAddElement, failing);
        EXPECT_EQ(-1, events.NewPagerFwdEvent("ops", 7, "anna", "srv", kSeverityMajor, 5,
                                              kForwardBeingPaged));
        EXPECT_EQ(0U, store.RowCount(kEventTable));
        EXPECT_EQ(Lines{}, store.Calls(Call::kSet));
    }
}

// The table access frees the list only where it takes it: in a change of no row, never written.
TEST_F(PagerFwdEvents, ElementsOfAHalfRowAreGivenBack) {
    InsertEvent(7, "ops", "anna", 2);
    store.Fail(Call::kAddElement, 3);
    events.NewPagerFwdEvent("net", 8, "bert", "srv", kSeverityMajor, 5, kForwardOffLimit);
    EXPECT_EQ((Lines{"SQLConditionSet(AlarmFwd_PagerEvents, WHERE AlmGroup = \"\" AND "
                     "AlmLogID = 0 AND PagerDescr = \"\", {AlmLogID = 8, AlmGroup = \"net\", "
                     "PagerState = 3, PagerRetries = 5, Severity = 2, ServerN = \"srv\"}, "
                     "'y', 'n') -> 0"}),
              store.Calls(Call::kSQLConditionSet));
    EXPECT_EQ((Lines{"anna"}), store.Column(kEventTable, "PagerDescr"));
}

TEST_F(PagerFwdEvents, NoHalfChangeIsWritten) {
    InsertEvent(7, "ops", "anna", 2);
    store.Fail(Call::kAddElement, 1);
    EXPECT_EQ(-1, events.SetForwardState("ops", 7, "anna", kForwardOffLimit));
    for (const int failing : {1, 2}) {
        store.Fail(Call::kAddElement, failing);
        EXPECT_EQ(-1, events.SetPagerForwarded("ops", 7, "anna", 4, kForwardDone));
    }
    EXPECT_EQ((Lines{"2"}), store.Column(kEventTable, "PagerState"));
    EXPECT_EQ((Lines{"5"}), store.Column(kEventTable, "PagerRetries"));
}

TEST_F(PagerFwdEvents, StateIsSetByTheWholeKey) {
    InsertEvent(7, "ops", "anna", 2);
    InsertEvent(7, "ops", "bert", 2);

    EXPECT_EQ(1, events.SetForwardState("ops", 7, "anna", kForwardOffLimit));

    EXPECT_EQ((Lines{"3", "2"}), store.Column(kEventTable, "PagerState"));
    const Lines expected = {
        "Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)",
        "AddElement(AlarmFwd_PagerEvents, PagerState, 'i', 3)",
        ("SQLConditionSet(AlarmFwd_PagerEvents, WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND "
         "PagerDescr = \"anna\", {PagerState = 3}, 'y', 'y') -> 1"),
        "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerFwdEvents, KeepsTheLowerCaseSOfSetPagerForwarded) {
    InsertEvent(7, "ops", "anna", 2);

    EXPECT_EQ(1, events.SetPagerForwarded("ops", 7, "anna", 4, kForwardDone));

    EXPECT_EQ((Lines{"4"}), store.Column(kEventTable, "PagerState"));
    EXPECT_EQ((Lines{"4"}), store.Column(kEventTable, "PagerRetries"));
    const Lines expected = {
        "Open(alarms, 'n')",
        "TableOpen(AlarmFwd_PagerEvents)",
        "AddElement(AlarmFwd_PagerEvents, Pagerstate, 'i', 4)",
        "AddElement(AlarmFwd_PagerEvents, PagerRetries, 'i', 4)",
        ("SQLConditionSet(AlarmFwd_PagerEvents, WHERE AlmGroup = \"ops\" AND AlmLogID = 7 AND "
         "PagerDescr = \"anna\", {Pagerstate = 4, PagerRetries = 4}, 'y', 'y') -> 1"),
        "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerFwdEvents, SetPagerForwardedKeepsStateAndRetriesApart) {
    InsertEvent(7, "ops", "anna", 2);
    events.SetPagerForwarded("ops", 7, "anna", -1, kForwardOffLimit);
    EXPECT_EQ((Lines{"3"}), store.Column(kEventTable, "PagerState"));
    EXPECT_EQ((Lines{"-1"}), store.Column(kEventTable, "PagerRetries"));
}

TEST_F(PagerFwdEvents, RowIsDeletedByTheWholeKey) {
    InsertEvent(7, "ops", "anna", 2);
    InsertEvent(7, "ops", "bert", 2);

    EXPECT_EQ(1, events.DeletePagerFwdEvent("ops", 7, "anna"));

    EXPECT_EQ(Lines{"bert"}, store.Column(kEventTable, "PagerDescr"));
    const Lines expected = {"Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)",
                            "SQLConditionDelete(AlarmFwd_PagerEvents, WHERE AlmGroup = \"ops\" AND "
                            "AlmLogID = 7 AND PagerDescr = \"anna\", 'y') -> 1",
                            "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerFwdEvents, KeepsTheTwoBlanksOfDeleteEventsByAlarmLogId) {
    InsertEvent(7, "ops", "anna", 2);
    InsertEvent(70, "ops", "anna", 2);
    InsertEvent(7, "ops", "bert", 3);

    EXPECT_EQ(2, events.DeleteEventsByAlarmLogId(7));

    EXPECT_EQ(Lines{"70"}, store.Column(kEventTable, "AlmLogID"));
    const Lines expected = {"Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)",
                            "SQLConditionDelete(AlarmFwd_PagerEvents, "
                            "WHERE AlarmFwd_PagerEvents.AlmLogID  = 7, 'y') -> 2",
                            "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerFwdEvents, AMissingRowIsNoError) {
    EXPECT_EQ(0, events.SetForwardState("ops", 7, "anna", kForwardDone));
    EXPECT_EQ(0, events.SetPagerForwarded("ops", 7, "anna", 1, kForwardDone));
    EXPECT_EQ(0, events.DeletePagerFwdEvent("ops", 7, "anna"));
    EXPECT_EQ(0, events.DeleteEventsByAlarmLogId(7));
}

TEST_F(PagerFwdEvents, EveryRowThatIsNotBeingPagedIsInactive) {
    for (const int state : {1, 2, 3, 4, 2, 0, 22}) {
        InsertEvent(7, "ops", "anna", state);
    }

    EXPECT_EQ(0, events.DeleteInactiveEvents());

    EXPECT_EQ((Lines{"2", "2"}), store.Column(kEventTable, "PagerState"));
    const Lines expected = {"Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)",
                            "SQLConditionDelete(AlarmFwd_PagerEvents, "
                            "WHERE AlarmFwd_PagerEvents.PagerState <> 2, 'y') -> 5",
                            "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerFwdEvents, KeepsTheResultOfTheCloseForDeleteInactiveEvents) {
    store.Fail(Call::kClose, 1, 17);
    EXPECT_EQ(17, events.DeleteInactiveEvents());
    store.Fail(Call::kSQLConditionDelete, 1, -5);
    EXPECT_EQ(0, events.DeleteInactiveEvents()) << "not the result of the delete";
    store.Fail(Call::kOpen, 1, 21);
    EXPECT_EQ(21, events.DeleteInactiveEvents());
    store.Fail(Call::kTableOpen, 1, 22);
    EXPECT_EQ(22, events.DeleteInactiveEvents());
}

TEST_F(PagerFwdEvents, ConditionsHoldTheirTextsWhole) {
    const std::string group(65536, 'g');
    const std::string pager(65536, 'p');
    InsertEvent(7, group, pager, 2);

    EXPECT_EQ(1, events.SetForwardState(group.c_str(), 7, pager.c_str(), kForwardDone));
    EXPECT_EQ(1, events.SetPagerForwarded(group.c_str(), 7, pager.c_str(), 1, kForwardDone));

    const std::string condition =
        "WHERE AlmGroup = \"" + group + "\" AND AlmLogID = 7 AND PagerDescr = \"" + pager + "\", {";
    EXPECT_EQ(2U, store.CallsWith(condition).size());
    EXPECT_EQ(1, events.DeletePagerFwdEvent(group.c_str(), 7, pager.c_str()));
}

TEST_F(PagerFwdEvents, TextsOfAConditionAreNoFormat) {
    InsertEvent(7, "100%s%n", "%d", 2);
    EXPECT_EQ(1, events.SetForwardState("100%s%n", 7, "%d", kForwardDone));
}

TEST_F(PagerFwdEvents, ATextWithQuotesHitsNoOtherRow) {
    InsertEvent(7, "ops", "anna", 2);
    EXPECT_EQ(0,
              events.DeletePagerFwdEvent("ops\" AND AlmLogID = 7 AND PagerDescr = \"anna", 1, "x"));
    EXPECT_EQ(1U, store.RowCount(kEventTable));
}

// --- The fold into the alarm log.

class UpdateAlarmLog : public PagerFwdEvents {
 protected:
    // "pagerstate" of alarm 7 after a fold over pages in these states.
    std::string Folded(const std::vector<int>& states) {
        store.AddAllTables();
        store.Insert("AlarmLog", {{"alarmlogID", "7"}, {"pagerstate", "9"}});
        for (const int state : states) {
            InsertEvent(7, "ops", "anna", state);
        }
        events.UpdateAlarmLog(7);
        return store.Read("AlarmLog", {"alarmlogID", "7"}, "pagerstate");
    }
};

TEST_F(UpdateAlarmLog, WritesTheFoldOfAllPages) {
    EXPECT_EQ("3", Folded({4, 3, 4}));
    EXPECT_EQ("2", Folded({3, 2}));
    EXPECT_EQ("1", Folded({1, 3}));
    EXPECT_EQ("4", Folded({4}));
}

TEST_F(UpdateAlarmLog, WritesUnderTheLockWhileTheRowsAreHeld) {
    InsertEvent(7, "ops", "anna", 4);
    InsertEvent(8, "ops", "anna", 2);
    InsertEvent(7, "ops", "bert", 3);
    store.Insert("AlarmLog", {{"alarmlogID", "7"}, {"pagerstate", "2"}});

    events.UpdateAlarmLog(7);

    EXPECT_EQ("3", store.Read("AlarmLog", {"alarmlogID", "7"}, "pagerstate"));
    const Lines expected = {
        "Open(alarms, 'n')",
        "TableOpen(AlarmFwd_PagerEvents)",
        "GetAllEntriesByCondition(AlarmFwd_PagerEvents, AlmLogID = \"7\") -> 2",
        "GetElementColumn(AlarmFwd_PagerEvents, PagerState) -> 6",
        "Open(alarms, 'n')",
        "Lock(AlarmLog, 400, 300)",
        "TableOpen(AlarmLog)",
        "AddElement(AlarmLog, pagerstate, 'i', 3)",
        "SQLConditionSet(AlarmLog, WHERE alarmlogID = 7, {pagerstate = 3}, 'y', 'n') -> 1",
        "Write(AlarmLog, 0) -> 1",
        "Unlock(AlarmLog)",
        "Close()",
        "Free()",
        "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(UpdateAlarmLog, AnAlarmWithoutPagesIsLeftAsItIs) {
    EXPECT_EQ("9", Folded({}));
    const Lines expected = {"Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerEvents)",
                            "GetAllEntriesByCondition(AlarmFwd_PagerEvents, AlmLogID = \"7\") -> 0",
                            "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(UpdateAlarmLog, AnUnreadableTableLeavesTheAlarmAsItIs) {
    for (const Call failing : {Call::kOpen, Call::kTableOpen, Call::kGetAllEntriesByCondition}) {
        store.Fail(failing);
        EXPECT_EQ("9", Folded({4}));
    }
}

TEST_F(UpdateAlarmLog, WithoutAColumnOfStatesTheAlarmIsLeftAsItIs) {
    store.Fail(Call::kGetElementColumn);
    EXPECT_EQ("9", Folded({4}));
}

TEST_F(UpdateAlarmLog, StatesMayStandInTheFirstColumn) {
    store.AddTable(kEventTable, {"PagerState", "AlmLogID"});
    store.Insert(kEventTable, {{"PagerState", "4"}, {"AlmLogID", "7"}});
    store.Insert("AlarmLog", {{"alarmlogID", "7"}});

    events.UpdateAlarmLog(7);

    EXPECT_EQ("4", store.Read("AlarmLog", {"alarmlogID", "7"}, "pagerstate"));
}

TEST_F(UpdateAlarmLog, ACellWithoutATextIsNoState) {
    InsertEvent(7, "ops", "anna", 1);
    store.Update(kEventTable, {"AlmLogID", "7"}, {{"PagerState", std::nullopt}});
    InsertEvent(7, "ops", "bert", 4);
    store.Insert("AlarmLog", {{"alarmlogID", "7"}});

    events.UpdateAlarmLog(7);

    EXPECT_EQ("4", store.Read("AlarmLog", {"alarmlogID", "7"}, "pagerstate"));
}

}  // namespace
