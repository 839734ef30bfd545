// Freeing of entries at the moment when nobody can be looking at them.
// Tested by tests/unit/engine/entry_ledger_test.cpp.
#include "engine/entry_ledger.h"

void EntryLedger::Note(ForwardQEntry* entry) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_noted.insert(entry);
    SettleIfUnused();
}

size_t EntryLedger::NotedCount() {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_noted.size();
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
    for (ForwardQEntry* entry : m_noted) {
        if (!m_isQueued(entry)) {
            m_release(entry);
        }
    }
    m_noted.clear();
}
