// The library's trace texts. Tested by tests/unit/host/trace_texts_test.cpp.
#include "host/trace/trace_texts.h"

#include <algorithm>
#include <cctype>

namespace host {
namespace {

struct Pattern {
    std::string_view head;
    TraceKind kind;
    std::string_view tail = {};
    bool open = false;  // something stands between head and tail
};

constexpr bool kOpen = true;

// The first that fits counts.
constexpr Pattern kPatterns[] = {
    // What there is most of.
    {"WaitString [modemsay=", TraceKind::kHeardSoFar, "] L:%d", kOpen},
    {"WaitString [modemsay=", TraceKind::kHeardAll, "]", kOpen},
    {"WaitString [", TraceKind::kStep, "]", kOpen},
    {"WaitString [", TraceKind::kStep, "] L:%d", kOpen},
    {"WaitString( int ", TraceKind::kWaitBegins, " ) L:%d %s", kOpen},
    {"WaitString() == ", TraceKind::kWaitEnds, " L:%d %", kOpen},
    {"WaitString NO SUCCESS", TraceKind::kStep},
    {"modemsay truncated!!", TraceKind::kHeardCut},
    {"OUT: ", TraceKind::kOut, "!!!!", kOpen},
    // The frame of a page.
    {"*** START PAGING ***", TraceKind::kPageStart},
    {"*** END PAGING ***", TraceKind::kPageEnd},
    {"PAGER TEST invoked!", TraceKind::kTest},
    {"Try to page for ", TraceKind::kPager, ": ", kOpen},
    {"COM: ", TraceKind::kPort, "", kOpen},
    {"Pagernumber: ", TraceKind::kNumber, "", kOpen},
    {"Timemodel: ", TraceKind::kHours, "", kOpen},
    {"Caused through alarm: ", TraceKind::kAlarm, ")", kOpen},
    {"Server: ", TraceKind::kServer, "", kOpen},
    {"COM Settings: ", TraceKind::kSettings, "", kOpen},
    {"Message to send: ", TraceKind::kMessage, "", kOpen},
    {"Time out of bounds! (Good SEND!)", TraceKind::kOutsideHours},
    {"Pager NOT found!", TraceKind::kFailed},
    {"Using unknown Timemodel!", TraceKind::kFailed},
    {"COM port cannot be opened!", TraceKind::kFailed},
    {"Cannot Initialize the modem!", TraceKind::kFailed},
    {"Dialing fails!", TraceKind::kFailed},
    {"Message NOT transfered!", TraceKind::kFailed},
    // Opening the port.
    {"IsHourSet: ", TraceKind::kStep, "", kOpen},
    {"COM port information:", TraceKind::kStep},
    {"COM Name: ", TraceKind::kPortUsed, "", kOpen},
    {"Isn't a Modemport", TraceKind::kStep},
    {"Initialization string: ", TraceKind::kStep, "", kOpen},
    {"Reset string: ", TraceKind::kStep, "", kOpen},
    {"Dial prefix: ", TraceKind::kStep, "", kOpen},
    {"Activity prompt: ", TraceKind::kStep, "", kOpen},
    {"SMS1Protocol: ", TraceKind::kStep, "", kOpen},
    {"SMS1Dial: ", TraceKind::kStep, "", kOpen},
    {"SMS2Protocol: ", TraceKind::kStep, "", kOpen},
    {"SMS2Dial: ", TraceKind::kStep, "", kOpen},
    {"OpenCOMPort [::OpenComm result ", TraceKind::kCause, "] L:%d", kOpen},
    {"OpenCOMPort: bad name: ", TraceKind::kCause, "", kOpen},
    {"OpenCOMPort() == ", TraceKind::kStep, " L:%d %s", kOpen},
    {"OpenCOMPort: ", TraceKind::kStep, "", kOpen},
    {"Found: ", TraceKind::kStep, "", kOpen},
    {"Before OpenComm: ", TraceKind::kStep, "", kOpen},
    {"After OpenComm", TraceKind::kStep},
    {"Before ::BuildCommDCB: ", TraceKind::kStep, "", kOpen},
    {"Before SetCommState", TraceKind::kStep},
    // The modem.
    {"ResetModem: resStr:", TraceKind::kBytesFollow},
    {"ResetModem: ", TraceKind::kStep, "", kOpen},
    {"InitModem:", TraceKind::kBytesFollow},
    {"Before Dial", TraceKind::kBeforeDial},
    {"Dial:", TraceKind::kBytesFollow},
    {"After Dial", TraceKind::kAfterDial},
    {"Modem FAILURE: ", TraceKind::kModemFailure, "", kOpen},
    // The dialogues.
    {"Before TransMsg", TraceKind::kBeforeTransfer},
    {"TransMsg( int ", TraceKind::kStep, " ) L:%d %s", kOpen},
    {"TransMsg: TAP: rn", TraceKind::kStep},
    {"TransMsg: rn", TraceKind::kStep},
    {"TransMsg: EscPG1", TraceKind::kStep},
    {"TransMsg: Block:", TraceKind::kBytesFollow},
    {"TransMsg: EOT CR", TraceKind::kStep},
    {"TransMsg: D1: OK !!!", TraceKind::kStep},
    {"sending cr for ID= failed", TraceKind::kCause},
    {"no ID= received", TraceKind::kCause},
    {"sending escPG1 failed", TraceKind::kCause},
    {"no message go ahead received", TraceKind::kCause},
    {"TransMsg: D1: sending message block failed", TraceKind::kCause},
    {"TransMsg: D1: no EOT from D1 received", TraceKind::kCause},
    {"TransMsg: D1: no EOT at end of dialog", TraceKind::kCause},
    {"TransMsg: UCP:", TraceKind::kBytesFollow},
    {"TransMsg: D2: OK !!!", TraceKind::kStep},
    {"TransMsg: D2: sending message block failed", TraceKind::kCause},
    {"TransMsg: D2: no ACK from SMSC", TraceKind::kCause},
    {"***************START PAGER ***********************", TraceKind::kStep},
    {"TransMsg: write rn", TraceKind::kStep},
    {"send jy after timeout", TraceKind::kStep},
    {"TransMsg: jy + rn", TraceKind::kStep},
    {"***************SEND NUMBER ***********************", TraceKind::kStep},
    {"TransMsg: pnum + rn: ", TraceKind::kBytesFollow},
    {"***************SEND MESSAGE ***********************", TraceKind::kStep},
    {"TransMsg: msg + rn:", TraceKind::kBytesFollow},
    {"***************SEND J/N ***********************", TraceKind::kStep},
    {"***************START NTT ***********************", TraceKind::kStep},
    {"NTT string to send: ", TraceKind::kStep, "", kOpen},
    {"sending to NTT failed", TraceKind::kCause},
    {"No OK from NTT", TraceKind::kCause},
    {"Message transfered!", TraceKind::kTransferred},
    {"Reset Modem fails", TraceKind::kCause},
    {"Before CloseComPort", TraceKind::kStep},
    {"CloseCOMPort: ", TraceKind::kStep, "", kOpen},
    {"Closing COM port fails!", TraceKind::kCause},
    // The engine.
    {"CPagerHdl::CPagerHdl: ", TraceKind::kEngineMade, "", kOpen},
    {"AlarmFwdPager: pager not found", TraceKind::kAskedUnknown},
    {"AlarmFwdPager: ", TraceKind::kAsked, "", kOpen},
    {"PagingAlarm: ", TraceKind::kEngine, "", kOpen},
    {"InsertInPagingQueue: ", TraceKind::kQueued, "", kOpen},
    {"ReinsertInPagingQueue: ", TraceKind::kRequeued, "", kOpen},
    {"DeleteFromPagingQueue: ", TraceKind::kEngine, "", kOpen},
    {"AddEntryToEventsDB: ", TraceKind::kEngine, "", kOpen},
    {"UpdateEntryInEventsDB: ", TraceKind::kEngine, "", kOpen},
    {"CDB_PagerSettings::GetPager:", TraceKind::kEngine, "", kOpen},
    {"Check4DialThreadLoop: Wait", TraceKind::kEngine},
    {"Check4DialThreadLoop: Sent successful: ", TraceKind::kDone, "", kOpen},
    {"Check4DialThreadLoop: Retries exceeded: ", TraceKind::kGivenUp, "", kOpen},
    {"Check4DialThreadLoop: Retries exceeded1: ", TraceKind::kGivenUp, "", kOpen},
    {"Check4DialThreadLoop: ", TraceKind::kAcknowledged, " acked", kOpen},
    {"Check4DialThreadLoop: ", TraceKind::kEngine, "", kOpen},
    {"Check4DialThread: sleep", TraceKind::kEngine},
    {"Check4Dial", TraceKind::kEngine},
    {"Check4Dial: Already running", TraceKind::kEngine},
    {"Check4Dial: Nothing to do", TraceKind::kEngine},
    {"Start Check4DialThread", TraceKind::kEngine},
    {"Loop Check4DialThread", TraceKind::kEngine},
    {"End Loop Check4DialThread", TraceKind::kEngine},
    {"End Check4DialThread", TraceKind::kEngine},
    {"pWorkingQ: ", TraceKind::kEngine, "", kOpen},
    {"PagerSendMessage successful!!", TraceKind::kEngine},
    {"Paging acknowledged by AlMan ???", TraceKind::kEngine},
};

constexpr PageFailure kPageFailures[] = {
    {"Pager NOT found!", -1, "the pager is not known, or more than once"},
    {"Using unknown Timemodel!", -1, "its hours are not known"},
    {"COM port cannot be opened!", 5, "no line"},
    {"Cannot Initialize the modem!", 8, "the modem didn't answer"},
    {"Dialing fails!", 6, "dialling failed"},
    {"Message NOT transfered!", 7, "the centre didn't take the page"},
};

struct TypeLabel {
    std::string_view label;
    std::string_view word;
};
constexpr TypeLabel kTypeLabels[] = {
    {"signal", "signal"}, {"numeric", "numeric"},  {"alphanumeric", "alphanumeric"},
    {"NTT", "ntt"},       {"SMS1(TAP) )", "sms1"}, {"SMS2(UCP) )", "sms2"},
};

bool Fits(const Pattern& pattern, std::string_view text) {
    const size_t fixed = pattern.head.size() + pattern.tail.size();
    return (pattern.open ? text.size() >= fixed : text.size() == fixed) &&
           text.substr(0, pattern.head.size()) == pattern.head &&
           text.substr(text.size() - pattern.tail.size()) == pattern.tail;
}

// "O:4f": a byte that was heard.
bool IsHeardByte(std::string_view text) {
    return text.size() > 2 && text.size() <= 10 && text[1] == ':' &&
           std::all_of(text.begin() + 2, text.end(),
                       [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; });
}

}  // namespace

TraceMeaning Understand(std::string_view text) {
    if (IsHeardByte(text)) {
        return {TraceKind::kStep, text};
    }
    // Many texts end in a line feed of their own.
    if (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    for (const Pattern& pattern : kPatterns) {
        if (Fits(pattern, text)) {
            const size_t size = text.size() - pattern.head.size() - pattern.tail.size();
            return {pattern.kind, pattern.open && pattern.kind != TraceKind::kCause &&
                                          pattern.kind != TraceKind::kEngine
                                      ? text.substr(pattern.head.size(), size)
                                      : text};
        }
    }
    return {TraceKind::kUnknown, text};
}

const PageFailure* FindPageFailure(std::string_view text) {
    const auto* const found =
        std::find_if(std::begin(kPageFailures), std::end(kPageFailures),
                     [text](const PageFailure& failure) { return failure.text == text; });
    return found == std::end(kPageFailures) ? nullptr : found;
}

std::string_view TypeFor(std::string_view label) {
    for (const TypeLabel& known : kTypeLabels) {
        if (known.label == label) {
            return known.word;
        }
    }
    return "unknown";
}

}  // namespace host
