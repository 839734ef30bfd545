// Sending one page: looked up, in its hours, composed, and through the modem step by step.
// Tested by tests/engine/page_send_test.cpp.
#include <ctime>
#include <memory>

#include "engine/chars.h"
#include "engine/locked.h"
#include "engine/page_text.h"
#include "engine/pager_hdl.h"
#include "engine/records.h"
#include "linux/out_of_memory.h"
#include "modem/COMHdl.h"
#include "modem/trace.h"
#include "tables/time_models.h"

namespace {

constexpr int kHoursOfDay = 24;

void Store(int* result, int value) {
    if (result != nullptr) {
        *result = value;
    }
}

CString LocalTime(const CTime& time, const char* format) {
    char text[50] = "";
    tm fields{};
    if (time.GetLocalTm(&fields) == nullptr || strftime(text, sizeof text, format, &fields) == 0) {
        return "";
    }
    return text;
}

PageSource SourceOf(const ForwardQEntry& entry) {
    return {entry.almGroup,
            entry.serverN,
            TextOrEmpty(entry.alarmLogEntry->details),
            entry.alarmLogEntry->severity,
            CPagerHdl::PHSeverityStrings,
            entry.serverId};
}

void TraceHeader(const ForwardQEntry& entry, const Pager& pager) {
    const AlarmLogEntry& alarm = *entry.alarmLogEntry;
    TraceUnlocked("Try to page for %s at %s: ", TextOrEmpty(pager.description),
                  Chars(LocalTime(CTime::GetCurrentTime(), "%x\t%X\t")));
    TraceUnlocked("COM: %s", TextOrEmpty(pager.comPort));
    TraceUnlocked("Pagernumber: %s (%s", TextOrEmpty(pager.pagerNumber),
                  PagerTypeLabel(pager.pagerType));
    TraceUnlocked("Timemodel: %s", TextOrEmpty(pager.timeModel));
    // Kept: the alarm's identifier is read as a time; services number their alarms by the clock.
    TraceUnlocked("Caused through alarm: %s (approximately logging time:%s)", Chars(entry.almGroup),
                  Chars(LocalTime(CTime(alarm.alarmLogId), "%x / %X")));
    TraceUnlocked("Server: %s\tSeverity: %s", Chars(entry.serverN),
                  Chars(SeverityName(CPagerHdl::PHSeverityStrings, alarm.severity, "")));
}

enum class Hours { kOpen, kBarred, kUnknownModel };

Hours AskTimeModel(const Pager& pager) {
    CDB_TimeModels timeModels(CPagerHdl::m_dB);
    const std::unique_ptr<TimeModel> model(timeModels.FindTimeModel(TextOrEmpty(pager.timeModel)));
    if (!model) {
        return Hours::kUnknownModel;
    }
    const CTime now = CTime::GetCurrentTime();
    const int dayOfWeek = now.GetDayOfWeek();
    const int hour = now.GetHour();
    const int day = (dayOfWeek + 5) % 7;  // 1 Sunday ... 7 Saturday becomes 0 Monday ... 6 Sunday
    TraceUnlocked("IsHourSet: %d %d %c\n", dayOfWeek, hour, model->cells[day * kHoursOfDay + hour]);
    return CDB_TimeModels::IsHourSet(model.get(), day, hour) ? Hours::kOpen : Hours::kBarred;
}

void TraceModemFailure(const char* text) {
    TraceUnlocked("%s", text);
    CCOMHdl::MainModemError = true;
}

// A page is on the line as long as it lives.
class OnTheLine {
 public:
    OnTheLine() { CPagerHdl::pageOnLine = true; }
    ~OnTheLine() { CPagerHdl::pageOnLine = false; }
    OnTheLine(const OnTheLine&) = delete;
    OnTheLine& operator=(const OnTheLine&) = delete;
};

// Whether a modem step succeeds. One that memory runs out for fails like any other, with its code:
// what has to follow a failed step follows.
template <typename Step>
bool Succeeds(Step step, ModemResult failure, int* result) {
    bool done = false;
    if (!MemorySufficesFor([&] { done = step(); })) {
        Store(result, failure);
    }
    return done;
}

// From the modem's reset to the message; whether the page was delivered.
bool Transmit(CCOMHdl& ccom, int port, unsigned char protocol, const PageContent& page,
              int* result) {
    const auto init = [&] { return ccom.InitModem(port, result); };
    const auto dial = [&] {
        return ccom.Dial(port, page.dialPrefix, protocol, page.number, page.waitForConnect, result);
    };
    const auto transfer = [&] {
        return ccom.TransMsg(port, page.number, page.message, protocol, result);
    };
    if (!Succeeds(init, kModemInitFailed, result)) {
        TraceModemFailure("Cannot Initialize the modem!");
        return false;
    }
    TraceUnlocked("Before Dial");
    if (!Succeeds(dial, kDialFailed, result)) {
        TraceModemFailure("Dialing fails!");
        return false;
    }
    TraceUnlocked("After Dial");
    if (!page.number.IsEmpty()) {
        TraceUnlocked("Before TransMsg");
        if (!Succeeds(transfer, kTransferFailed, result)) {
            TraceModemFailure("Message NOT transfered!");
            return false;
        }
        TraceUnlocked("Message transfered!");
    }
    Store(result, kPageSent);
    return true;
}

// After a first modem error, failures of hanging up are no news.
void HangUp(CCOMHdl& ccom, int port) {
    const auto reset = [&] { return ccom.ResetModem(port); };
    if (!Succeeds(reset, kModemSuccess, nullptr) && !CCOMHdl::MainModemError) {
        TraceUnlocked("Reset Modem fails");
    }
    TraceUnlocked("Before CloseComPort");
    if (!ccom.CloseCOMPort(port) && !CCOMHdl::MainModemError) {
        TraceUnlocked("Closing COM port fails!");
    }
}

bool SendThroughModem(const ForwardQEntry& entry, const Pager& pager, int* result) {
    CCOMHdl& ccom = *CPagerHdl::ccom;
    // Composed before a port is taken, so that memory that runs out here costs no port.
    const PageContent page =
        ComposePage(pager.pagerType, TextOrEmpty(pager.pagerNumber), SourceOf(entry));
    const auto protocol = static_cast<unsigned char>(pager.pagerType);
    const OnTheLine onTheLine;
    const int port = ccom.OpenCOMPort(TextOrEmpty(pager.comPort), protocol);
    if (port < 0) {
        TraceUnlocked("COM port cannot be opened!");
        Store(result, kNoPort);
        return false;
    }
    TraceUnlocked("Message to send: %s", Chars(page.message));
    const bool delivered = Transmit(ccom, port, protocol, page, result);
    HangUp(ccom, port);
    return delivered;
}

bool SendTestPage(const ForwardQEntry& entry, const Pager& pager, int* result) {
    TraceUnlocked("PAGER TEST invoked!");
    CCOMHdl::ModemTest = true;
    TraceHeader(entry, pager);
    const bool delivered = SendThroughModem(entry, pager, result);
    CCOMHdl::ModemTest = false;
    return delivered;
}

bool SendDuePage(const ForwardQEntry& entry, int* result) {
    const OwnedPager pager(CPagerHdl::GetPager(Chars(entry.pagerDescr)));
    if (!pager) {
        TraceUnlocked("Pager NOT found!");
        Store(result, kPagerUnknown);
        return false;
    }
    TraceHeader(entry, *pager);
    switch (AskTimeModel(*pager)) {
        case Hours::kUnknownModel:
            TraceUnlocked("Using unknown Timemodel!");
            Store(result, kPagerUnknown);
            return false;
        case Hours::kBarred:
            // Kept: it counts as sent, so that a page to an SMS service is then over.
            TraceUnlocked("Time out of bounds! (Good SEND!)");
            return true;
        case Hours::kOpen:
            break;
    }
    return SendThroughModem(entry, *pager, result);
}

}  // namespace

bool CPagerHdl::PagerSendMessage(ForwardQEntry* entry, bool test, Pager* testPager, int* result) {
    const Locked<CCriticalSection> guard(lockSend);
    TraceUnlocked("*** START PAGING ***");
    CCOMHdl::MainModemError = false;
    bool delivered = false;
    const bool ended = MemorySufficesFor([&] {
        delivered = test ? SendTestPage(*entry, *testPager, result) : SendDuePage(*entry, result);
    });
    if (!ended) {
        // It has not got as far as a line, and fails like a page that finds none.
        CCOMHdl::ModemTest = false;
        Store(result, kNoPort);
    }
    TraceUnlocked("*** END PAGING ***");
    return delivered;
}
