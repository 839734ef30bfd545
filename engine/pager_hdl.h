// The pager handler: pending pages, their queues and table rows, and the worker that sends them.
//
// This header declares the whole handler; its members are defined in one file per subject:
//   handler_setup.cpp    construction, clean-up, the shared state
//   queue_rebuild.cpp    pending pages after a restart
//   queue_entries.cpp    making and freeing entries
//   queueing.cpp         into the paging queue         retiring.cpp         out of it, off limit
//   acknowledgement.cpp  acknowledging, asking         events_table.cpp     the rows of the entries
//   dial_worker.cpp      the worker's passes           page_send.cpp        one page, step by step
#ifndef PAGERFWD_ENGINE_PAGER_HDL_H
#define PAGERFWD_ENGINE_PAGER_HDL_H

#include <atomic>
#include <cstdint>

#include "engine/entry_ledger.h"
#include "engine/forward_queue.h"
#include "engine/retry_rules.h"
#include "engine/worker_thread.h"
#include "linux/CriticalSection.h"
#include "linux/XString.h"
#include "linux/XStringArray.h"
#include "tables/alarm_log.h"
#include "tables/owned_text.h"
#include "tables/pager_fwd_events.h"
#include "tables/pager_settings.h"

class CCOMHdl;

// What PagerSendMessage answers by itself. Failing modem steps answer the codes of COMHdl.h.
enum PageResult : int {
    kPageSent = 0,
    kPagerUnknown = -1,  // or its time model
    kNoPort = 5,
};

// Entries still to be sent, and entries that were given up or done, kept so that their state can be
// asked for. Null while no handler is up. An entry's row of the events table follows it.
extern CSM_ForwardQ* m_pPagingQ;
extern CSM_ForwardQ* m_pOffLimitQ;

// The process has one handler. Its state is static, so that the worker and the service's threads
// reach it without an object; the object is the handle that brings the state up and takes it down.
//
// Order      Construct, use, destroy. An object made while another is up shares its state and
//            changes nothing. Without a handler PagingAlarm answers false; the other operations on
//            queues, rows and pages need one.
// Ownership  Owns the queues and all entries. An entry is freed when it is in no queue and no
//            operation is under way (entry_ledger.h); an argument that an operation gives up counts
//            as freed. Records handed out go back to the class of tables/ that made them.
// Threads    The service's threads and one worker. Construction, destruction and CleanUp must not
//            overlap with anything but the worker; everything else may be called by any thread,
//            but for IsInPagingQueue. A sequence of operations is not atomic.
// Locks      lockSend, for a whole page; lock, for an entry's state and its table row. Each is
//            taken before the locks of modem/, of a queue and of the table access. lockDial, for
//            the decision to start or end the worker, is taken before a queue's only: no line is
//            traced, no table read and no thread waited for under it. No lock is held from one
//            operation to the next.
// Errors     Flags and null records. Words go to the trace. Memory that runs out is std::bad_alloc
//            from the constructor, ComeUp, AckPagingAlarm, AckAllPagingAlarms, the queries,
//            GetPager and the making of entries, with nothing half done that a second call doesn't
//            do; elsewhere a page is refused, fails or stays pending.
class CPagerHdl {
 public:
    // As ComeUp.
    explicit CPagerHdl(const char* dbName);
    ~CPagerHdl();
    CPagerHdl(const CPagerHdl&) = delete;
    CPagerHdl& operator=(const CPagerHdl&) = delete;

    static bool IsRunning();

    // Brings the handler up, if none is; dbName is copied. Throws std::bad_alloc, with everything
    // released, when the system lacks memory for a part of it or descriptors for its worker. As
    // long as the worker of a handler before it is stuck, nothing happens. Either way it may be
    // called again.
    void ComeUp(const char* dbName);

    // Stops the worker, after the page on the line if there is one, and releases everything. When
    // the worker doesn't end within the longest possible page, or within the time for tables and
    // trace while no page is on the line, all that it uses stays as it is.
    static void CleanUp();

    static void Lock() { lock.Lock(); }
    static void Unlock() { lock.Unlock(); }
    static void LockSend() { lockSend.Lock(); }
    static void UnlockSend() { lockSend.Unlock(); }

    // --- Set-up, for the constructor.

    static void LoadGlobalSettings();
    static bool LoadSeverityStrings();  // always true
    // Queues the pages that the events table still holds. Always true.
    static bool InitializePagerQueue();

    // --- Entries. Texts are copied; ev and alarm become the entry's.

    // Null when there is no such alarm. The severity given is not kept: the alarm has its own.
    static ForwardQEntry* CreateQEntry(PagerFwdEvent* ev, CString pagerDescr, unsigned retries,
                                       ForwardState state, long almLogId, CString almGroup,
                                       TRAP_SEVERITY severity, CString serverN);
    static ForwardQEntry* CreateQEntry(PagerFwdEvent* ev, CString pagerDescr, unsigned retries,
                                       ForwardState state, AlarmLogEntry* alarm, CString almGroup,
                                       TRAP_SEVERITY severity, CString serverN);
    // From a row that a restart found.
    static ForwardQEntry* CreateQEntry(PagerFwdEvent* ev);

    // Frees the entry with its records, or has it freed as soon as nobody can be looking at it.
    // Null is allowed.
    static void FreeQEntry(ForwardQEntry* e);

    // --- Queueing. An entry that is refused has been freed.

    static bool PagingAlarm(CString pagerDescr, CString serverN, CString almGroup, long almLogId,
                            unsigned retries);
    static bool PagingAlarm(ForwardQEntry* entry);

    // To the head of the queue: the entry is due at once.
    static bool InsertInPagingQueue(ForwardQEntry* e);

    // Puts the entry back, due so many minutes after its old due time.
    static bool ReinsertInPagingQueue(ForwardQEntry* e, int minutes);

    // --- Retiring.

    // Moves the entry to the off-limit queue. False: it was in no paging queue, and has been freed.
    static bool DeleteFromPagingQueue(ForwardQEntry* e);

    // Takes the first entry of the alarm out of the paging queue, or else out of the off-limit
    // queue, and deletes all the alarm's rows.
    static bool DeleteFromPagingQueue(long almLogId);

    // State 4 is kept, every other becomes 3. Always true.
    static bool InsertInOffLimitQueue(ForwardQEntry* e);
    static bool InsertInOffLimitQueue(ForwardQEntry* e, CString, CString);
    static void OffLimitOrDiscardEntry(ForwardQEntry* e);

    // Takes the alarm's first entry out of the off-limit queue, deletes its row and frees it.
    static bool DeleteFromOffLimitQueue(long almLogId);

    // --- Acknowledging and asking.

    static void AckPagingAlarm(long almLogId);
    static void AckAllPagingAlarms();

    // 2 an entry of the alarm is in the paging queue, 3 one was in the off-limit queue, 0 neither.
    // Answering 3 removes that entry, so it is told once.
    static int GetPagingState(long almLogId);

    // 2 an entry of the server is in the paging queue, 3 one is in the off-limit queue, 1 neither.
    static int GetServerState(unsigned serverId);

    // Whether the paging queue holds an entry of the alarm and group, which then gets the pager.
    // Not while a worker runs: it reads that text without a lock.
    static bool IsInPagingQueue(long almLogId, CString almGroup, CString pagerDescr);

    // Without effect.
    static void SmsAcknowledge(ForwardQEntry*) {}
    static void RemoveEventsDBEntries() {}

    // Null when unknown. The caller frees it with CDB_PagerSettings::FreePager.
    static Pager* GetPager(CString pagerDescr);

    // --- The rows of entries in the events table. A row is replaced by delete, then insert.

    static bool AddEntryToEventsDB(ForwardQEntry* e);     // false: no memory; all is as before
    static bool UpdateEntryInEventsDB(ForwardQEntry* e);  // only a row that is there; always true
    static void RemoveEntryFromEventsDB(ForwardQEntry* e);
    static void RemoveEntryFromEventsDB(long almLogId);  // all rows of the alarm

    // --- Sending.

    // Starts the worker if there is something to send and none runs. The arguments, those of a
    // timer's callback, have no effect.
    static void Check4Dial(void* wnd, unsigned message, unsigned timerId, unsigned long time);

    // Check4Dial once more, if the system refused the worker that the last one was to start.
    static void RetryRefusedStart();

    // The worker: a pass a minute until the paging queue is empty.
    static void* Check4DialThread(void* arg);

    // Sends one page, minutes long. A test takes testPager, whatever its hours; otherwise the
    // entry's pager is looked up. True: sent, or outside the pager's hours. *result, unless null,
    // becomes a PageResult or what the failing modem step stores; outside the pager's hours it is
    // left alone.
    static bool PagerSendMessage(ForwardQEntry* entry, bool test, Pager* testPager, int* result);

    // --- State of the process. Set up by the constructor and constant until the clean-up, unless
    // --- said otherwise.

    static std::atomic<CPagerHdl*> PagerHdl;  // the handler that is up
    static char* m_dB;                        // database name
    static CCOMHdl* ccom;
    static CDB_PagerFwdEvents* m_pPagerEventsSet;  // for the rows of entries
    static CDB_PagerFwdEvents* pagerFwdEvents;     // for start-up and inactive rows
    static PagerFwdEvent** m_pPagerEventsList;     // rows read at start-up; its records are not its
    static CDB_PagerSettings* m_pPagerSettingsSet;
    static CDB_AlarmLog* m_pAlarmLogSet;
    static void* m_pPagerTable;              // unused
    static CStringArray* PHSeverityStrings;  // Critical, Major, Minor, Informational, Unknown
    static uint32_t PHTimerId;               // unused
    static int32_t NumOfRetries;             // for a page whose pager is unknown
    static int32_t RetryDelay;               // minutes, likewise
    static bool m_pPagingQIsInitialized;     // the start-up pass is over
    // A worker runs, or is about to be started. Without it none uses the handler: a thread may
    // still be writing its last lines. Changed under lockDial.
    static std::atomic<bool> checkAlready;
    static std::atomic<bool> pageOnLine;  // from the opening of its port to the closing

    static CCriticalSection lock;
    static CCriticalSection lockSend;

 private:
    // Set-up.
    static void SetUp(OwnedText dbName);
    static void FreeQueues();

    // Entries and queues.
    static EntryLedger& Entries();
    static bool TakeOut(const EntryUse& use, CSM_ForwardQ* queue, ForwardQEntry* e);
    static bool DeleteRow(ForwardQEntry* e);
    static void InsertRow(ForwardQEntry* e);
    static void SetState(ForwardQEntry* e, ForwardState state);
    static uint32_t CountAttempt(ForwardQEntry* e);

    // The worker's.
    static WorkerThread& Worker();
    static bool StopWorker(int longestMs);
    static bool ClaimWorker();
    static void EndClaim();
    static bool HasWork();
    static bool MayContinue();
    static void RunPass();
    static bool TreatEntry(CDB_AlarmLog& alarmLog, ForwardQEntry* e, const CTime& now);
    static void DropAcknowledged(ForwardQEntry* e);
    static bool FollowSuccess(ForwardQEntry* e);
    static void FollowFailure(ForwardQEntry* e);
    static void RepeatOrGiveUp(ForwardQEntry* e, const RetryRule& rule, const char* exceeded);

    static CCriticalSection lockDial;
    static std::atomic<bool> startRefused;  // the worker's, by the system
};

#endif
