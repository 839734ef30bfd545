// The fixture of the engine's tests.
#include "tests/engine/engine_test.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <regex>

#include "engine/pager_fwd.h"
#include "linux/win_system.h"

namespace {

// How the engine's own trace entries begin.
constexpr std::string_view kEngineEntries[] = {
    "AlarmFwdPager",
    "PagingAlarm",
    "InsertInPagingQueue",
    "ReinsertInPagingQueue",
    "DeleteFromPaging",
    "AddEntryToEvents",
    "UpdateEntryInEvents",
    "Check4Dial",
    "Start Check4Dial",
    "Loop Check4Dial",
    "End Loop",
    "End Check4Dial",
    "pWorkingQ",
    "PagerSendMessage",
    "Paging acknowledged",
    "CPagerHdl::CPagerHdl",
    "*** START PAGING",
    "*** END PAGING",
    "PAGER TEST",
    "Pager NOT",
    "Try to page",
    "COM: ",
    "Pagernumber",
    "Timemodel",
    "Caused through",
    "Server: ",
    "Using unknown",
    "IsHourSet",
    "Time out of bounds",
    "COM port cannot",
    "Message to send",
    "Cannot Initialize",
    "Before Dial",
    "Dialing fails",
    "After Dial",
    "Before TransMsg",
    "Message transfered",
    "Message NOT",
    "Reset Modem fails",
    "Before CloseComPort",
    "Closing COM port",
    "CDB_PagerSettings",
};

bool IsEngineEntry(const std::string& entry) {
    return std::any_of(
        std::begin(kEngineEntries), std::end(kEngineEntries),
        [&entry](std::string_view begin) { return entry.compare(0, begin.size(), begin) == 0; });
}

// The table calls that only lead up to others.
constexpr std::string_view kMinorCalls[] = {"Open(", "TableOpen(",  "Close(",
                                            "Free(", "AddElement(", "GetElementColumn("};

bool IsMinorCall(const std::string& call) {
    return std::any_of(
        std::begin(kMinorCalls), std::end(kMinorCalls),
        [&call](std::string_view begin) { return call.compare(0, begin.size(), begin) == 0; });
}

}  // namespace

EngineTest::EngineTest() {
    setenv("TZ", "UTC", 1);
    tzset();
    store.AddAllTables();
    store.Insert("AlarmFwd_COMProperties",
                 {{"Description", "COM 1"}, {"Baud", "2400"},       {"PagerData", "8"},
                  {"PagerParity", "None"},  {"PagerStop", "1"},     {"Flow", "None"},
                  {"Select", "1"},          {"Init", "AT&F"},       {"Reset", "ATZ"},
                  {"PagerDial", "ATDT1"},   {"PagerActivity", ">"}, {"SMS1Dial", "ATDT2"},
                  {"SMS1Protocol", "TAP"},  {"SMS1Data", "8"},      {"SMS1Parity", "None"},
                  {"SMS1Stop", "1"},        {"SMS2Dial", "ATDT3"},  {"SMS2Protocol", "UCP"},
                  {"SMS2Data", "8"},        {"SMS2Parity", "None"}, {"SMS2Stop", "1"}});
    store.InsertTimeModel("always", std::string(168, '1'));
    store.InsertTimeModel("never", std::string(168, '0'));
}

EngineTest::~EngineTest() {
    Stop();
    EXPECT_EQ("", store.Verdict());
    EXPECT_EQ(nullptr, m_pPagingQ);
    EXPECT_EQ(nullptr, m_pOffLimitQ);
    EXPECT_FALSE(CPagerHdl::checkAlready);
}

void EngineTest::AddPager(const PagerRow& pager) {
    store.Insert(kPagers, {{"description", pager.description},
                           {"comport", pager.port},
                           {"pgtype", std::to_string(pager.type)},
                           {"pgnumber", pager.number},
                           {"numretries", std::to_string(pager.retries)},
                           {"retrydelay", std::to_string(pager.delayMinutes)},
                           {"timemodel", pager.hours}});
}

void EngineTest::AddAlarm(int id, int severity, const std::string& details) {
    store.Insert(kAlarms, {{"alarmlogID", std::to_string(id)},
                           {"pagerstate", "2"},
                           {"severity", std::to_string(severity)},
                           {"details", details}});
}

void EngineTest::AddRow(int alarm, const std::string& pager, int retries, int state,
                        const std::string& group) {
    store.Insert(kEvents, {{"AlmLogID", std::to_string(alarm)},
                           {"AlmGroup", group},
                           {"PagerDescr", pager},
                           {"ServerN", "SRV1"},
                           {"Severity", "2"},
                           {"PagerRetries", std::to_string(retries)},
                           {"PagerState", std::to_string(state)}});
}

void EngineTest::SetAlarmState(int alarm, int state) {
    store.Update(kAlarms, {"alarmlogID", std::to_string(alarm)},
                 {{"pagerstate", std::to_string(state)}});
}

std::string EngineTest::AlarmState(int alarm) const {
    return store.Read(kAlarms, {"alarmlogID", std::to_string(alarm)}, "pagerstate");
}

std::vector<std::string> EngineTest::Rows() const {
    std::vector<std::string> rows(store.RowCount(kEvents));
    for (const char* column : {"AlmLogID", "PagerDescr", "PagerRetries", "PagerState"}) {
        const std::vector<std::string> cells = store.Column(kEvents, column);
        for (size_t i = 0; i < rows.size(); ++i) {
            rows[i] += (rows[i].empty() ? "" : " ") + cells[i];
        }
    }
    return rows;
}

void EngineTest::Start() {
    StartAlarmFwdPager(&info);
}

int EngineTest::Forward(int alarm, std::vector<std::string> pagers, const std::string& group) {
    std::string server = "SRV1";
    std::string groupText = group;
    std::vector<char*> names;
    names.reserve(pagers.size());
    for (std::string& pager : pagers) {
        names.push_back(pager.data());
    }
    std::vector<char*> groups(pagers.size(), groupText.data());
    int32_t id = alarm;
    FwdSpecialInfoStr call{database, &id, nullptr, groups.data()};
    return AlarmFwdPager(&call, server.data(), nullptr, names.data(),
                         static_cast<int32_t>(names.size()));
}

int EngineTest::Test(const PagerRow& pager) {
    PagerRow row = pager;
    std::string type = std::to_string(pager.type);
    return TestPager(&info, row.description.data(), row.number.data(), row.port.data(), type.data(),
                     row.hours.data());
}

ForwardQEntry* EngineTest::MakeEntry(int alarm, const char* pager, unsigned retries,
                                     const char* group) {
    return CPagerHdl::CreateQEntry(nullptr, pager, retries, kForwardBeingPaged, long{alarm}, group,
                                   kSeverityUnknown, "SRV1");
}

ForwardQEntry* EngineTest::Queue(int alarm, const char* pager, unsigned retries,
                                 const char* group) {
    ForwardQEntry* entry = MakeEntry(alarm, pager, retries, group);
    EXPECT_TRUE(CPagerHdl::InsertInPagingQueue(entry));
    return entry;
}

std::vector<std::string> EngineTest::EntriesIn(CSM_ForwardQ* queue) {
    std::vector<std::string> entries;
    for (POSITION next = queue->GetHeadPosition(); next != nullptr;) {
        const auto* entry = static_cast<ForwardQEntry*>(queue->GetNext(next));
        entries.push_back(std::to_string(entry->alarmLogEntry->alarmLogId) + " " +
                          static_cast<const char*>(entry->pagerDescr));
    }
    return entries;
}

void EngineTest::Wait(std::chrono::seconds time) {
    Sleep(static_cast<uint32_t>(std::chrono::milliseconds(time).count()));
}

std::string EngineTest::LocalTime(const char* format) {
    const time_t now = time(nullptr);
    tm fields{};
    localtime_r(&now, &fields);
    char text[50];
    return {text, strftime(text, sizeof text, format, &fields)};
}

void EngineTest::UntilWorkerEnds() {
    for (auto waited = 0min; WorkerRuns(); ++waited) {
        ASSERT_LT(waited, 7 * 24h) << "the worker goes on";
        Wait(1min);
    }
}

void EngineTest::DuringTheNextPage(std::function<void()> what) {
    const auto done = std::make_shared<std::atomic<bool>>(false);
    store.BeforeEach([done, what = std::move(what)](const std::string& call) {
        if (call.find("GetAllEntriesByCondition(AlarmFwd_TMSetting") == 0 &&
            !done->exchange(true)) {
            what();
        }
    });
}

std::vector<int> EngineTest::CallMinutes() const {
    constexpr auto kBeforeTheDial = 8s;  // opening and initialising
    std::vector<int> minutes;
    for (const PagingModem::Call& call : modem->Calls()) {
        minutes.push_back(static_cast<int>((call.at - kBeforeTheDial) / 1min));
    }
    return minutes;
}

std::vector<std::string> EngineTest::EngineTrace() {
    static const std::regex kRow("EventsDB: [0-9a-f]{2,}");
    std::vector<std::string> entries;
    for (const std::string& entry : test_support::TraceEntries()) {
        if (IsEngineEntry(entry)) {
            entries.push_back(std::regex_replace(entry, kRow, "EventsDB: ROW"));
        }
    }
    return entries;
}

bool EngineTest::TraceHas(std::string_view part) {
    return test_support::TraceText().find(part) != std::string::npos;
}

int EngineTest::CountInTrace(std::string_view entry) {
    const std::vector<std::string> entries = EngineTrace();
    return static_cast<int>(std::count(entries.begin(), entries.end(), entry));
}

std::vector<std::string> EngineTest::RowCalls() const {
    std::vector<std::string> calls = store.Calls();
    calls.erase(std::remove_if(calls.begin(), calls.end(), IsMinorCall), calls.end());
    return calls;
}
