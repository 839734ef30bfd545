// Pending pages after a restart.
// Tested by tests/engine/startup_test.cpp.
#include <utility>

#include "engine/pager_hdl.h"
#include "engine/records.h"
#include "linux/out_of_memory.h"

namespace {

// What the start-up pass looks alarms and pagers up with.
struct StartUpTables {
    CDB_AlarmLog alarmLog;
    CDB_PagerSettings pagerSettings;
};

// The entry of a row whose page is still owed, or null. A row whose alarm needs no more paging is
// deleted from the table; one whose alarm or pager can't be found stays there untouched.
ForwardQEntry* EntryOf(OwnedEvent row, StartUpTables& tables, CDB_PagerFwdEvents& events) {
    const OwnedFwdInfo alarm(tables.alarmLog.GetAlarmLogFwdInfo(row->almLogId));
    const OwnedPager pager(tables.pagerSettings.GetPager(row->pagerDescr));
    if (!alarm || !pager) {
        return nullptr;
    }
    if (alarm->pagerState != kForwardBeingPaged) {
        events.DeletePagerFwdEvent(row->almGroup, row->almLogId, row->pagerDescr);
        return nullptr;
    }
    ForwardQEntry* entry = CPagerHdl::CreateQEntry(row.get());
    if (entry != nullptr) {
        static_cast<void>(row.release());  // the entry has it now
    }
    return entry;
}

// A row that there is no memory for stays in the table, for the next start.
ForwardQEntry* TakeUp(OwnedEvent row, StartUpTables& tables, CDB_PagerFwdEvents& events) {
    ForwardQEntry* entry = nullptr;
    MemorySufficesFor([&] { entry = EntryOf(std::move(row), tables, events); });
    return entry;
}

}  // namespace

bool CPagerHdl::InitializePagerQueue() {
    StartUpTables tables{CDB_AlarmLog(m_dB), CDB_PagerSettings(m_dB)};
    pagerFwdEvents->DeleteInactiveEvents();
    const int32_t count = pagerFwdEvents->GetActiveEvents(&m_pPagerEventsList);
    if (count <= 0) {
        return true;
    }

    CSM_ForwardQ found;
    for (int32_t i = 0; i < count; ++i) {
        OwnedEvent row(std::exchange(m_pPagerEventsList[i], nullptr));
        ForwardQEntry* entry = row ? TakeUp(std::move(row), tables, *pagerFwdEvents) : nullptr;
        if (entry != nullptr && !found.AddEntryToQueue(entry)) {
            FreeQEntry(entry);
        }
    }
    // An entry that is refused has been freed; the next has its turn.
    while (ForwardQEntry* entry = found.TakeHeadEntry()) {
        PagingAlarm(entry);
    }

    delete[] m_pPagerEventsList;
    m_pPagerEventsList = nullptr;
    m_pPagingQIsInitialized = true;
    return true;
}
