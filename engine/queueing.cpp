// Into the paging queue.
// Tested by tests/engine/queue_operations_test.cpp.
#include "engine/chars.h"
#include "engine/pager_hdl.h"
#include "modem/trace.h"

namespace {

bool Add(CSM_ForwardQ* queue, ForwardQEntry* e) {
    return queue != nullptr && queue->AddEntryToQueue(e);
}

}  // namespace

bool CPagerHdl::PagingAlarm(CString pagerDescr, CString serverN, CString almGroup, long almLogId,
                            unsigned retries) {
    TraceUnlocked("PagingAlarm: %s %s %s\n%s\n", Chars(pagerDescr), Chars(serverN), Chars(almGroup),
                  TextOrEmpty(m_dB));
    AlarmLogEntry* alarm = m_pAlarmLogSet != nullptr
                               ? m_pAlarmLogSet->FindAlarmLogEntry(static_cast<int32_t>(almLogId))
                               : nullptr;
    if (alarm == nullptr) {
        TraceUnlocked("PagingAlarm: No AlarmLog Entry\n");
        return false;
    }
    return PagingAlarm(CreateQEntry(nullptr, pagerDescr, retries, kForwardBeingPaged, alarm,
                                    almGroup, alarm->severity, serverN));
}

bool CPagerHdl::PagingAlarm(ForwardQEntry* entry) {
    if (entry == nullptr) {
        return false;
    }
    {
        const EntryUse use(Entries());
        if (!InsertInPagingQueue(entry)) {
            FreeQEntry(entry);
            return false;
        }
    }
    Check4Dial(nullptr, 0, 0, 0);
    return true;
}

bool CPagerHdl::InsertInPagingQueue(ForwardQEntry* e) {
    const EntryUse use(Entries());
    TraceUnlocked("InsertInPagingQueue: %s\n", Chars(e->pagerDescr));
    if (!Add(m_pPagingQ, e)) {
        return false;
    }
    if (!AddEntryToEventsDB(e)) {
        TakeOut(use, m_pPagingQ, e);
        return false;
    }
    return true;
}

bool CPagerHdl::ReinsertInPagingQueue(ForwardQEntry* e, int minutes) {
    const EntryUse use(Entries());
    TraceUnlocked("ReinsertInPagingQueue: %s\n", Chars(e->pagerDescr));
    TakeOut(use, m_pPagingQ, e);
    e->queueTime = PutOff(e->queueTime, minutes);
    if (!m_pPagingQ->InsertEntryInQueue(e)) {
        InsertInOffLimitQueue(e);
        return false;
    }
    UpdateEntryInEventsDB(e);
    return true;
}
