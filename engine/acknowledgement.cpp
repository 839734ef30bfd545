// Acknowledging pending pages, and asking for their state.
// Tested by tests/engine/queue_operations_test.cpp.
#include "engine/chars.h"
#include "engine/locked.h"
#include "engine/pager_hdl.h"

namespace {

// Answers of the two queries. Nothing found reads differently in each; callers rely on it.
constexpr int kInPagingQueue = 2;
constexpr int kInOffLimitQueue = 3;
constexpr int kNoEntryOfAlarm = 0;
constexpr int kNoEntryOfServer = 1;

}  // namespace

void CPagerHdl::AckPagingAlarm(long almLogId) {
    DeleteFromPagingQueue(almLogId);
}

void CPagerHdl::AckAllPagingAlarms() {
    const EntryUse use(Entries());
    CSM_ForwardQ pending;
    m_pPagingQ->CopyEntriesToNewQueue(&pending);
    while (ForwardQEntry* entry = pending.TakeHeadEntry()) {
        DeleteFromPagingQueue(entry);
    }
}

int CPagerHdl::GetPagingState(long almLogId) {
    if (m_pPagingQ->FindEntryByAlmLogID(almLogId) != nullptr) {
        return kInPagingQueue;
    }
    return DeleteFromOffLimitQueue(almLogId) ? kInOffLimitQueue : kNoEntryOfAlarm;
}

int CPagerHdl::GetServerState(unsigned serverId) {
    if (m_pPagingQ->FindEntryByServerID(serverId) != nullptr) {
        return kInPagingQueue;
    }
    return m_pOffLimitQ->FindEntryByServerID(serverId) != nullptr ? kInOffLimitQueue
                                                                  : kNoEntryOfServer;
}

bool CPagerHdl::IsInPagingQueue(long almLogId, CString almGroup, CString pagerDescr) {
    const Locked<CSM_ForwardQ> guard(*m_pPagingQ);
    for (POSITION next = m_pPagingQ->GetHeadPosition(); next != nullptr;) {
        auto* entry = static_cast<ForwardQEntry*>(m_pPagingQ->GetNext(next));
        if (entry->alarmLogEntry->alarmLogId == almLogId && entry->almGroup == almGroup) {
            // Kept: the pager is not compared but handed to the entry.
            entry->pagerDescr = Chars(pagerDescr);
            return true;
        }
    }
    return false;
}

Pager* CPagerHdl::GetPager(CString pagerDescr) {
    return m_pPagerSettingsSet->GetPager(pagerDescr);
}
