// The rows of entries in the events table: what of a pending page survives a restart.
// Tested by tests/engine/events_table_test.cpp.
#include <utility>

#include "engine/chars.h"
#include "engine/locked.h"
#include "engine/pager_hdl.h"
#include "linux/out_of_memory.h"
#include "modem/trace.h"

namespace {

using HandlerLock = Locked<CCriticalSection>;

unsigned long IdentityOf(const PagerFwdEvent* row) {
    return reinterpret_cast<uintptr_t>(row);
}

}  // namespace

// A page without its row would not survive a restart, so without memory for the row it is refused.
bool CPagerHdl::AddEntryToEventsDB(ForwardQEntry* e) {
    const HandlerLock guard(lock);
    TraceUnlocked("AddEntryToEventsDB: %lx\n", IdentityOf(e->pagerFwdEvent));
    return MemorySufficesFor([e] {
        DeleteRow(e);
        InsertRow(e);
    });
}

// An entry whose row is gone was acknowledged: it must not come back with the next start. Without
// memory the row stays as it was, and the page goes on with what the queue knows.
bool CPagerHdl::UpdateEntryInEventsDB(ForwardQEntry* e) {
    const HandlerLock guard(lock);
    TraceUnlocked("UpdateEntryInEventsDB: %lx\n", IdentityOf(e->pagerFwdEvent));
    MemorySufficesFor([e] {
        if (DeleteRow(e)) {
            InsertRow(e);
            m_pPagerEventsSet->UpdateAlarmLog(e->alarmLogEntry->alarmLogId);
        }
    });
    return true;
}

void CPagerHdl::RemoveEntryFromEventsDB(ForwardQEntry* e) {
    const HandlerLock guard(lock);
    DeleteRow(e);
}

void CPagerHdl::RemoveEntryFromEventsDB(long almLogId) {
    const HandlerLock guard(lock);
    m_pPagerEventsSet->DeleteEventsByAlarmLogId(static_cast<int32_t>(almLogId));
}

// Requires: lock held. Whether there was a row; the entry keeps it as its source row. Memory can
// run out only before the row is deleted, and not in InsertRow: a row is never lost in between.
bool CPagerHdl::DeleteRow(ForwardQEntry* e) {
    CDB_PagerFwdEvents::FreePagerFwdEvent(std::exchange(e->pagerFwdEvent, nullptr));
    const int32_t alarm = e->alarmLogEntry->alarmLogId;
    e->pagerFwdEvent = m_pPagerEventsSet->FindFwdEvent(alarm, e->almGroup, e->pagerDescr);
    if (e->pagerFwdEvent == nullptr) {
        return false;
    }
    m_pPagerEventsSet->DeletePagerFwdEvent(e->almGroup, alarm, e->pagerDescr);
    return true;
}

// Requires: lock held.
void CPagerHdl::InsertRow(ForwardQEntry* e) {
    m_pPagerEventsSet->NewPagerFwdEvent(e->almGroup, e->alarmLogEntry->alarmLogId, e->pagerDescr,
                                        e->serverN, e->alarmLogEntry->severity, e->retries,
                                        e->state);
}
