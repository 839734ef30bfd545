// What the lines of the library's trace say, by their texts.
//
// The texts are a contract of the library with those who read its traces. A test takes them out of
// the library's sources, and fails where one isn't known here.
#ifndef PAGERFWD_HOST_TRACE_TRACE_TEXTS_H
#define PAGERFWD_HOST_TRACE_TRACE_TEXTS_H

#include <string_view>

namespace host {

enum class TraceKind {
    // The frame of a page.
    kPageStart,
    kPageEnd,
    kTest,
    kPager,  // field: "duty at 01/08/01<tab>10:00:00<tab>"
    kPortUsed,
    kPort,    // field, as in all below: what stands behind the label
    kNumber,  // "5550111 (SMS1(TAP) )"
    kHours,
    kAlarm,
    kServer,  // "SERVER<tab>Severity: Major"
    kSettings,
    kMessage,
    kOutsideHours,
    kFailed,  // the whole text: why the page was not sent
    // Its steps.
    kBeforeDial,
    kAfterDial,
    kBeforeTransfer,
    kTransferred,
    kOut,           // bytes sent, in the library's printable form
    kWaitBegins,    // "123, CString OK, DWORD 2000, BOOL 1"
    kHeardSoFar,    // bytes heard since the wait began, the first 80 of them
    kHeardAll,      // all of them
    kHeardCut,      // so many that the library has forgotten the first half
    kWaitEnds,      // "1": heard what it waited for
    kModemFailure,  // "BUSY"
    kCause,         // the whole text: a failure on the way
    kBytesFollow,   // a label: the next entry is what is sent, raw
    kStep,          // the whole text: a step without a meaning of its own here
    // Between pages, or during one by another thread.
    kEngineMade,    // the engine of a process was made: whatever was under way is over
    kAsked,         // a page was asked for; the pager
    kAskedUnknown,  // ... for a pager that isn't known
    kQueued,        // the pager
    kRequeued,
    kAcknowledged,
    kDone,  // a service has confirmed the page
    kGivenUp,
    kEngine,   // whole text: other news of the engine
    kUnknown,  // not a text of the library, as far as is known here
};

struct TraceMeaning {
    TraceKind kind;
    std::string_view field;  // within the text
};

TraceMeaning Understand(std::string_view text);

// What a page's failure comes to: the library's result, and words for it.
struct PageFailure {
    std::string_view text;  // of the trace
    int result;
    const char* words;
};
// Null when it is none.
const PageFailure* FindPageFailure(std::string_view text);

// The type of pager that the trace's label means: "SMS1(TAP) )" is "sms1".
std::string_view TypeFor(std::string_view label);

}  // namespace host

#endif
