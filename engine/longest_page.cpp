// The sum of all waits of a page, each taken in full.
// Tested by tests/unit/engine/longest_page_test.cpp.
#include "engine/longest_page.h"

#include <algorithm>

#include "modem/COMHdl.h"

namespace {

// The waits that are no settings, step by step.
constexpr DWORD kOpenMs = 2 * 1000;                    // input discarded twice
constexpr DWORD kResetMs = 1000 + 2000 + 2000 + 5000;  // escape, hang up, reset, pause
constexpr DWORD kInitMs = kResetMs + 1000 + 2000;      // reset, drain, initialise
constexpr DWORD kAfterNTTMs = 2000;                    // pause behind the digits

// The system may hold a closing device for half a minute while unsent bytes drain; the rest is for
// the tables and the trace.
constexpr DWORD kMarginMs = 60 * 1000;

DWORD LongestTransferMs() {
    return std::max({
        6 * CCOMHdl::MTAPReadyTimeOut,  // three log-ons, go-ahead, acknowledgement, end
        CCOMHdl::MUCPWaitForHandShake + CCOMHdl::MUCPReadyTimeOut,
        3 * CCOMHdl::MPagerReadyTimeOut,  // question, number, hang-up
        CCOMHdl::MNTTWaitForAnswer + CCOMHdl::MDialTimeOut + kAfterNTTMs,
    });
}

}  // namespace

int LongestPageMs() {
    return static_cast<int>(kOpenMs + kInitMs + CCOMHdl::MDialTimeOut + LongestTransferMs() +
                            kResetMs + kMarginMs);
}
