// The facade: alarms to queues, test pages to the modem.
// Tested by tests/engine/entry_points_test.cpp.
#include "engine/pager_fwd.h"

#include <cstdlib>
#include <memory>
#include <utility>

#include "engine/chars.h"
#include "engine/pager_hdl.h"
#include "engine/records.h"
#include "linux/out_of_memory.h"
#include "modem/trace.h"
#include "tables/owned_text.h"

namespace {

using EngineGuard = std::lock_guard<std::mutex>;

// The name is a copy of its own, or null for none.
void SetDatabaseName(OwnedText name) {
    const EngineGuard guard(engineLock);
    delete[] m_dB;
    m_dB = name.release();
}

OwnedText CopyName(const FwdSpecialInfoStr& info) {
    return OwnedText(CopyText(TextOrEmpty(info.dbName)));
}

CPagerHdl* Handler() {
    const EngineGuard guard(engineLock);
    return pagerHdl;
}

// Returns the one before.
CPagerHdl* SetHandler(CPagerHdl* handler) {
    const EngineGuard guard(engineLock);
    return std::exchange(pagerHdl, handler);
}

// The database that an alarm's pagers are looked up in: the engine's, or else that of the call.
CString DatabaseName(const FwdSpecialInfoStr& info) {
    const EngineGuard guard(engineLock);
    if (m_dB == nullptr) {
        m_dB = CopyName(info).release();
    }
    return m_dB;
}

// Queues a page to the i-th pager.
ForwardResult Forward(const FwdSpecialInfoStr& info, const char* serverName,
                      CDB_PagerSettings& pagerSettings, const char* pagerName, int32_t i) {
    TraceUnlocked("AlarmFwdPager: %s\n", pagerName);
    const OwnedPager pager(pagerSettings.GetPager(pagerName));
    if (!pager) {
        TraceUnlocked("AlarmFwdPager: pager not found\n");
        return kNoPagerFound;
    }
    const bool queued = CPagerHdl::PagingAlarm(pager->description, serverName, info.alarmGroups[i],
                                               long{*info.alarmLogId}, 0);
    return queued ? kQueued : kNotQueued;
}

// A page that is sent at once stands in no queue and belongs to no alarm.
struct TestPage {
    TestPage() {
        alarm.severity = kSeverityInformational;
        alarm.details = details;
        entry.queueTime = CTime::GetCurrentTime();
        entry.state = kForwardBeingPaged;
        entry.retries = static_cast<uint32_t>(-1);
        entry.alarmLogEntry = &alarm;
        entry.almGroup = "TEST/000";
        entry.serverN = "TESTSERVER";
    }

    char details[5] = "test";
    AlarmLogEntry alarm{};
    ForwardQEntry entry;
};

}  // namespace

CPagerFwd* pagerFwd = nullptr;
CPagerHdl* pagerHdl = nullptr;
char* m_dB = nullptr;
std::mutex engineLock;
std::mutex engineChange;

bool EnsureHandler(const char* dbName) {
    if (Handler() != nullptr && CPagerHdl::IsRunning()) {
        CPagerHdl::RetryRefusedStart();
        return false;
    }
    const EngineGuard change(engineChange);
    if (CPagerHdl* const handler = Handler()) {
        handler->ComeUp(dbName);
        return false;
    }
    SetHandler(new CPagerHdl(dbName));
    return true;
}

CPagerFwd::CPagerFwd(const char* dbName) {
    const EngineGuard guard(engineLock);
    if (dbName != nullptr && m_dB == nullptr) {
        m_dB = CopyText(dbName);
    }
    // Kept: a handler from before the facade is forgotten, not destroyed.
    pagerHdl = nullptr;
}

CPagerFwd::~CPagerFwd() {
    SetDatabaseName(nullptr);
    delete SetHandler(nullptr);
}

int32_t CPagerFwd::AlarmFwdPager(FwdSpecialInfoStr* info, const char* serverName, const char*,
                                 char** pagerNames, int32_t pagerCount) {
    const CString database = DatabaseName(*info);
    EnsureHandler(database);
    CDB_PagerSettings pagerSettings(database);
    int32_t result = kNoPagerFound;
    for (int32_t i = 0; i < pagerCount; ++i) {
        // A page that memory runs out for is not queued; the next pager has its turn.
        ForwardResult each = kNotQueued;
        MemorySufficesFor(
            [&] { each = Forward(*info, serverName, pagerSettings, pagerNames[i], i); });
        if (each != kNoPagerFound) {
            result = each;
        }
    }
    return result;
}

int32_t CPagerFwd::TestPager(FwdSpecialInfoStr* info, const char* description,
                             const char* pagerNumber, const char* comPort, const char* pagerType,
                             const char* timeModel) {
    SetDatabaseName(CopyName(*info));
    const bool madeHere = EnsureHandler(info->dbName);

    int result = kNoPort;  // if the handler could not come up
    // Whatever becomes of the page, the handler that was made for it goes.
    MemorySufficesFor([&] {
        OwnedPager pager(new Pager{});
        pager->description = CopyText(TextOrEmpty(description));
        pager->pagerNumber = CopyText(TextOrEmpty(pagerNumber));
        pager->comPort = CopyText(TextOrEmpty(comPort));
        pager->pagerType = static_cast<int32_t>(strtol(TextOrEmpty(pagerType), nullptr, 10));
        pager->timeModel = CopyText(TextOrEmpty(timeModel));
        if (CPagerHdl::IsRunning()) {
            TestPage page;
            CPagerHdl::PagerSendMessage(&page.entry, true, pager.get(), &result);
        }
    });

    SetDatabaseName(nullptr);
    if (madeHere) {
        const EngineGuard change(engineChange);
        delete SetHandler(nullptr);
    }
    return result;
}
