// Bringing the handler up and taking it down.
// Tested by tests/engine/handler_test.cpp and tests/engine/teardown_test.cpp.
#include <utility>

#include "engine/chars.h"
#include "engine/longest_page.h"
#include "engine/pager_hdl.h"
#include "linux/win_system.h"
#include "modem/COMHdl.h"
#include "modem/trace.h"

namespace {

constexpr int32_t kDefaultRetries = 5;
constexpr int32_t kDefaultRetryDelayMinutes = 45;

constexpr const char* kSeverityKeys[] = {"Critical", "Major", "Minor", "Informational", "Unknown"};
constexpr DWORD kProfileTextSize = 256;

template <typename Object>
void Destroy(Object*& object) {
    delete object;
    object = nullptr;
}

void FreeEntries(CSM_ForwardQ* queue) {
    while (ForwardQEntry* entry = queue != nullptr ? queue->TakeHeadEntry() : nullptr) {
        CPagerHdl::FreeQEntry(entry);
    }
}

}  // namespace

CSM_ForwardQ* m_pPagingQ = nullptr;
CSM_ForwardQ* m_pOffLimitQ = nullptr;

std::atomic<CPagerHdl*> CPagerHdl::PagerHdl{nullptr};
char* CPagerHdl::m_dB = nullptr;
CCOMHdl* CPagerHdl::ccom = nullptr;
CDB_PagerFwdEvents* CPagerHdl::m_pPagerEventsSet = nullptr;
CDB_PagerFwdEvents* CPagerHdl::pagerFwdEvents = nullptr;
PagerFwdEvent** CPagerHdl::m_pPagerEventsList = nullptr;
CDB_PagerSettings* CPagerHdl::m_pPagerSettingsSet = nullptr;
CDB_AlarmLog* CPagerHdl::m_pAlarmLogSet = nullptr;
void* CPagerHdl::m_pPagerTable = nullptr;
CStringArray* CPagerHdl::PHSeverityStrings = nullptr;
uint32_t CPagerHdl::PHTimerId = 0;
int32_t CPagerHdl::NumOfRetries = 0;
int32_t CPagerHdl::RetryDelay = 0;
bool CPagerHdl::m_pPagingQIsInitialized = false;
std::atomic<bool> CPagerHdl::checkAlready{false};
std::atomic<bool> CPagerHdl::pageOnLine{false};
std::atomic<bool> CPagerHdl::startRefused{false};
CCriticalSection CPagerHdl::lock;
CCriticalSection CPagerHdl::lockSend;
CCriticalSection CPagerHdl::lockDial;

CPagerHdl::CPagerHdl(const char* dbName) {
    ComeUp(dbName);
}

// What is there without a handler being up comes from one whose worker was stuck at its end, and is
// released first. As long as that worker is stuck, it must stay.
void CPagerHdl::ComeUp(const char* dbName) {
    if (IsRunning() || !StopWorker(0)) {
        return;
    }
    OwnedText name(CopyText(TextOrEmpty(dbName)));  // before what it may stand in is released
    CleanUp();
    try {
        SetUp(std::move(name));
        PagerHdl = this;
    } catch (...) {
        CleanUp();
        throw;
    }
}

CPagerHdl::~CPagerHdl() {
    CleanUp();
    PagerHdl = nullptr;
}

bool CPagerHdl::IsRunning() {
    return PagerHdl != nullptr;
}

// Memory or descriptors that run out, for whichever part, are std::bad_alloc.
void CPagerHdl::SetUp(OwnedText dbName) {
    m_dB = dbName.release();
    ccom = new CCOMHdl(m_dB);
    TraceUnlocked("CPagerHdl::CPagerHdl: %s\n", m_dB);
    LoadGlobalSettings();
    LoadSeverityStrings();
    m_pPagingQ = new CSM_ForwardQ;
    m_pOffLimitQ = new CSM_ForwardQ;
    m_pPagerEventsSet = new CDB_PagerFwdEvents(m_dB);
    m_pPagerSettingsSet = new CDB_PagerSettings(m_dB);
    m_pAlarmLogSet = new CDB_AlarmLog(m_dB);
    pagerFwdEvents = new CDB_PagerFwdEvents(m_dB);
    Worker().Prepare();
    InitializePagerQueue();
}

void CPagerHdl::CleanUp() {
    if (!StopWorker(LongestPageMs())) {
        return;
    }
    Worker().Release();
    startRefused = false;
    Destroy(ccom);
    Destroy(PHSeverityStrings);
    FreeQueues();
    Destroy(m_pPagerEventsSet);
    Destroy(pagerFwdEvents);
    delete[] m_pPagerEventsList;
    m_pPagerEventsList = nullptr;
    Destroy(m_pAlarmLogSet);
    Destroy(m_pPagerSettingsSet);
    delete[] m_dB;
    m_dB = nullptr;
    m_pPagingQIsInitialized = false;
}

// An entry may stand in both queues, and in one of them twice: it is freed when both are empty.
void CPagerHdl::FreeQueues() {
    {
        const EntryUse use(Entries());
        FreeEntries(m_pPagingQ);
        FreeEntries(m_pOffLimitQ);
    }
    Destroy(m_pPagingQ);
    Destroy(m_pOffLimitQ);
}

void CPagerHdl::LoadGlobalSettings() {
    NumOfRetries = kDefaultRetries;
    RetryDelay = kDefaultRetryDelayMinutes;
}

bool CPagerHdl::LoadSeverityStrings() {
    Destroy(PHSeverityStrings);
    PHSeverityStrings = new CStringArray;
    for (const char* key : kSeverityKeys) {
        char name[kProfileTextSize + 1];  // one byte more than its size, as the call demands
        GetPrivateProfileString("Severities", key, key, name, kProfileTextSize, "pagerhdl.ini");
        PHSeverityStrings->Add(name);
    }
    return true;
}
