// The table of pagers. Tested by tests/unit/tables/pager_settings_test.cpp.
#include "tables/pager_settings.h"

#include "modem/trace.h"
#include "tables/record_columns.h"
#include "tables/table_names.h"
#include "tables/table_session.h"

namespace {

constexpr char kDescription[] = "description";
constexpr char kOwner[] = "owner";
constexpr char kComPort[] = "comport";
constexpr char kPagerType[] = "pgtype";
constexpr char kPagerNumber[] = "pgnumber";
constexpr char kNumRetries[] = "numretries";
constexpr char kRetryDelay[] = "retrydelay";
constexpr char kTimeModel[] = "timemodel";

// The two reading operations look the columns up in different orders.
constexpr Column<Pager> kColumnsOfOne[] = {
    {kOwner, FillText<&Pager::owner>},
    {kComPort, FillText<&Pager::comPort>},
    {kPagerType, FillNumber<&Pager::pagerType>},
    {kPagerNumber, FillText<&Pager::pagerNumber>},
    {kNumRetries, FillNumber<&Pager::numRetries>},
    {kRetryDelay, FillNumber<&Pager::retryDelay>},
    {kTimeModel, FillText<&Pager::timeModel>},
};

constexpr Column<Pager> kColumnsOfAll[] = {
    {kDescription, FillText<&Pager::description>}, {kOwner, FillText<&Pager::owner>},
    {kComPort, FillText<&Pager::comPort>},         {kNumRetries, FillNumber<&Pager::numRetries>},
    {kPagerType, FillNumber<&Pager::pagerType>},   {kRetryDelay, FillNumber<&Pager::retryDelay>},
    {kPagerNumber, FillText<&Pager::pagerNumber>}, {kTimeModel, FillText<&Pager::timeModel>},
};

}  // namespace

CDB_PagerSettings::CDB_PagerSettings(const char* databaseName)
    : CDB_Table(databaseName, kPagerSettingsTable) {}

Pager* CDB_PagerSettings::GetPager(const char* description) {
    // Unlocked, so that the look-up never waits for a dial in progress.
    TraceUnlocked("CDB_PagerSettings::GetPager: %s: ", TextOrEmpty(description));

    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return nullptr;
    }
    const RowSet rows(session, kDescription, description);
    TraceUnlocked("CDB_PagerSettings::GetPager:Count: %d\n", rows.Count());
    if (rows.Count() != 1) {
        return nullptr;
    }
    const RecordColumns columns(session, kColumnsOfOne);
    auto pager = columns.NewRecord(rows.Row(0), FreePager);
    pager->description = CopyText(TextOrEmpty(description));
    return pager.release();
}

int32_t CDB_PagerSettings::GetAllPagers(Pager*** out) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return -1;
    }
    const RowSet rows(session, RowSet::EveryRow{kDescription});
    if (rows.IsEmpty()) {
        return -1;
    }
    const RecordColumns columns(session, kColumnsOfAll);
    *out = columns.NewRecords(rows, FreePager);
    return rows.Count();
}

void CDB_PagerSettings::FreePager(Pager* pager) {
    if (pager == nullptr) {
        return;
    }
    for (char* text :
         {pager->description, pager->owner, pager->comPort, pager->pagerNumber, pager->timeModel}) {
        delete[] text;
    }
    delete pager;
}
