// Which entries may be freed, and when.
//
// An entry can be reached from the two queues, from the worker's copy of the paging queue, and by a
// service thread in the middle of an operation; one and the same entry may be taken out by an
// acknowledgement and put back by the worker. So nothing frees an entry on the spot. Whoever takes
// one out of a queue, or gives one up, notes it here; when no operation is under way, the noted
// entries that are in no queue are freed, each once, and the others are forgotten.
#ifndef PAGERFWD_ENGINE_ENTRY_LEDGER_H
#define PAGERFWD_ENGINE_ENTRY_LEDGER_H

#include <cstddef>
#include <mutex>

struct ForwardQEntry;

// Order      A thread that looks at entries holds an EntryUse from before it finds them until after
//            it has let go of them.
// Ownership  A noted entry that is in no queue belongs to the ledger, with both its records.
// Threads    Any.
class EntryLedger {
 public:
    EntryLedger() = default;
    EntryLedger(const EntryLedger&) = delete;
    EntryLedger& operator=(const EntryLedger&) = delete;

    // Noting an entry again, or one that is put back into a queue afterwards, is no mistake. Needs
    // no memory.
    void Note(ForwardQEntry* entry);

    // How many entries wait to be freed.
    size_t NotedCount();

 private:
    friend class EntryUse;
    void Enter();
    void Leave();
    void SettleIfUnused();  // Requires: lock held.

    std::mutex m_lock;
    // Guarded by m_lock.
    ForwardQEntry* m_firstNoted = nullptr;  // and on by nextNoted
    size_t m_notedCount = 0;
    int m_uses = 0;
};

// An operation under way: while it lives, no entry is freed. Uses may nest. Who takes an entry out
// of a queue must have one to show.
class EntryUse {
 public:
    explicit EntryUse(EntryLedger& ledger) : m_ledger(ledger) { m_ledger.Enter(); }
    ~EntryUse() { m_ledger.Leave(); }
    EntryUse(const EntryUse&) = delete;
    EntryUse& operator=(const EntryUse&) = delete;

    void Note(ForwardQEntry* entry) const { m_ledger.Note(entry); }

 private:
    EntryLedger& m_ledger;
};

#endif
