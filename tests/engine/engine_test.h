// The fixture of the engine's tests: tables in memory, a modem on COM 1, virtual time, a trace, and
// the exported functions as a service calls them.
#ifndef PAGERFWD_TESTS_ENGINE_ENGINE_TEST_H
#define PAGERFWD_TESTS_ENGINE_ENGINE_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pagerfwd/pagerfwd.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/pager_hdl.h"
#include "sim/testing.h"
#include "tests/engine/paging_modem.h"
#include "tests/support/memory_store.h"
#include "tests/support/temp_dir.h"
#include "tests/support/trace.h"

using namespace std::chrono_literals;

// Pager types.
constexpr int kSignal = 0;
constexpr int kNumeric = 1;
constexpr int kAlphanumeric = 2;
constexpr int kNTT = 3;
constexpr int kSms1 = 4;
constexpr int kSms2 = 5;

constexpr const char* kAlarms = "AlarmLog";
constexpr const char* kEvents = "AlarmFwd_PagerEvents";
constexpr const char* kPagers = "AlarmFwd_PagerSetting";
constexpr const char* kTimeModels = "AlarmFwd_TMSetting";

using Lines = std::vector<std::string>;

inline Lines operator+(Lines left, const Lines& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// A pager, and the settings that most tests don't care about.
struct PagerRow {
    std::string description;
    int type = kAlphanumeric;
    int retries = 5;
    int delayMinutes = 45;
    std::string number = "555";
    std::string hours = "always";
    std::string port = "COM 1";
};

class EngineTest : public ::testing::Test {
 protected:
    EngineTest();
    ~EngineTest() override;

    // --- What stands in the tables. "always" and "never" are the time models there.
    void AddPager(const PagerRow& pager);
    // An alarm that is being paged.
    void AddAlarm(int id, int severity = 2, const std::string& details = "pump 3 failed");
    void AddRow(int alarm, const std::string& pager, int retries = 0, int state = 2,
                const std::string& group = "OPS/1");
    void SetAlarmState(int alarm, int state);
    std::string AlarmState(int alarm) const;
    // "7 anna 0 2": alarm, pager, retries and state of each row, in row order.
    std::vector<std::string> Rows() const;

    // --- What a service does.
    void Start();
    void Stop() { StopAlarmFwdPager(); }
    int Forward(int alarm, std::vector<std::string> pagers, const std::string& group = "OPS/1");
    int Test(const PagerRow& pager);

    // --- Entries, made and filed without a worker.
    // An entry of an alarm in the tables, in no queue.
    static ForwardQEntry* MakeEntry(int alarm, const char* pager, unsigned retries = 0,
                                    const char* group = "OPS/1");
    // The same at the head of the paging queue, with its row.
    static ForwardQEntry* Queue(int alarm, const char* pager, unsigned retries = 0,
                                const char* group = "OPS/1");
    // "7 anna" for each entry, head first. Not while a worker runs.
    static std::vector<std::string> EntriesIn(CSM_ForwardQ* queue);
    // Lets no worker start as long as it lives.
    struct NoWorker {
        NoWorker() { CPagerHdl::checkAlready = true; }
        ~NoWorker() { CPagerHdl::checkAlready = false; }
    };

    // --- Time passes.
    static void Wait(std::chrono::seconds time);
    // As strftime tells it. Every clock starts on a Monday at 10.
    static std::string LocalTime(const char* format);
    static bool WorkerRuns() { return CPagerHdl::checkAlready; }
    // Until no worker runs, a week at most; then the test fails.
    static void UntilWorkerEnds();

    // Runs once, in the worker, when the first page from now on has been begun and its hours are
    // looked up.
    void DuringTheNextPage(std::function<void()> what);

    // --- What came of it.
    // When each call was made, in minutes after `since`. A pass a minute, each a little later than
    // a minute after the one before: rounded to the full minute that it was due at.
    std::vector<int> CallMinutes() const;
    std::vector<std::string> Pages() const { return modem->Pages(); }

    // The engine's own trace entries, without those of the modem; identities of rows read "ROW".
    static std::vector<std::string> EngineTrace();
    static bool TraceHas(std::string_view part);
    static int CountInTrace(std::string_view entry);

    // The table calls that read or change rows.
    std::vector<std::string> RowCalls() const;

    pagersim::VirtualClock clock;
    test_support::TempDir folder;
    test_support::TraceSwitch tracing;
    test_support::MemoryStore store;
    PagingModem* modem = new PagingModem;  // owned by the line
    pagersim::AttachedLine line{1, std::unique_ptr<pagersim::FarEnd>(modem)};

    char database[7] = "alarms";
    int32_t alarmLogId = 0;
    FwdSpecialInfoStr info{database, &alarmLogId, nullptr, nullptr};
};

#endif
