// Pagers: one by its description, all of them, and what the look-up leaves in the paging trace.
#include "tables/pager_settings.h"

#include "modem/COMHdl.h"
#include "tests/support/store_test.h"
#include "tests/support/temp_dir.h"
#include "tests/support/trace.h"
#include "tests/unit/tables/records.h"

namespace {

using test_support::Call;
using test_support::MemoryStore;

constexpr char kPagerTable[] = "AlarmFwd_PagerSetting";

class PagerSettings : public test_support::StoreTest {
 protected:
    PagerSettings() { CCOMHdl::PageProtocol = CCOMHdl::kTracingOn; }
    ~PagerSettings() override { CCOMHdl::PageProtocol = CCOMHdl::kTracingOff; }

    void InsertAnna() {
        store.Insert(kPagerTable, {{"description", "anna"},
                                   {"owner", "Anna N."},
                                   {"comport", "COM 2"},
                                   {"pgtype", "4"},
                                   {"pgnumber", "0555123"},
                                   {"numretries", "7"},
                                   {"retrydelay", "45"},
                                   {"timemodel", "office"}});
    }

    test_support::TempDir folder;  // the trace lies in the working directory
    CDB_PagerSettings settings{MemoryStore::kDatabase};
};

void ExpectAnna(const Pager& pager) {
    EXPECT_EQ("anna", Text(pager.description));
    EXPECT_EQ("Anna N.", Text(pager.owner));
    EXPECT_EQ("COM 2", Text(pager.comPort));
    EXPECT_EQ(4, pager.pagerType);
    EXPECT_EQ("0555123", Text(pager.pagerNumber));
    EXPECT_EQ("office", Text(pager.timeModel));
    EXPECT_EQ(7, pager.numRetries);
    EXPECT_EQ(45, pager.retryDelay);
}

TEST_F(PagerSettings, OnePagerByItsDescription) {
    InsertAnna();

    const auto pager = Hold(settings.GetPager("anna"));

    ASSERT_NE(nullptr, pager);
    ExpectAnna(*pager);
    const Lines expected =
        Lines{"Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerSetting)",
              "GetAllEntriesByCondition(AlarmFwd_PagerSetting, description = \"anna\") -> 1"} +
        LookUps(kPagerTable, {"owner -> 1", "comport -> 2", "pgtype -> 3", "pgnumber -> 4",
                              "numretries -> 5", "retrydelay -> 6", "timemodel -> 7"}) +
        Lines{"Free()", "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerSettings, LookUpLeavesTwoLinesInTheTrace) {
    InsertAnna();

    Hold(settings.GetPager("anna"));

    const Lines expected = {"CDB_PagerSettings::GetPager: anna: ",
                            "CDB_PagerSettings::GetPager:Count: 1\n"};
    EXPECT_EQ(expected, test_support::TraceEntries());
}

TEST_F(PagerSettings, FirstTraceLineComesBeforeTheOpenAndTheSecondBehindTheReading) {
    InsertAnna();
    std::vector<size_t> linesBefore;
    store.BeforeEach(
        [&](const std::string&) { linesBefore.push_back(test_support::TraceEntries().size()); });

    Hold(settings.GetPager("anna"));

    ASSERT_EQ(12U, linesBefore.size());
    EXPECT_EQ(1U, linesBefore[0]) << "before Open";
    EXPECT_EQ(1U, linesBefore[2]) << "before the reading";
    EXPECT_EQ(2U, linesBefore[3]) << "before the first column";
}

TEST_F(PagerSettings, UnknownPagerIsNullAndCounts0) {
    InsertAnna();

    EXPECT_EQ(nullptr, settings.GetPager("bert"));

    const Lines trace = {"CDB_PagerSettings::GetPager: bert: ",
                         "CDB_PagerSettings::GetPager:Count: 0\n"};
    EXPECT_EQ(trace, test_support::TraceEntries());
    const Lines calls = {
        "Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerSetting)",
        "GetAllEntriesByCondition(AlarmFwd_PagerSetting, description = \"bert\") -> 0", "Close()"};
    EXPECT_EQ(calls, store.Calls());
}

TEST_F(PagerSettings, TwoRowsOfOneDescriptionAreNoPagerButBothAreListed) {
    InsertAnna();
    InsertAnna();

    EXPECT_EQ(nullptr, settings.GetPager("anna"));

    EXPECT_EQ("CDB_PagerSettings::GetPager:Count: 2\n", test_support::TraceEntries().back());
    const Lines calls = {
        "Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerSetting)",
        "GetAllEntriesByCondition(AlarmFwd_PagerSetting, description = \"anna\") -> 2", "Free()",
        "Close()"};
    EXPECT_EQ(calls, store.Calls());

    Pager** all = nullptr;
    ASSERT_EQ(2, settings.GetAllPagers(&all));
    for (const auto& pager : HoldAll(all, 2)) {
        ExpectAnna(*pager);
    }
}

TEST_F(PagerSettings, AnUnreadableTableLeavesTheFirstTraceLineOnly) {
    store.Fail(Call::kTableOpen);

    EXPECT_EQ(nullptr, settings.GetPager("anna"));

    EXPECT_EQ(Lines{"CDB_PagerSettings::GetPager: anna: "}, test_support::TraceEntries());
}

TEST_F(PagerSettings, ANegativeCountIsNoPager) {
    InsertAnna();
    store.Fail(Call::kGetAllEntriesByCondition, 1, -3);

    EXPECT_EQ(nullptr, settings.GetPager("anna"));

    EXPECT_EQ("CDB_PagerSettings::GetPager:Count: -3\n", test_support::TraceEntries().back());
    EXPECT_EQ(Lines{}, store.Calls(Call::kFree));
}

TEST_F(PagerSettings, DescriptionComesFromTheArgumentEvenWithoutAnyOtherColumn) {
    store.AddTable(kPagerTable, {"description"});
    store.Insert(kPagerTable, {{"description", "anna"}});

    const auto pager = Hold(settings.GetPager("anna"));

    ASSERT_NE(nullptr, pager);
    EXPECT_EQ("anna", Text(pager->description));
    EXPECT_EQ(nullptr, pager->owner);
    EXPECT_EQ(nullptr, pager->comPort);
    EXPECT_EQ(0, pager->pagerType);
    EXPECT_EQ(nullptr, pager->pagerNumber);
    EXPECT_EQ(nullptr, pager->timeModel);
    EXPECT_EQ(0, pager->numRetries);
    EXPECT_EQ(0, pager->retryDelay);
    EXPECT_EQ(Lines{}, store.CallsWith("GetElementColumn(AlarmFwd_PagerSetting, description)"));
}

TEST_F(PagerSettings, CellsWithoutTextAreNullAnd0) {
    store.Insert(kPagerTable,
                 {{"description", "anna"}, {"owner", std::nullopt}, {"pgtype", std::nullopt}});

    const auto pager = Hold(settings.GetPager("anna"));

    ASSERT_NE(nullptr, pager);
    EXPECT_EQ(nullptr, pager->owner);
    EXPECT_EQ(0, pager->pagerType);
}

TEST_F(PagerSettings, ADescriptionOf64KiBIsTracedAndCopiedWhole) {
    const std::string name(65536, 'n');
    store.Insert(kPagerTable, {{"description", name}});

    const auto pager = Hold(settings.GetPager(name.c_str()));

    ASSERT_NE(nullptr, pager);
    EXPECT_EQ(name, pager->description);
    EXPECT_EQ("CDB_PagerSettings::GetPager: " + name + ": ", test_support::TraceEntries().front());
}

TEST_F(PagerSettings, PercentSignsOfADescriptionAreNoFormat) {
    EXPECT_EQ(nullptr, settings.GetPager("100%s%n"));
    EXPECT_EQ("CDB_PagerSettings::GetPager: 100%s%n: ", test_support::TraceEntries().front());
}

TEST_F(PagerSettings, AllPagersInRowOrder) {
    InsertAnna();
    store.Insert(kPagerTable, {{"description", "bert"}, {"pgtype", "3"}});

    Pager** all = nullptr;
    ASSERT_EQ(2, settings.GetAllPagers(&all));

    const auto pagers = HoldAll(all, 2);
    ExpectAnna(*pagers[0]);
    EXPECT_EQ("bert", Text(pagers[1]->description));
    EXPECT_EQ(3, pagers[1]->pagerType);
    const Lines expected =
        Lines{"Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerSetting)",
              "GetAllEntriesByCondition(AlarmFwd_PagerSetting, description, every row) -> 2"} +
        LookUps(kPagerTable,
                {"description -> 0", "owner -> 1", "comport -> 2", "numretries -> 5", "pgtype -> 3",
                 "retrydelay -> 6", "pgnumber -> 4", "timemodel -> 7"}) +
        Lines{"Free()", "Close()"};
    EXPECT_EQ(expected, store.Calls());
    EXPECT_EQ(Lines{}, test_support::TraceEntries()) << "only GetPager traces";
}

TEST_F(PagerSettings, AnEmptyTableIsMinus1AndHandsNothingOut) {
    Pager* untouched = nullptr;
    Pager** all = &untouched;

    EXPECT_EQ(-1, settings.GetAllPagers(&all));

    EXPECT_EQ(&untouched, all);
    const Lines expected = {
        "Open(alarms, 'n')", "TableOpen(AlarmFwd_PagerSetting)",
        "GetAllEntriesByCondition(AlarmFwd_PagerSetting, description, every row) -> 0", "Close()"};
    EXPECT_EQ(expected, store.Calls());
}

TEST_F(PagerSettings, AllPagersOfATableWithoutColumnsAreCleared) {
    store.AddTable(kPagerTable, {"description"});
    store.Insert(kPagerTable, {{"description", std::nullopt}});

    Pager** all = nullptr;
    ASSERT_EQ(1, settings.GetAllPagers(&all));

    const auto pagers = HoldAll(all, 1);
    EXPECT_EQ(nullptr, pagers[0]->description);
    EXPECT_EQ(nullptr, pagers[0]->timeModel);
    EXPECT_EQ(0, pagers[0]->retryDelay);
}

}  // namespace
