// A pending page, and the ordered queue in which pending pages wait.
#ifndef PAGERFWD_ENGINE_FORWARD_QUEUE_H
#define PAGERFWD_ENGINE_FORWARD_QUEUE_H

#include <atomic>
#include <cstdint>

#include "linux/CTime.h"
#include "linux/CriticalSection.h"
#include "linux/XList.h"
#include "linux/XString.h"
#include "tables/alarm_log.h"
#include "tables/forward_state.h"
#include "tables/pager_fwd_events.h"

// One pending page: one alarm for one pager. The alarm, the pager and the alarm group identify it.
//
// Ownership  Owns neither record it points to; CPagerHdl::FreeQEntry releases both with the entry.
// Threads    Constant once the entry is in a queue: pagerDescr, alarmLogEntry, almGroup, serverN.
//            Guarded by CPagerHdl::lock: pagerFwdEvent, state, retries. The worker's own:
//            queueTime, postponed. Guarded by the ledger's lock: isNoted, nextNoted. The texts are
//            never copied as CString, only as characters, since their reference counts are not
//            atomic.
struct ForwardQEntry {
    ForwardQEntry() = default;
    ForwardQEntry(const ForwardQEntry&) = delete;
    ForwardQEntry& operator=(const ForwardQEntry&) = delete;

    PagerFwdEvent* pagerFwdEvent = nullptr;  // its last row of the events table, as read; or null
    CString pagerDescr;                      // the pager's description
    CTime queueTime;                         // when it is due
    ForwardState state{};
    uint32_t retries = 0;  // counted attempts so far
    AlarmLogEntry* alarmLogEntry = nullptr;
    CString almGroup;
    CString serverN;         // the server that raised the alarm
    uint32_t serverId = 0;   // nothing in this library sets it
    bool postponed = false;  // its last attempt failed without being counted

    // How often it stands in queues, whichever they are: kept by them, so that nobody has to search
    // queues of many pages for it.
    std::atomic<int32_t> places{0};

    // The ledger's, which must need no memory to note an entry.
    bool isNoted = false;
    ForwardQEntry* nextNoted = nullptr;
};

// An ordered queue of pending pages. The process has two: the paging queue and the off-limit queue.
//
// Order      InsertEntryInQueue keeps the oldest queueTime at the head; among equal times, first in
//            is first out. AddEntryToQueue ignores the time.
// Ownership  The queue frees the entries that are still in it when it is destroyed, and at no other
//            time. It never frees the records an entry points to.
// Threads    Every operation but the two comparisons holds the queue's own lock for its whole run.
//            A sequence of operations is not atomic. The plain list operations of the base take no
//            lock and don't count an entry's places: they only look at entries, and only in a queue
//            that no other thread can see.
// Errors     An operation that can fail returns false or null, and has changed nothing.
class CSM_ForwardQ : public CPtrList {
 public:
    CSM_ForwardQ();
    ~CSM_ForwardQ();
    CSM_ForwardQ(const CSM_ForwardQ&) = delete;
    CSM_ForwardQ& operator=(const CSM_ForwardQ&) = delete;

    void Lock() { m_lock.Lock(); }
    void Unlock() { m_lock.Unlock(); }

    // Puts the entry at the head, whatever its time.
    bool AddEntryToQueue(ForwardQEntry* entry);

    // Puts the entry behind the last one that is as old or older.
    bool InsertEntryInQueue(ForwardQEntry* entry);

    // Unlinks the first entry that matches: it may be another object than the argument. It is not
    // freed. TakeMatchingEntry returns it, RemoveEntryFromQueue whether there was one.
    ForwardQEntry* TakeMatchingEntry(ForwardQEntry* entry);
    bool RemoveEntryFromQueue(ForwardQEntry* entry) { return TakeMatchingEntry(entry) != nullptr; }

    // Unlinks and returns the head; null when the queue is empty.
    ForwardQEntry* TakeHeadEntry();

    // Appends this queue's pointers to target, head first, and returns how many. The entries are
    // then in both queues: empty target before it is destroyed, or they are freed twice. Locks this
    // queue only, so target must be private to the caller.
    int CopyEntriesToNewQueue(CSM_ForwardQ* target);

    // Unlinks all entries, which are not freed.
    void ForgetEntries();

    // Whether a is due no later than b.
    static bool EntryIsOlder(ForwardQEntry* a, ForwardQEntry* b);

    // Whether both are the same alarm for the same pager and alarm group.
    static bool EntryMatches(ForwardQEntry* a, ForwardQEntry* b);

    // The first entry from the head of this alarm, or of this server; or null.
    ForwardQEntry* FindEntryByAlmLogID(long id);
    ForwardQEntry* FindEntryByServerID(unsigned int id);

    bool HasEntries();

    // Whether this very object is in any queue.
    static bool IsInAQueue(const ForwardQEntry& entry) { return entry.places > 0; }

 private:
    CCriticalSection m_lock;
};

#endif
