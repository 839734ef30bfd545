// Faults below the engine: each call of the table access, threads that can't be started, a trace
// that can't be written. A clean run counts the calls; then one after the other fails.
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "modem/COMHdl.h"
#include "tests/engine/engine_test.h"

// By rule the handle of a port whose settings are refused stays open: the leak checker's own hook.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:CCOMHdl::OpenDevice\n";
}

namespace {

std::atomic<bool> threads_run_out{false};

}  // namespace

extern "C" {
int __real_pthread_create(pthread_t* handle, const pthread_attr_t* attributes,
                          void* (*start)(void*), void* argument);
int __wrap_pthread_create(pthread_t* handle, const pthread_attr_t* attributes,
                          void* (*start)(void*), void* argument) {
    return threads_run_out ? EAGAIN : __real_pthread_create(handle, attributes, start, argument);
}
}

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

// A site that lives from the constructor to the destructor, which looks whether everything that was
// opened has been closed, every planned fault has happened and the engine is gone.
class Site : public EngineTest {
 public:
    Site() {
        unsetenv(test_support::kTraceSwitch);
        AddPager({"anna", kSms1});
        AddPager({"bert", kAlphanumeric, 1, 5});
        for (int alarm = 1; alarm <= 4; ++alarm) {
            AddAlarm(alarm, 2, "pump" + std::to_string(alarm));
        }
        AddRow(1, "anna");
    }

    // A page that was pending, two of an alarm, one that is acknowledged, a test page.
    void RunService() {
        Start();
        answers = {Forward(2, {"bert"}), Forward(3, {"anna", "bert"}), Forward(4, {"bert"})};
        Wait(3min);
        SetAlarmState(4, 1);
        UntilWorkerEnds();
        Test({"test", kSms2});
    }

    // How often a text went to a pager.
    long Sent(const std::string& text) const {
        const std::vector<std::string> pages = Pages();
        return std::count_if(pages.begin(), pages.end(), [&](const std::string& page) {
            return page.find(text) != std::string::npos;
        });
    }

    // Whatever was before: after a start at the latest.
    void ExpectThatItGoesOn() {
        Stop();
        Start();
        AddAlarm(9, 2, "pump9");
        EXPECT_EQ(1, Forward(9, {"anna"}));
        UntilWorkerEnds();
        EXPECT_EQ(1, Sent("pump9"));
    }

    void TestBody() override {}

    using EngineTest::AddRow;
    using EngineTest::Forward;
    using EngineTest::Rows;
    using EngineTest::Start;
    using EngineTest::Stop;
    using EngineTest::store;
    using EngineTest::Test;
    using EngineTest::UntilWorkerEnds;
    using EngineTest::Wait;
    using EngineTest::WorkerRuns;

    std::vector<int> answers;
};

// How many calls, from the first on, look the ports up.
size_t CallsForPorts(const std::vector<std::string>& calls) {
    size_t last = 0;
    for (size_t i = 0; i < calls.size(); ++i) {
        if (calls[i].find("AlarmFwd_COMProperties") != std::string::npos) {
            last = i;
        }
    }
    return last + 1;
}

TEST(TablesBelow, EachCallMayFail) {
    size_t calls = 0;
    size_t calls_for_ports = 0;
    {
        Site site;
        site.RunService();
        calls = site.store.Calls().size();
        calls_for_ports = CallsForPorts(site.store.Calls());
        EXPECT_EQ(1, site.Sent("pump1"));
        EXPECT_EQ(2, site.Sent("pump2"));
        EXPECT_EQ(3, site.Sent("pump3")) << "one for anna, two for bert";
    }
    ASSERT_GT(calls, 500U);
    for (size_t nth = 1; nth <= calls; ++nth) {
        SCOPED_TRACE("call " + std::to_string(nth));
        Site site;
        site.store.FailAnyCall(static_cast<int>(nth));
        site.RunService();
        site.store.StopFailing();
        // One failing call concerns one page. What it can do to it is to end it, as a look at its
        // alarm that fails counts as an acknowledgement, or to leave it for the next start; or that
        // it is sent once more.
        const long sent[] = {site.Sent("pump1"), site.Sent("pump2"), site.Sent("pump3")};
        // A port that isn't found is missed by all until the next start.
        const int most = nth <= calls_for_ports ? 3 : 1;
        const int pages_changed = (sent[0] != 1) + (sent[1] != 2) + (sent[2] != 3);
        EXPECT_LE(pages_changed, most) << sent[0] << " " << sent[1] << " " << sent[2];
        EXPECT_LE(sent[0], 2);
        EXPECT_LE(sent[1], 3);
        EXPECT_LE(sent[2], 4);
        site.ExpectThatItGoesOn();
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

// Every call fails for a while, as when the database is away.
TEST(TablesBelow, AllCallsMayFailForAWhile) {
    Site site;
    site.Start();
    EXPECT_EQ(1, site.Forward(2, {"bert"}));
    site.Wait(30s);
    site.store.FailAlways(test_support::Call::kOpen);
    site.Wait(3h);
    EXPECT_EQ(-1, site.Forward(3, {"anna"})) << "no pager can be found";
    site.store.StopFailing();
    site.UntilWorkerEnds();
    site.ExpectThatItGoesOn();
}

// The pages wait for the next call.
TEST(ThreadsBelow, WorkerThatCannotBeStarted) {
    Site site;
    threads_run_out = true;
    site.Start();  // with a page pending
    EXPECT_FALSE(Site::WorkerRuns());
    site.Wait(1h);
    EXPECT_EQ(0, site.Sent("pump1"));

    EXPECT_EQ(1, site.Forward(2, {"bert"}));
    EXPECT_FALSE(Site::WorkerRuns());
    EXPECT_EQ(2U, site.Rows().size()) << "nothing is lost";

    threads_run_out = false;
    EXPECT_EQ(1, site.Forward(3, {"anna"}));
    site.UntilWorkerEnds();
    EXPECT_EQ(1, site.Sent("pump1"));
    EXPECT_EQ(2, site.Sent("pump2"));
    EXPECT_EQ(1, site.Sent("pump3"));
}

// Any call will do, also one that queues nothing.
TEST(ThreadsBelow, NextCallOfAnyKindAsksForTheWorkerAgain) {
    const std::function<void(Site&)> calls[] = {
        [](Site& site) { site.Start(); },
        [](Site& site) { EXPECT_EQ(-1, site.Forward(2, {"nobody"})); },
        [](Site& site) {
            EXPECT_EQ(0, site.Test({"test", kSms2}));
        },
    };
    for (const std::function<void(Site&)>& call : calls) {
        Site site;
        threads_run_out = true;
        site.Start();
        threads_run_out = false;
        call(site);
        EXPECT_TRUE(Site::WorkerRuns());
        site.UntilWorkerEnds();
        EXPECT_EQ(1, site.Sent("pump1"));
    }
}

TEST(ThreadsBelow, EngineStopsWithoutItsWorker) {
    Site site;
    threads_run_out = true;
    site.Start();
    threads_run_out = false;
    site.Stop();
    EXPECT_EQ(1U, site.Rows().size());
    site.Start();
    site.UntilWorkerEnds();
    EXPECT_EQ(1, site.Sent("pump1"));
}

// No file of this process may grow: a disk that is full.
class FullDisk {
 public:
    FullDisk() {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit none{0, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        signal(SIGXFSZ, SIG_DFL);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

 private:
    rlimit before_{};
};

class TraceBelow : public EngineTest {
 protected:
    TraceBelow() {
        AddPager({"anna", kSms1});
        AddAlarm(1, 2, "pump1");
    }
};

TEST_F(TraceBelow, FullDiskCostsOnlyTheLines) {
    {
        const FullDisk disk;
        Start();
        EXPECT_EQ(1, Forward(1, {"anna"}));
        UntilWorkerEnds();
        EXPECT_THAT(Pages(), Contains(HasSubstr("pump1")));
    }
    EXPECT_EQ("", test_support::TraceText());
    AddAlarm(2);
    EXPECT_EQ(1, Forward(2, {"anna"}));
    EXPECT_TRUE(TraceHas("AlarmFwdPager: anna"));
}

// The thread that met it goes on; any other stops at its next line, until somebody frees the lock.
TEST_F(TraceBelow, KeepsTheTraceLockWhereNoFileCanBeMade) {
    Start();
    std::filesystem::remove_all(folder.Path());
    CCOMHdl::WritePageProtocolEntry("lost");
    folder.Enter();
    EXPECT_EQ(1, Forward(1, {"anna"})) << "the service's thread met it";
    Wait(1h);
    EXPECT_TRUE(WorkerRuns()) << "the worker waits for the lock";
    EXPECT_TRUE(Pages().empty());
    CCOMHdl::UnlockTrace();
    UntilWorkerEnds();
    EXPECT_THAT(Pages(), Contains(HasSubstr("pump1")));
}

// A worker that ends meanwhile waits at its last lines, and holds up nobody.
TEST_F(TraceBelow, ThreadThatMetItGoesOnBesideAWorkerThatEnds) {
    AddAlarm(2, 2, "pump2");
    modem->Plan({PagingModem::Answer::kBusy});
    Start();
    EXPECT_EQ(1, Forward(1, {"anna"}));
    Wait(30s);
    CPagerHdl::AckPagingAlarm(1);  // so that the worker finds nothing after its pause
    std::filesystem::remove_all(folder.Path());
    CCOMHdl::WritePageProtocolEntry("lost");
    folder.Enter();
    Wait(5min);
    EXPECT_FALSE(WorkerRuns());
    EXPECT_FALSE(TraceHas("End Loop Check4DialThread"));
    EXPECT_EQ(1, Forward(2, {"anna"}));
    EXPECT_TRUE(WorkerRuns()) << "another one";

    CCOMHdl::UnlockTrace();
    UntilWorkerEnds();
    EXPECT_THAT(Pages(), Contains(HasSubstr("pump2")));
}

// Beside the worker that waits for the lock there is no page on the line to be waited for.
TEST_F(TraceBelow, EngineIsStoppedInAMinuteBesideAWorkerThatItHoldsUp) {
    Start();
    CCOMHdl::LockTrace();
    EXPECT_EQ(1, Forward(1, {"anna"}));
    const auto before = pagersim::VirtualClock::Now();
    Stop();
    EXPECT_EQ(before + 1min, pagersim::VirtualClock::Now());
    CCOMHdl::UnlockTrace();
    UntilWorkerEnds();
    Start();
    UntilWorkerEnds();
    EXPECT_THAT(Pages(), Contains(HasSubstr("pump1")));
}

}  // namespace
