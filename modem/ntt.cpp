// Paging an NTT code pager: the call stands, the message is dialled into it as tones.
// Tested by tests/dialogue/ntt_dialogue.cpp.

#include "linux/win_system.h"
#include "modem/COMHdl.h"
#include "modem/ntt_code.h"
#include "modem/trace.h"

namespace {

constexpr DWORD kAfterDiallingMs = 2000;

}  // namespace

bool CCOMHdl::TransferNTT(HANDLE handle, const CString& message) {
    WritePageProtocolEntry("***************START NTT ***********************");
    Sleep(MNTTWaitForAnswer);

    Trace("NTT string to send: %s\n", static_cast<const char*>(message));
    if (!Send(handle, NTTDialCommand(message) + MStrCR)) {
        return TransferFails("sending to NTT failed");
    }
    if (!WaitString(handle, MStrOK, MDialTimeOut, false)) {
        return TransferFails("No OK from NTT");
    }
    Sleep(kAfterDiallingMs);
    return true;
}

DWORD CCOMHdl::LongestNTTMs() {
    return MNTTWaitForAnswer + MDialTimeOut + kAfterDiallingMs;
}
