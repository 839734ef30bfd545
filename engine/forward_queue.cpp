// The queue of pending pages.
// Tested by tests/unit/engine/forward_queue_test.cpp.
#include "engine/forward_queue.h"

#include <new>

#include "engine/locked.h"

namespace {

using QueueLock = Locked<CSM_ForwardQ>;

constexpr int kNodesPerBlock = 10;

ForwardQEntry* EntryAt(const CPtrList& list, POSITION position) {
    return static_cast<ForwardQEntry*>(list.GetAt(position));
}

// The first position from the head whose entry satisfies the predicate, or null.
template <typename Predicate>
POSITION FindPosition(const CPtrList& list, Predicate satisfies) {
    POSITION next = list.GetHeadPosition();
    while (next != nullptr) {
        const POSITION here = next;
        if (satisfies(static_cast<ForwardQEntry*>(list.GetNext(next)))) {
            return here;
        }
    }
    return nullptr;
}

template <typename Predicate>
ForwardQEntry* FindEntry(const CPtrList& list, Predicate satisfies) {
    const POSITION position = FindPosition(list, satisfies);
    return position != nullptr ? EntryAt(list, position) : nullptr;
}

// Null entries are allowed in a queue.
void CountPlace(ForwardQEntry* entry, int32_t change) {
    if (entry != nullptr) {
        entry->places += change;
    }
}

void CountPlaces(const CPtrList& list, int32_t change) {
    for (POSITION next = list.GetHeadPosition(); next != nullptr;) {
        CountPlace(static_cast<ForwardQEntry*>(list.GetNext(next)), change);
    }
}

// The last position whose entry is due no later than the entry, or null.
POSITION FindLastOlder(const CPtrList& list, ForwardQEntry* entry) {
    POSITION next = list.GetTailPosition();
    while (next != nullptr) {
        const POSITION here = next;
        if (CSM_ForwardQ::EntryIsOlder(static_cast<ForwardQEntry*>(list.GetPrev(next)), entry)) {
            return here;
        }
    }
    return nullptr;
}

}  // namespace

CSM_ForwardQ::CSM_ForwardQ() : CPtrList(kNodesPerBlock) {}

CSM_ForwardQ::~CSM_ForwardQ() {
    const QueueLock guard(*this);
    while (!IsEmpty()) {
        delete static_cast<ForwardQEntry*>(RemoveHead());
    }
}

// The list allocates its nodes in blocks, so that only some insertions can run out of memory.
bool CSM_ForwardQ::AddEntryToQueue(ForwardQEntry* entry) {
    const QueueLock guard(*this);
    try {
        AddHead(entry);
    } catch (const std::bad_alloc&) {
        return false;
    }
    CountPlace(entry, 1);
    return true;
}

bool CSM_ForwardQ::InsertEntryInQueue(ForwardQEntry* entry) {
    const QueueLock guard(*this);
    const POSITION older = FindLastOlder(*this, entry);
    try {
        older != nullptr ? InsertAfter(older, entry) : AddHead(entry);
    } catch (const std::bad_alloc&) {
        return false;
    }
    CountPlace(entry, 1);
    return true;
}

ForwardQEntry* CSM_ForwardQ::TakeMatchingEntry(ForwardQEntry* entry) {
    const QueueLock guard(*this);
    const POSITION position = FindPosition(
        *this, [entry](ForwardQEntry* element) { return EntryMatches(entry, element); });
    if (position == nullptr) {
        return nullptr;
    }
    ForwardQEntry* taken = EntryAt(*this, position);
    RemoveAt(position);
    CountPlace(taken, -1);
    return taken;
}

ForwardQEntry* CSM_ForwardQ::TakeHeadEntry() {
    const QueueLock guard(*this);
    if (IsEmpty()) {
        return nullptr;
    }
    auto* taken = static_cast<ForwardQEntry*>(RemoveHead());
    CountPlace(taken, -1);
    return taken;
}

int CSM_ForwardQ::CopyEntriesToNewQueue(CSM_ForwardQ* target) {
    const QueueLock guard(*this);
    const int before = target->GetCount();
    try {
        target->AddTail(this);
    } catch (...) {
        // What was copied is still this queue's alone.
        while (target->GetCount() > before) {
            target->RemoveTail();
        }
        throw;
    }
    CountPlaces(*this, 1);
    return GetCount();
}

void CSM_ForwardQ::ForgetEntries() {
    const QueueLock guard(*this);
    CountPlaces(*this, -1);
    RemoveAll();
}

bool CSM_ForwardQ::EntryIsOlder(ForwardQEntry* a, ForwardQEntry* b) {
    return a->queueTime <= b->queueTime;
}

bool CSM_ForwardQ::EntryMatches(ForwardQEntry* a, ForwardQEntry* b) {
    return a->alarmLogEntry->alarmLogId == b->alarmLogEntry->alarmLogId &&
           a->pagerDescr == b->pagerDescr && a->almGroup == b->almGroup;
}

ForwardQEntry* CSM_ForwardQ::FindEntryByAlmLogID(long id) {
    const QueueLock guard(*this);
    return FindEntry(
        *this, [id](ForwardQEntry* element) { return element->alarmLogEntry->alarmLogId == id; });
}

ForwardQEntry* CSM_ForwardQ::FindEntryByServerID(unsigned int id) {
    const QueueLock guard(*this);
    return FindEntry(*this, [id](ForwardQEntry* element) { return element->serverId == id; });
}

bool CSM_ForwardQ::HasEntries() {
    const QueueLock guard(*this);
    return !IsEmpty();
}
