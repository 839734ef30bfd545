// The worker: one thread that sends the due pages of the paging queue, a pass a minute.
// Tested by tests/engine/worker_test.cpp, retry_test.cpp and acknowledgement_test.cpp.
#include <algorithm>

#include "engine/chars.h"
#include "engine/locked.h"
#include "engine/longest_page.h"
#include "engine/pager_hdl.h"
#include "engine/records.h"
#include "linux/out_of_memory.h"
#include "modem/trace.h"

namespace {

using DialLock = Locked<CCriticalSection>;

constexpr int kPauseMs = 60000;
constexpr int kUncountedDelayMinutes = 5;

// The paging queue as it is now, for one pass. The entries stay the queues'.
class WorkingQueue {
 public:
    explicit WorkingQueue(CSM_ForwardQ& pagingQueue) {
        pagingQueue.CopyEntriesToNewQueue(&m_entries);
        m_next = m_entries.GetHeadPosition();
    }
    ~WorkingQueue() { m_entries.ForgetEntries(); }
    WorkingQueue(const WorkingQueue&) = delete;
    WorkingQueue& operator=(const WorkingQueue&) = delete;

    void Trace() const {
        for (POSITION next = m_entries.GetHeadPosition(); next != nullptr;) {
            TraceUnlocked("pWorkingQ: %s\n", Chars(EntryAt(next)->pagerDescr));
        }
    }

    // Null after the last one.
    ForwardQEntry* Next() { return m_next != nullptr ? EntryAt(m_next) : nullptr; }

 private:
    // The entry there; the position moves on.
    ForwardQEntry* EntryAt(POSITION& position) const {
        return static_cast<ForwardQEntry*>(m_entries.GetNext(position));
    }

    CSM_ForwardQ m_entries;
    POSITION m_next;
};

// A missing row counts as an acknowledgement.
bool IsAcknowledged(CDB_AlarmLog& alarmLog, const ForwardQEntry& entry) {
    const OwnedFwdInfo alarm(alarmLog.GetAlarmLogFwdInfo(entry.alarmLogEntry->alarmLogId));
    return !alarm || alarm->pagerState == kForwardAcknowledged;
}

}  // namespace

// Never destroyed: a worker may outlive the end of the program.
WorkerThread& CPagerHdl::Worker() {
    static WorkerThread& worker = *new WorkerThread;
    return worker;
}

// Without memory for a condition the inactive rows stay until the next call; without a thread to be
// had, the pages do.
void CPagerHdl::Check4Dial(void*, unsigned, unsigned, unsigned long) {
    TraceUnlocked("Check4Dial\n");
    if (!ClaimWorker()) {
        TraceUnlocked("Check4Dial: Already running\n");
        return;
    }
    MemorySufficesFor([] { pagerFwdEvents->DeleteInactiveEvents(); });
    if (!HasWork()) {
        TraceUnlocked("Check4Dial: Nothing to do\n");
        return;
    }
    const bool refused = !Worker().Start(Check4DialThread);
    startRefused = refused;
    if (refused) {
        EndClaim();
    }
}

void CPagerHdl::RetryRefusedStart() {
    if (startRefused.exchange(false)) {
        Check4Dial(nullptr, 0, 0, 0);
    }
}

// The look at the flag and its setting are one step, so that there is never a second worker.
bool CPagerHdl::ClaimWorker() {
    const DialLock guard(lockDial);
    return !checkAlready.exchange(true);
}

void CPagerHdl::EndClaim() {
    const DialLock guard(lockDial);
    checkAlready = false;
}

// The look at the queue and the clearing of the flag are one step: whoever queues a page before it
// is seen here, whoever does after it starts a worker.
bool CPagerHdl::HasWork() {
    const DialLock guard(lockDial);
    if (m_pPagingQ->HasEntries()) {
        return true;
    }
    checkAlready = false;
    return false;
}

void* CPagerHdl::Check4DialThread(void*) {
    TraceUnlocked("Start Check4DialThread\n");
    while (MayContinue()) {
        TraceUnlocked("Loop Check4DialThread\n");
        // A pass that can't even begin is made up for by the next.
        MemorySufficesFor(RunPass);
        TraceUnlocked("Check4DialThread: sleep\n");
        Worker().Pause(kPauseMs);
    }
    TraceUnlocked("End Check4DialThread\n");
    Worker().AnnounceEnd();
    return nullptr;
}

// After the answer no, this thread uses nothing of the handler: only its last lines are left.
bool CPagerHdl::MayContinue() {
    if (Worker().StopRequested()) {
        EndClaim();
        return false;
    }
    if (!HasWork()) {
        TraceUnlocked("End Loop Check4DialThread\n");
        return false;
    }
    return true;
}

// Looked at again and again, since a page may begin or end meanwhile. A worker that is only held up
// at its last lines is left to them.
bool CPagerHdl::StopWorker(int longestMs) {
    do {
        const int lookMs = std::min(longestMs, kTablesAndTraceMs);
        if (Worker().Stop(lookMs)) {
            return true;
        }
        if (!checkAlready) {
            Worker().LetGo();
            return true;
        }
        longestMs -= lookMs;
    } while (pageOnLine && longestMs > 0);
    return false;
}

void CPagerHdl::RunPass() {
    const EntryUse use(Entries());
    CDB_AlarmLog alarmLog(m_dB);
    WorkingQueue working(*m_pPagingQ);
    working.Trace();
    CTime now = CTime::GetCurrentTime();
    while (ForwardQEntry* entry = working.Next()) {
        if (Worker().StopRequested()) {
            return;
        }
        // An entry that memory runs out for stays as it is until the next pass.
        MemorySufficesFor([&] {
            if (TreatEntry(alarmLog, entry, now)) {
                now = CTime::GetCurrentTime();
            }
        });
    }
}

// Whether the clock is to be read again: after every page that was put off or given up. A page that
// is done leaves the time of the pass as it was.
bool CPagerHdl::TreatEntry(CDB_AlarmLog& alarmLog, ForwardQEntry* e, const CTime& now) {
    TraceUnlocked("Check4DialThreadLoop: %s\n", Chars(e->pagerDescr));
    if (IsAcknowledged(alarmLog, *e)) {
        DropAcknowledged(e);
        return false;
    }
    if (e->queueTime > now) {
        TraceUnlocked("Check4DialThreadLoop: Wait\n");
        return false;
    }
    if (PagerSendMessage(e, false, nullptr, nullptr)) {
        return FollowSuccess(e);
    }
    FollowFailure(e);
    return true;
}

void CPagerHdl::DropAcknowledged(ForwardQEntry* e) {
    SetState(e, kForwardDone);
    TraceUnlocked("Check4DialThreadLoop: %s acked\n", Chars(e->pagerDescr));
    DeleteFromPagingQueue(long{e->alarmLogEntry->alarmLogId});
    TraceUnlocked("Paging acknowledged by AlMan ???\n");
}

// Whether the entry was put off or given up. That of an unknown pager stays due.
bool CPagerHdl::FollowSuccess(ForwardQEntry* e) {
    TraceUnlocked("PagerSendMessage successful!!\n");
    const OwnedPager pager(GetPager(Chars(e->pagerDescr)));
    if (!pager) {
        return false;
    }
    if (ConfirmsDelivery(pager->pagerType)) {
        SetState(e, kForwardDone);
        TraceUnlocked("Check4DialThreadLoop: Sent successful: %s\n", Chars(e->pagerDescr));
        DeleteFromPagingQueue(e);
        return false;
    }
    RepeatOrGiveUp(e, {pager->numRetries, pager->retryDelay}, "Retries exceeded");
    return true;
}

// Every other failure counts: the first of two is put down to the line.
void CPagerHdl::FollowFailure(ForwardQEntry* e) {
    if (!e->postponed) {
        e->postponed = true;
        ReinsertInPagingQueue(e, kUncountedDelayMinutes);
        return;
    }
    const OwnedPager pager(GetPager(Chars(e->pagerDescr)));
    e->postponed = false;
    RepeatOrGiveUp(e, RuleOf(pager.get(), {NumOfRetries, RetryDelay}), "Retries exceeded1");
}

void CPagerHdl::RepeatOrGiveUp(ForwardQEntry* e, const RetryRule& rule, const char* exceeded) {
    if (HasAttemptsLeft(CountAttempt(e), rule)) {
        ReinsertInPagingQueue(e, rule.delayMinutes);
        return;
    }
    TraceUnlocked("Check4DialThreadLoop: %s: %s\n", exceeded, Chars(e->pagerDescr));
    DeleteFromPagingQueue(e);
}
