// Out of the paging queue, into the off-limit queue, and out of that.
// Tested by tests/engine/queue_operations_test.cpp.
#include "engine/chars.h"
#include "engine/locked.h"
#include "engine/pager_hdl.h"
#include "modem/trace.h"

// What is taken out is the first match, which may be another entry than the argument when the same
// alarm was forwarded to the same pager twice. It is noted here, so that the callers need not free
// it: that happens once it is in no queue and nobody works with it, the holder of the use included.
bool CPagerHdl::TakeOut(const EntryUse& use, CSM_ForwardQ* queue, ForwardQEntry* e) {
    ForwardQEntry* taken = queue->TakeMatchingEntry(e);
    if (taken == nullptr) {
        return false;
    }
    use.Note(taken);
    return true;
}

bool CPagerHdl::DeleteFromPagingQueue(ForwardQEntry* e) {
    const EntryUse use(Entries());
    TraceUnlocked("DeleteFromPagingQueue: %s\n", Chars(e->pagerDescr));
    if (!TakeOut(use, m_pPagingQ, e) || !InsertInOffLimitQueue(e)) {
        FreeQEntry(e);
        return false;
    }
    return true;
}

bool CPagerHdl::DeleteFromPagingQueue(long almLogId) {
    const EntryUse use(Entries());
    CSM_ForwardQ* queue = m_pPagingQ;
    ForwardQEntry* e = queue->FindEntryByAlmLogID(almLogId);
    if (e != nullptr) {
        TraceUnlocked("DeleteFromPagingQueue: %d:%s\n", static_cast<int>(almLogId),
                      Chars(e->pagerDescr));
    } else {
        queue = m_pOffLimitQ;
        e = queue->FindEntryByAlmLogID(almLogId);
    }
    if (e != nullptr && !TakeOut(use, queue, e)) {
        return false;  // another has taken it out, and sees to it
    }
    RemoveEntryFromEventsDB(almLogId);
    return true;
}

bool CPagerHdl::InsertInOffLimitQueue(ForwardQEntry* e) {
    const EntryUse use(Entries());
    {
        const Locked<CCriticalSection> guard(lock);
        if (e->state != kForwardDone) {
            e->state = kForwardOffLimit;
        }
    }
    UpdateEntryInEventsDB(e);
    if (!m_pOffLimitQ->AddEntryToQueue(e)) {
        FreeQEntry(e);
    }
    return true;
}

bool CPagerHdl::InsertInOffLimitQueue(ForwardQEntry* e, CString, CString) {
    return InsertInOffLimitQueue(e);
}

void CPagerHdl::OffLimitOrDiscardEntry(ForwardQEntry* e) {
    InsertInOffLimitQueue(e);  // which never refuses
}

bool CPagerHdl::DeleteFromOffLimitQueue(long almLogId) {
    const EntryUse use(Entries());
    ForwardQEntry* e = m_pOffLimitQ->FindEntryByAlmLogID(almLogId);
    if (e == nullptr) {
        return false;
    }
    TakeOut(use, m_pOffLimitQ, e);
    RemoveEntryFromEventsDB(e);
    return true;
}
