// Memory that runs out in the library, at every allocation: one after the other fails, while
// everything around the library has memory. Whatever it meets:
//   - nothing ends the process, hangs, or (as the sanitizers see it) is lost or freed twice;
//   - a page that was answered with 1 is sent, or stands in the table for the next start;
//   - an exception reaches the service only from an engine that does not come up;
//   - with memory back, the next page goes out over the same port, but for one that could not be
//     opened.
#include <algorithm>
#include <climits>
#include <functional>
#include <initializer_list>
#include <optional>
#include <set>

#include "engine/pager_fwd.h"
#include "modem/COMHdl.h"
#include "tests/engine/allocation_faults.h"
#include "tests/engine/engine_test.h"
#include "tests/proof/table_calls.h"

namespace proof {
namespace {

using ::testing::IsEmpty;
using Whose = FailingLibrary::Whose;

// What the table store allocates is not the library's.
class StoreHasMemory : public TableWatcher {
 public:
    void Before(const TableCall&) override { NotTheLibrary::Begin(); }
    void After(const TableCall& call, int32_t) override {
        NotTheLibrary::End();
        if (call.deed == TableDeed::kRead && call.table == failing_) {
            failing_ = {};
            fault_.emplace(Whose::kCallers, 1);
        }
    }

    // The library's first allocation behind the next read of this table fails.
    void FailBehindTheReadOf(std::string_view table) { failing_ = table; }
    void StopFailing() { fault_.reset(); }

 private:
    std::string_view failing_;
    std::optional<FailingLibrary> fault_;
};

class MemoryFaults : public EngineTest {
 protected:
    MemoryFaults() {
        pagersim::VirtualClock::SetStep(100ms);
        SetTableWatcher(&store_has_memory_);
        SetTracing(false);
        AddPager({"signal", kSignal, 0});
        AddPager({"numeric", kNumeric, 0});
        AddPager({"text", kAlphanumeric, 0});
        AddPager({"ntt", kNTT, 0});
        AddPager({"tap", kSms1});
        AddPager({"ucp", kSms2});
    }
    ~MemoryFaults() override {
        Stop();
        SetTableWatcher(nullptr);
    }

    static void SetTracing(bool on) {
        if (on) {
            setenv(test_support::kTraceSwitch, "", 1);
        } else {
            unsetenv(test_support::kTraceSwitch);
        }
    }

    // The exported functions. Nothing: an exception has passed on.

    std::optional<int> CallForward(int alarm, const char* pager) {
        std::string name = pager;
        char* names[] = {name.data()};
        char group[] = "OPS/1";
        char* groups[] = {group};
        char server[] = "SRV1";
        int32_t id = alarm;
        FwdSpecialInfoStr call{database, &id, nullptr, groups};
        return Call([&] { return AlarmFwdPager(&call, server, nullptr, names, 1); });
    }

    std::optional<int> CallTest(int type) {
        char name[] = "test";
        char number[] = "555";
        char port[] = "COM 1";
        char hours[] = "always";
        std::string type_text = std::to_string(type);
        return Call([&] { return TestPager(&info, name, number, port, type_text.data(), hours); });
    }

    bool CallStart() {
        const auto start = [&] {
            StartAlarmFwdPager(&info);
            return 0;
        };
        return Call(start).has_value();
    }

    template <typename Function>
    static std::optional<int> Call(Function function) {
        const InLibrary inside;
        try {
            return function();
        } catch (const std::bad_alloc&) {
            return std::nullopt;
        }
    }

    int NewAlarm() {
        const int alarm = ++last_alarm_;
        AddAlarm(alarm, 2, "pump" + std::to_string(alarm));
        return alarm;
    }

    size_t RowsOf(int alarm) const {
        const std::vector<std::string> rows = Rows();
        const std::string begin = std::to_string(alarm) + " ";
        return static_cast<size_t>(std::count_if(
            rows.begin(), rows.end(),
            [&](const std::string& row) { return row.compare(0, begin.size(), begin) == 0; }));
    }

    // How many pages have gone out. What calls an NTT pager is no page yet.
    size_t Delivered() const {
        const std::vector<std::string> pages = Pages();
        return static_cast<size_t>(std::count_if(
            pages.begin(), pages.end(),
            [](const std::string& page) { return page.compare(0, 5, "ATDT1") != 0; }));
    }

    // Whether the port is free, and the line closed as often as opened. By rule one whose opening
    // failed stays taken for this engine; then there is a new one, and the run is counted.
    bool PortIsFree() {
        EXPECT_EQ(line.Opens(), line.Closes());
        if (!CCOMHdl::COMPortTable[0]->inUse) {
            return true;
        }
        ++runs_that_took_the_port_;
        Stop();
        Start();
        UntilWorkerEnds();  // with what was left pending
        return false;
    }

    // With memory again, and the engine up or not.
    void ExpectThatAPageGoesThrough() {
        const size_t before = Delivered();
        EXPECT_EQ(1, CallForward(NewAlarm(), "tap"));
        UntilWorkerEnds();
        EXPECT_EQ(before + 1, Delivered());
        EXPECT_TRUE(PortIsFree());
    }

    // One run for each n, until there are fewer allocations; at least as many as a run without a
    // fault has. That one comes last, so that what is allocated once in a process fails, too. `run`
    // gets n; 0: nothing fails.
    template <typename Run>
    static void ForEachAllocation(Whose whose, Run run, int dense = INT_MAX, int step = 1) {
        const auto run_with = [&](int nth) {
            SCOPED_TRACE("allocation " + std::to_string(nth));
            const FailingLibrary fault(whose, nth);
            run(nth);
            return FailingLibrary::HasHappened();
        };
        int nth = 1;
        while (run_with(nth) && !HasFailure()) {
            nth += nth < dense ? 1 : step;
        }
        run_with(0);
        const int all = FailingLibrary::Count();
        EXPECT_GT(all, 0);
        // A queue or list takes its memory in blocks: a run may have one or two fewer.
        EXPECT_GT(nth, all - 3) << "not all were reached";
    }

    static constexpr int kAllocationsOfAnOpening = 2;  // the line, and now and then its handle
    int runs_that_took_the_port_ = 0;
    StoreHasMemory store_has_memory_;

 private:
    int last_alarm_ = 0;
};

// --- The service's calls.

TEST_F(MemoryFaults, QueueingAPage) {
    Start();
    const NoWorker no_worker;
    ForEachAllocation(Whose::kCallers, [&](int nth) {
        const int alarm = NewAlarm();
        const std::optional<int> answer = CallForward(alarm, "text");
        ASSERT_TRUE(answer) << "the engine is up";
        EXPECT_TRUE(*answer == 1 || (*answer == 0 && nth > 0)) << *answer;
        EXPECT_EQ(*answer == 1 ? 1U : 0U, RowsOf(alarm));
        EXPECT_EQ(*answer == 1 ? 2 : 0, CPagerHdl::GetPagingState(alarm));
    });
    EXPECT_EQ(1, CallForward(NewAlarm(), "text"));
}

// A row of the alarm is there, and is read before the page's own is written.
TEST_F(MemoryFaults, QueueingAPageToASecondPager) {
    Start();
    const NoWorker no_worker;
    ForEachAllocation(Whose::kCallers, [&](int nth) {
        const int alarm = NewAlarm();
        Queue(alarm, "tap");
        const int queued = m_pPagingQ->GetCount();
        const std::optional<int> answer = CallForward(alarm, "text");
        ASSERT_TRUE(answer) << "the engine is up";
        EXPECT_TRUE(*answer == 1 || (*answer == 0 && nth > 0)) << *answer;
        EXPECT_EQ(*answer == 1 ? 2U : 1U, RowsOf(alarm));
        EXPECT_EQ(queued + *answer, m_pPagingQ->GetCount());
    });
}

// What an earlier engine has left of it is read to be replaced.
TEST_F(MemoryFaults, QueueingAPageWhoseRowIsThere) {
    Start();
    const NoWorker no_worker;
    ForEachAllocation(Whose::kCallers, [&](int nth) {
        const int alarm = NewAlarm();
        AddRow(alarm, "text");
        const int queued = m_pPagingQ->GetCount();
        const std::optional<int> answer = CallForward(alarm, "text");
        ASSERT_TRUE(answer) << "the engine is up";
        EXPECT_TRUE(*answer == 1 || (*answer == 0 && nth > 0)) << *answer;
        EXPECT_EQ(1U, RowsOf(alarm));
        EXPECT_EQ(queued + *answer, m_pPagingQ->GetCount());
    });
}

// The first call brings the engine up: the one exception that passes on, whatever part of it memory
// runs out for. The next call tries again.
TEST_F(MemoryFaults, QueueingTheFirstPage) {
    const NoWorker no_worker;
    ForEachAllocation(Whose::kCallers, [&](int nth) {
        const int alarm = NewAlarm();
        const std::optional<int> answer = CallForward(alarm, "text");
        EXPECT_TRUE(nth > 0 || answer == 1);
        EXPECT_NE(-1, answer.value_or(0)) << "there is such a pager";
        EXPECT_EQ(answer == 1 ? 1U : 0U, RowsOf(alarm));
        EXPECT_EQ(answer.has_value(), CPagerHdl::IsRunning()) << "no engine fails silently";
        EXPECT_EQ(answer.has_value(), m_pPagingQ != nullptr) << "nor by half";
        EXPECT_EQ(line.Opens(), line.Closes());
        if (!answer) {
            EXPECT_EQ(1, CallForward(alarm, "text")) << "there is memory again";
        }
        Stop();
        store.Delete(kEvents, {"AlmLogID", std::to_string(alarm)});
    });
    EXPECT_EQ(1, CallForward(NewAlarm(), "text"));
}

// What a worker needs was made with the handler: a page that is accepted has one.
TEST_F(MemoryFaults, QueueingAPageThatStartsTheWorker) {
    Start();
    ForEachAllocation(Whose::kCallers, [&](int) {
        const size_t before = Delivered();
        const std::optional<int> answer = CallForward(NewAlarm(), "tap");
        ASSERT_TRUE(answer) << "the engine is up";
        UntilWorkerEnds();
        EXPECT_EQ(static_cast<size_t>(*answer), Delivered() - before);
    });
    ExpectThatAPageGoesThrough();
}

TEST_F(MemoryFaults, StartThatHasNoMemoryForTheListOfPendingPages) {
    const NoWorker no_worker;
    AddRow(NewAlarm(), "tap");
    store_has_memory_.FailBehindTheReadOf(kEvents);
    EXPECT_FALSE(CallStart());
    EXPECT_TRUE(FailingLibrary::HasHappened());
    EXPECT_FALSE(CPagerHdl::IsRunning());
    EXPECT_EQ(nullptr, CPagerHdl::m_pPagerEventsList);
    EXPECT_EQ(nullptr, m_pPagingQ);
    EXPECT_EQ(nullptr, CPagerHdl::ccom);
    store_has_memory_.StopFailing();
    EXPECT_TRUE(CallStart());
    EXPECT_EQ(1, m_pPagingQ->GetCount());
}

TEST_F(MemoryFaults, StartThatHasNoMemoryForThePagerOfAPendingPage) {
    const NoWorker no_worker;
    AddRow(NewAlarm(), "tap");
    store_has_memory_.FailBehindTheReadOf(kPagers);
    EXPECT_TRUE(CallStart());
    EXPECT_TRUE(FailingLibrary::HasHappened());
    EXPECT_EQ(0, m_pPagingQ->GetCount());
    EXPECT_EQ(1U, Rows().size()) << "for the next start";
    store_has_memory_.StopFailing();
}

TEST_F(MemoryFaults, StartWithPendingPages) {
    const NoWorker no_worker;
    const int first = NewAlarm();
    const int second = NewAlarm();
    const int acknowledged = NewAlarm();
    SetAlarmState(acknowledged, 1);
    AddRow(first, "tap", 1);
    AddRow(second, "text", 2);
    ForEachAllocation(Whose::kCallers, [&](int) {
        AddRow(acknowledged, "tap");
        EXPECT_TRUE(CallStart() || !CPagerHdl::IsRunning()) << "then no exception";
        EXPECT_EQ(nullptr, CPagerHdl::m_pPagerEventsList);
        EXPECT_EQ(1U, RowsOf(first));
        EXPECT_EQ(1U, RowsOf(second));
        EXPECT_EQ(line.Opens(), line.Closes());
        Stop();

        Start();
        EXPECT_EQ(0U, RowsOf(acknowledged));
        EXPECT_EQ(2, m_pPagingQ->GetCount());
        Stop();
    });
    EXPECT_THAT(Rows(), ::testing::UnorderedElementsAre("1 tap 1 2", "2 text 2 2"));
}

// Another call makes up for what one could not do.
TEST_F(MemoryFaults, AcknowledgingAndAsking) {
    Start();
    const NoWorker no_worker;
    ForEachAllocation(Whose::kCallers, [&](int) {
        const int first = NewAlarm();
        const int second = NewAlarm();
        const int third = NewAlarm();
        for (const int alarm : {first, second, third}) {
            Queue(alarm, "text");
        }
        const auto acknowledge = [&] { CPagerHdl::AckPagingAlarm(first); };
        const auto acknowledge_all = [] { CPagerHdl::AckAllPagingAlarms(); };
        const auto ask = [&] { CPagerHdl::GetPagingState(second); };
        for (const std::function<void()>& step :
             std::initializer_list<std::function<void()>>{acknowledge, acknowledge_all, ask}) {
            const auto call = [&] {
                step();
                return 0;
            };
            if (!Call(call)) {
                EXPECT_TRUE(Call(call));
            }
        }
        EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
        EXPECT_EQ(0U, RowsOf(first));
        EXPECT_EQ(0, CPagerHdl::GetPagingState(second));
        EXPECT_NE(2, CPagerHdl::GetPagingState(third));
        for (const int alarm : {first, second, third}) {
            store.Delete(kEvents, {"AlmLogID", std::to_string(alarm)});
        }
    });
}

TEST_F(MemoryFaults, AskingForTheHours) {
    ForEachAllocation(Whose::kCallers, [&](int nth) {
        const std::optional<int> answer = Call([&] { return NXIsInTimeModel(database, "always"); });
        ASSERT_TRUE(answer);
        EXPECT_EQ(nth == 0 || !FailingLibrary::HasHappened() ? 0 : -1, *answer);
    });
}

// --- The worker.

// The alarm is acknowledged before its page is due again.
TEST_F(MemoryFaults, DroppingAnAcknowledgedPage) {
    Start();
    ForEachAllocation(Whose::kWorkers, [&](int) {
        const int alarm = NewAlarm();
        {
            const NoWorker not_yet;
            EXPECT_EQ(1, CallForward(alarm, "tap"));
            SetAlarmState(alarm, 1);
        }
        CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
        UntilWorkerEnds();
        EXPECT_THAT(Pages(), IsEmpty());
        EXPECT_EQ(0, CPagerHdl::GetPagingState(alarm));
    });
    Stop();
    Start();
    EXPECT_THAT(Rows(), IsEmpty());
    ExpectThatAPageGoesThrough();
}

struct Kind {
    const char* pager;
    int type;
};

std::ostream& operator<<(std::ostream& out, const Kind& kind) {
    return out << kind.pager;
}

class EveryKind : public MemoryFaults, public ::testing::WithParamInterface<Kind> {};

// One of the two may be sent a second time: what was to be noted of it was not.
TEST_P(EveryKind, TwoPagesByTheWorker) {
    Start();
    ForEachAllocation(Whose::kWorkers, [&](int nth) {
        const size_t before = Delivered();
        {
            const NoWorker not_yet;
            EXPECT_EQ(1, CallForward(NewAlarm(), GetParam().pager));
            EXPECT_EQ(1, CallForward(NewAlarm(), GetParam().pager));
        }
        CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
        UntilWorkerEnds();
        const size_t sent = Delivered() - before;
        EXPECT_THAT(EntriesIn(m_pPagingQ), IsEmpty());
        if (PortIsFree()) {
            EXPECT_TRUE(sent == 2 || (sent == 3 && nth > 0)) << sent;
        }
    });
    EXPECT_LE(runs_that_took_the_port_, 2 * kAllocationsOfAnOpening);
    ExpectThatAPageGoesThrough();
}

TEST_P(EveryKind, TestPageOnARunningEngine) {
    Start();
    ForEachAllocation(Whose::kCallers, [&](int nth) {
        const size_t before = Delivered();
        const std::optional<int> code = CallTest(GetParam().type);
        ASSERT_TRUE(code) << "the engine is up";
        EXPECT_TRUE(*code == 0 || (nth > 0 && (*code == 5 || (*code >= 6 && *code <= 8)))) << *code;
        EXPECT_TRUE(*code != 0 || Delivered() == before + 1) << "sent, it was said";
        EXPECT_FALSE(CCOMHdl::ModemTest);
        EXPECT_TRUE(PortIsFree() || *code == 5);
    });
    EXPECT_LE(runs_that_took_the_port_, kAllocationsOfAnOpening);
    EXPECT_EQ(0, CallTest(GetParam().type));
    ExpectThatAPageGoesThrough();
}

TEST_F(MemoryFaults, TestPageHasTheCodeOfTheStepThatFailed) {
    Start();
    std::set<int> codes;
    ForEachAllocation(Whose::kCallers, [&](int) {
        codes.insert(CallTest(kSms1).value_or(-1));
        PortIsFree();
    });
    EXPECT_THAT(codes, ::testing::ElementsAre(0, 5, 6, 7, 8));
}

INSTANTIATE_TEST_SUITE_P(MemoryFaults, EveryKind,
                         ::testing::Values(Kind{"signal", kSignal}, Kind{"numeric", kNumeric},
                                           Kind{"text", kAlphanumeric}, Kind{"ntt", kNTT},
                                           Kind{"tap", kSms1}, Kind{"ucp", kSms2}),
                         [](const auto& kind) { return kind.param.pager; });

TEST_F(MemoryFaults, TestPageOnAnEngineOfItsOwn) {
    ForEachAllocation(Whose::kCallers, [&](int nth) {
        const size_t before = Delivered();
        const std::optional<int> code = CallTest(kSms1);
        EXPECT_TRUE(nth > 0 || code == 0);
        EXPECT_TRUE(code != 0 || Delivered() == before + 1) << "sent, it was said";
        EXPECT_FALSE(CPagerHdl::IsRunning());
        EXPECT_EQ(nullptr, pagerHdl);
        EXPECT_EQ(line.Opens(), line.Closes());
    });
    ExpectThatAPageGoesThrough();
}

// --- With a trace: a line that there is no memory for is lost, and its lock is free again.

TEST_F(MemoryFaults, TracedPageByTheWorker) {
    SetTracing(true);
    Start();
    constexpr int kDense = 60;
    constexpr int kStep = 17;
    const auto run = [&](int nth) {
        const size_t before = Delivered();
        EXPECT_EQ(1, CallForward(NewAlarm(), "tap"));
        UntilWorkerEnds();
        const size_t sent = Delivered() - before;
        if (PortIsFree()) {
            EXPECT_TRUE(sent == 1 || (sent == 2 && nth > 0)) << sent;
        }
    };
    ForEachAllocation(Whose::kWorkers, run, kDense, kStep);
    ExpectThatAPageGoesThrough();
    EXPECT_TRUE(TraceHas("TransMsg: D1: OK !!!"));
}

TEST_F(MemoryFaults, TracedCalls) {
    SetTracing(true);
    Start();
    const NoWorker no_worker;
    ForEachAllocation(Whose::kCallers, [&](int) {
        const int alarm = NewAlarm();
        const std::optional<int> answer = CallForward(alarm, "text");
        ASSERT_TRUE(answer);
        EXPECT_EQ(*answer == 1 ? 1U : 0U, RowsOf(alarm));
    });
}

// --- For longer than one allocation.

TEST_F(MemoryFaults, WorkerWithoutMemoryForHours) {
    Start();
    const int alarm = NewAlarm();
    {
        const NoWorker not_yet;
        EXPECT_EQ(1, CallForward(alarm, "tap"));
    }
    {
        const FailingLibrary fault(Whose::kWorkers, 1, INT_MAX);
        CPagerHdl::Check4Dial(nullptr, 0, 0, 0);
        Wait(3h);
        EXPECT_TRUE(WorkerRuns());
        EXPECT_THAT(Pages(), IsEmpty());
        EXPECT_EQ(1U, RowsOf(alarm));
    }
    UntilWorkerEnds();
    EXPECT_EQ(1U, Delivered());
    ExpectThatAPageGoesThrough();
}

TEST_F(MemoryFaults, ServiceWithoutMemory) {
    {
        const FailingLibrary fault(Whose::kCallers, 1, INT_MAX);
        EXPECT_FALSE(CallStart());
        EXPECT_FALSE(CallForward(NewAlarm(), "tap"));
        EXPECT_FALSE(CallTest(kSms1));
    }
    Start();
    {
        const FailingLibrary fault(Whose::kCallers, 1, INT_MAX);
        EXPECT_EQ(0, CallForward(NewAlarm(), "tap"));
        EXPECT_EQ(5, CallTest(kSms1));
        EXPECT_EQ(-1, Call([&] { return NXIsInTimeModel(database, "always"); }));
        Stop();
    }
    ExpectThatAPageGoesThrough();
}

}  // namespace
}  // namespace proof
