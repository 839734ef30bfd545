// Freeing of entries at the moment when nobody can be looking at them.
// Tested by tests/unit/engine/entry_ledger_test.cpp.
#include "engine/entry_ledger.h"

#include <utility>

#include "engine/forward_queue.h"

namespace {

void Free(ForwardQEntry* entry) {
    CDB_AlarmLog::FreeAlarmLogEntry(entry->alarmLogEntry);
    CDB_PagerFwdEvents::FreePagerFwdEvent(entry->pagerFwdEvent);
    delete entry;
}

}  // namespace

void EntryLedger::Note(ForwardQEntry* entry) {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (!entry->isNoted) {
        entry->isNoted = true;
        entry->nextNoted = std::exchange(m_firstNoted, entry);
        ++m_notedCount;
    }
    SettleIfUnused();
}

size_t EntryLedger::NotedCount() {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_notedCount;
}

void EntryLedger::Enter() {
    const std::lock_guard<std::mutex> guard(m_lock);
    ++m_uses;
}

void EntryLedger::Leave() {
    const std::lock_guard<std::mutex> guard(m_lock);
    --m_uses;
    SettleIfUnused();
}

void EntryLedger::SettleIfUnused() {
    if (m_uses > 0) {
        return;
    }
    while (m_firstNoted != nullptr) {
        ForwardQEntry* const entry = m_firstNoted;
        m_firstNoted = std::exchange(entry->nextNoted, nullptr);
        entry->isNoted = false;
        if (!CSM_ForwardQ::IsInAQueue(*entry)) {
            Free(entry);
        }
    }
    m_notedCount = 0;
}
