// Making and freeing of entries.
// Tested by tests/engine/queue_operations_test.cpp.
#include <memory>

#include "engine/chars.h"
#include "engine/locked.h"
#include "engine/pager_hdl.h"
#include "engine/records.h"

ForwardQEntry* CPagerHdl::CreateQEntry(PagerFwdEvent* ev, CString pagerDescr, unsigned retries,
                                       ForwardState state, long almLogId, CString almGroup,
                                       TRAP_SEVERITY severity, CString serverN) {
    AlarmLogEntry* alarm = m_pAlarmLogSet->FindAlarmLogEntry(static_cast<int32_t>(almLogId));
    if (alarm == nullptr) {
        return nullptr;
    }
    return CreateQEntry(ev, pagerDescr, retries, state, alarm, almGroup, severity, serverN);
}

// The texts get buffers of their own: other threads will reach the entry.
ForwardQEntry* CPagerHdl::CreateQEntry(PagerFwdEvent* ev, CString pagerDescr, unsigned retries,
                                       ForwardState state, AlarmLogEntry* alarm, CString almGroup,
                                       TRAP_SEVERITY, CString serverN) {
    OwnedAlarm owned(alarm);  // until the entry is whole
    auto entry = std::make_unique<ForwardQEntry>();
    entry->pagerFwdEvent = ev;
    entry->pagerDescr = Chars(pagerDescr);
    entry->queueTime = CTime::GetCurrentTime();
    entry->retries = retries;
    entry->state = state;
    entry->almGroup = Chars(almGroup);
    entry->serverN = Chars(serverN);
    entry->alarmLogEntry = owned.release();
    return entry.release();
}

ForwardQEntry* CPagerHdl::CreateQEntry(PagerFwdEvent* ev) {
    return CreateQEntry(ev, ev->pagerDescr, ev->pagerRetries, ev->pagerState, long{ev->almLogId},
                        ev->almGroup, ev->severity, ev->serverN);
}

void CPagerHdl::FreeQEntry(ForwardQEntry* e) {
    if (e != nullptr) {
        Entries().Note(e);
    }
}

// Never destroyed: a worker may outlive the end of the program.
EntryLedger& CPagerHdl::Entries() {
    static EntryLedger& entries = *new EntryLedger;
    return entries;
}

void CPagerHdl::SetState(ForwardQEntry* e, ForwardState state) {
    const Locked<CCriticalSection> guard(lock);
    e->state = state;
}

uint32_t CPagerHdl::CountAttempt(ForwardQEntry* e) {
    const Locked<CCriticalSection> guard(lock);
    return e->retries++;
}
