// Tests of what two threads do to each other when one comes between two steps of the other. The
// steps are trace calls, which are wrapped at link time, and table calls.
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <mutex>
#include <thread>

#include "engine/longest_page.h"
#include "engine/pager_fwd.h"
#include "linux/win_serial.h"
#include "linux/win_system.h"
#include "modem/COMHdl.h"
#include "tests/engine/engine_test.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What happens once, before the next trace call with a certain format.
class TraceHook {
 public:
    void Set(const char* format, std::function<void()> what) {
        const std::lock_guard<std::mutex> guard(lock_);
        format_ = format;
        what_ = std::move(what);
    }
    void RunIfThisIs(const char* format) {
        std::function<void()> what;
        {
            const std::lock_guard<std::mutex> guard(lock_);
            if (format_ == format) {
                what.swap(what_);
                format_.clear();
            }
        }
        if (what) {
            what();
        }
    }

 private:
    std::mutex lock_;
    // Guarded by lock_.
    std::string format_;
    std::function<void()> what_;
};

TraceHook traceHook;
bool threads_run_out = false;

}  // namespace

extern "C" {
void __real__Z13TraceUnlockedPKcz(const char* format, ...);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*start)(void*), void* argument);

void __wrap__Z13TraceUnlockedPKcz(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CString text;
    text.FormatV(format, arguments);
    va_end(arguments);
    traceHook.RunIfThisIs(format);
    __real__Z13TraceUnlockedPKcz("%s", static_cast<const char*>(text));
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*start)(void*), void* argument) {
    return threads_run_out ? EAGAIN : __real_pthread_create(thread, attributes, start, argument);
}
}

namespace {

class Interleaving : public EngineTest {
 protected:
    Interleaving() {
        AddPager({"sms", kSms1});
        AddAlarm(7);
        AddAlarm(8);
        Start();
    }
    ~Interleaving() override { UntilTheOtherEnds(); }

    static void BeforeTheTrace(const char* format, std::function<void()> what) {
        traceHook.Set(format, std::move(what));
    }

    // Another thread does this, as far as it can: to its end, or until it waits for this thread.
    void MeanwhileAnother(std::function<void()> does) {
        {
            const std::lock_guard<std::mutex> guard(lock_);
            other_ = std::thread(std::move(does));
        }
        Wait(1s);
    }
    void UntilTheOtherEnds() {
        std::thread other;
        {
            const std::lock_guard<std::mutex> guard(lock_);
            other.swap(other_);
        }
        if (other.joinable()) {
            other.join();
        }
    }

    // Once, before the next table call that begins so.
    void BeforeTheCall(const std::string& begin, std::function<void()> what) {
        const auto done = std::make_shared<std::atomic<bool>>(false);
        store.BeforeEach([begin, done, what = std::move(what)](const std::string& call) {
            if (call.compare(0, begin.size(), begin) == 0 && !done->exchange(true)) {
                what();
            }
        });
    }

 private:
    std::mutex lock_;
    std::thread other_;  // guarded by lock_
};

// Which only the first test of this process can tell.
TEST_F(Interleaving, BeforeTheFirstPageNoneIsOnTheLine) {
    EXPECT_FALSE(CPagerHdl::pageOnLine);
}

// --- The worker's start and end

// Its last look at the queue and the clearing of its flag are one step.
TEST_F(Interleaving, PageQueuedWhileTheWorkerEndsIsSentByAnother) {
    BeforeTheTrace("End Loop Check4DialThread\n",
                   [this] { MeanwhileAnother([this] { EXPECT_EQ(1, Forward(8, {"sms"})); }); });
    Forward(7, {"sms"});
    Wait(100s);
    UntilTheOtherEnds();
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_EQ(2, CountInTrace("Start Check4DialThread\n"));
}

// The look at the flag and its setting are one step, too.
TEST_F(Interleaving, TwoPagesAtOnceStartOneWorker) {
    BeforeTheCall("SQLConditionDelete(AlarmFwd_PagerEvents, WHERE AlarmFwd_PagerEvents.PagerState",
                  [this] { MeanwhileAnother([this] { EXPECT_EQ(1, Forward(8, {"sms"})); }); });
    EXPECT_EQ(1, Forward(7, {"sms"}));
    UntilTheOtherEnds();
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    EXPECT_EQ(1, CountInTrace("Start Check4DialThread\n"));
    EXPECT_EQ(1, CountInTrace("Check4Dial: Already running\n"));
}

// No line is written under the worker's lock: whoever is held up at one holds up nobody.
TEST_F(Interleaving, ForwardingDoesNotWaitForTheLinesOfAWorkerThatEnds) {
    for (const char* entry : {"End Loop Check4DialThread\n", "End Check4DialThread\n"}) {
        BeforeTheTrace(entry, [] { Sleep(3600 * 1000); });
        EXPECT_EQ(1, Forward(7, {"sms"}));
        UntilWorkerEnds();
        const auto before = pagersim::VirtualClock::Now();
        EXPECT_EQ(1, Forward(8, {"sms"}));
        EXPECT_EQ(before, pagersim::VirtualClock::Now());
        UntilWorkerEnds();
        Wait(3600s);
    }
    EXPECT_EQ(4U, Pages().size());
    EXPECT_EQ(4, CountInTrace("End Check4DialThread\n"));
}

TEST_F(Interleaving, ForwardingDoesNotWaitForTheLinesOfAnother) {
    modem->Plan({}, PagingModem::Answer::kBusy);
    std::atomic<int> answer{-1};
    const auto forward = [&] { answer = Forward(8, {"sms"}); };
    Forward(7, {"sms"});
    Wait(30s);
    BeforeTheTrace("Check4Dial: Already running\n", [&] {
        MeanwhileAnother(forward);
        EXPECT_EQ(1, answer);
    });
    EXPECT_EQ(1, Forward(8, {"sms"}));
    UntilTheOtherEnds();

    Stop();
    store.Delete(kEvents, {"PagerDescr", "sms"});
    Start();
    answer = -1;
    BeforeTheTrace("Check4Dial: Nothing to do\n", [&] {
        MeanwhileAnother(forward);
        EXPECT_EQ(1, answer);
    });
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
}

// Nor under the lock of the entry points.
TEST_F(Interleaving, EntryPointsLockIsFreeWhileTheEngineComesUpAndGoesDown) {
    const auto expect_free = [this] {
        MeanwhileAnother([] {
            const bool is_free = engineLock.try_lock();
            EXPECT_TRUE(is_free);
            if (is_free) {
                engineLock.unlock();
            }
        });
        UntilTheOtherEnds();
    };
    Stop();
    AddRow(7, "sms");
    BeforeTheTrace("InsertInPagingQueue: %s\n", expect_free);
    Start();
    BeforeTheTrace("Before Dial", expect_free);
    Wait(8s);
    BeforeTheTrace("End Check4DialThread\n", expect_free);
    Stop();
}

// --- Teardown

TEST_F(Interleaving, TeardownGivesAPageThatIsStuckOnTheLineTheLongestTime) {
    BeforeTheTrace("Before Dial", [] { Sleep(3600 * 1000); });
    Forward(7, {"sms"});
    Wait(30s);
    const auto before = pagersim::VirtualClock::Now();
    Stop();
    EXPECT_EQ(before + std::chrono::milliseconds(LongestPageMs()), pagersim::VirtualClock::Now());
    EXPECT_NE(nullptr, m_pPagingQ) << "what the worker uses stays";
    Wait(3600s);
    Start();
    EXPECT_TRUE(CPagerHdl::IsRunning());
    UntilWorkerEnds();
}

// It uses nothing any more but the trace.
TEST_F(Interleaving, TeardownLeavesAWorkerToItsLastLine) {
    BeforeTheTrace("End Check4DialThread\n", [] { Sleep(3600 * 1000); });
    Forward(7, {"sms"});
    UntilWorkerEnds();
    Stop();
    EXPECT_EQ(nullptr, m_pPagingQ);
    Start();
    EXPECT_TRUE(CPagerHdl::IsRunning());
    EXPECT_EQ(1, Forward(8, {"sms"}));
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    Wait(3600s);
}

// --- A thread that the system refuses

TEST_F(Interleaving, PageStaysPendingWhileTheSystemHasNoThread) {
    threads_run_out = true;
    EXPECT_EQ(1, Forward(7, {"sms"}));
    threads_run_out = false;
    EXPECT_FALSE(WorkerRuns());
    EXPECT_THAT(Rows(), ElementsAre("7 sms 0 2"));
    Wait(5min);
    EXPECT_THAT(Pages(), IsEmpty());
    EXPECT_EQ(1, Forward(8, {"sms"}));
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
}

TEST_F(Interleaving, RefusedWorkerIsForgottenWithItsEngine) {
    threads_run_out = true;
    Forward(7, {"sms"});
    threads_run_out = false;
    Stop();
    store.Delete(kEvents, {"PagerDescr", "sms"});
    Start();
    store.ForgetCalls();
    Start();
    EXPECT_THAT(store.Calls(), IsEmpty()) << "nobody asks for it again";
}

TEST_F(Interleaving, WorkerThatIsRefusedTwiceIsAskedForAgain) {
    threads_run_out = true;
    Forward(7, {"sms"});
    Start();
    EXPECT_FALSE(WorkerRuns());
    threads_run_out = false;
    Start();
    EXPECT_TRUE(WorkerRuns());
    store.ForgetCalls();
    Start();
    EXPECT_THAT(store.CallsWith("SQLConditionDelete"), IsEmpty()) << "and then no more";
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size());
}

TEST_F(Interleaving, EngineCanBeStoppedAfterItWasRefusedAThread) {
    threads_run_out = true;
    Forward(7, {"sms"});
    threads_run_out = false;
    Stop();
    EXPECT_EQ(nullptr, m_pPagingQ);
    EXPECT_THAT(Rows(), ElementsAre("7 sms 0 2"));
}

TEST_F(Interleaving, TestPageNamesTheDatabaseAsLongAsItLasts) {
    char other[] = "other";
    info.dbName = other;
    std::string during;
    BeforeTheTrace("PAGER TEST invoked!", [&during] { during = m_dB; });
    EXPECT_EQ(0, Test({"test", kSms1}));
    EXPECT_EQ("other", during);
    EXPECT_EQ(nullptr, m_dB);
}

// --- Rows and entries

// A row that came back after it would be paged again by the next start.
TEST_F(Interleaving, AcknowledgementBetweenDeleteAndInsertIsNotOverwritten) {
    const NoWorker noWorker;
    ForwardQEntry* entry = Queue(7, "sms");
    BeforeTheCall("Set(", [this] { MeanwhileAnother([] { CPagerHdl::AckPagingAlarm(7); }); });
    CPagerHdl::ReinsertInPagingQueue(entry, 5);
    UntilTheOtherEnds();
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(Interleaving, AcknowledgementOfAPageThatIsJustBeingQueuedIsNotOverwritten) {
    const NoWorker noWorker;
    BeforeTheCall("Set(", [this] { MeanwhileAnother([] { CPagerHdl::AckPagingAlarm(7); }); });
    EXPECT_EQ(1, Forward(7, {"sms"}));
    UntilTheOtherEnds();
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
}

TEST_F(Interleaving, RowIsRemovedBeforeTheSamePageIsQueuedAgain) {
    const NoWorker noWorker;
    CPagerHdl::DeleteFromPagingQueue(Queue(7, "sms"));
    BeforeTheCall("SQLConditionDelete(",
                  [this] { MeanwhileAnother([this] { EXPECT_EQ(1, Forward(7, {"sms"})); }); });
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
    UntilTheOtherEnds();
    EXPECT_THAT(Rows(), ElementsAre("7 sms 0 2")) << "the new page's";
}

// The entry that an acknowledgement takes out is the one that another thread is asking about.
TEST_F(Interleaving, AcknowledgementWhileTheStateIsBeingTold) {
    const NoWorker noWorker;
    CPagerHdl::DeleteFromPagingQueue(Queue(7, "sms"));
    BeforeTheCall("SQLConditionDelete(",
                  [this] { MeanwhileAnother([] { CPagerHdl::AckPagingAlarm(7); }); });
    EXPECT_EQ(3, CPagerHdl::GetPagingState(7));
    UntilTheOtherEnds();
    EXPECT_THAT(EntriesIn(m_pOffLimitQ), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
}

TEST_F(Interleaving, AcknowledgementOfAPageThatAnotherTakesOutIsRefused) {
    const NoWorker noWorker;
    Queue(7, "sms");
    BeforeTheTrace("DeleteFromPagingQueue: %d:%s\n",
                   [] { EXPECT_TRUE(CPagerHdl::DeleteFromPagingQueue(7L)); });
    EXPECT_FALSE(CPagerHdl::DeleteFromPagingQueue(7L));
    EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
    EXPECT_THAT(Rows(), IsEmpty());
}

// --- Between two entries of a pass

// The pass goes by its own list; only the alarm log tells it that a page isn't owed any more.
TEST_F(Interleaving, EntryAcknowledgedBeforeItsTurnIsStillSent) {
    {
        const NoWorker noWorker;
        Queue(7, "sms");
        Queue(8, "sms");
    }
    DuringTheNextPage([] { CPagerHdl::AckPagingAlarm(7); });
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
    EXPECT_THAT(Rows(), ElementsAre("8 sms 0 4"));
    EXPECT_EQ(0, CPagerHdl::GetPagingState(7)) << "and then in neither queue";
}

TEST_F(Interleaving, AlarmAcknowledgedBeforeItsTurnIsNotSent) {
    {
        const NoWorker noWorker;
        Queue(7, "sms");
        Queue(8, "sms");
    }
    DuringTheNextPage([this] { SetAlarmState(7, 1); });
    CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
    UntilWorkerEnds();
    EXPECT_EQ(1U, Pages().size());
    EXPECT_EQ(1, CountInTrace("Loop Check4DialThread\n"));
}

// An entry whose place in the queue another one has taken.
TEST_F(Interleaving, EntryQueuedDuringAPassWaitsForTheNext) {
    BeforeTheTrace("pWorkingQ: %s\n",
                   [this] { MeanwhileAnother([this] { EXPECT_EQ(1, Forward(8, {"sms"})); }); });
    Forward(7, {"sms"});
    Wait(50s);
    UntilTheOtherEnds();
    EXPECT_EQ(1U, Pages().size());
    UntilWorkerEnds();
    EXPECT_EQ(2U, Pages().size());
}

// --- At the end of a page

class PortThatCannotBeClosed : public Interleaving {
 protected:
    ~PortThatCannotBeClosed() override { CloseHandle(opened_); }

    void SendAPage() {
        BeforeTheTrace("Before CloseComPort", [this] {
            opened_ = CCOMHdl::COMPortTable[0]->handle.exchange(INVALID_HANDLE_VALUE);
        });
        ForwardQEntry* entry = MakeEntry(7, "sms");
        CPagerHdl::PagerSendMessage(entry, false, nullptr, &result);
        CPagerHdl::FreeQEntry(entry);
    }

    int result = -1;

 private:
    HANDLE opened_ = INVALID_HANDLE_VALUE;
};

TEST_F(PortThatCannotBeClosed, IsTraced) {
    SendAPage();
    EXPECT_EQ(0, result) << "the page counts";
    EXPECT_EQ(1, CountInTrace("Closing COM port fails!"));
}

TEST_F(PortThatCannotBeClosed, IsNoNewsAfterAModemError) {
    modem->Plan({PagingModem::Answer::kBusy});
    SendAPage();
    EXPECT_EQ(6, result);
    EXPECT_EQ(0, CountInTrace("Closing COM port fails!"));
}

}  // namespace
