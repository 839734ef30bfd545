// The UCP dialogue: after a pause, one frame and its answer; no log-on, no second try.
// Tested by tests/dialogue/ucp_dialogue.cpp.

#include "linux/win_system.h"
#include "modem/COMHdl.h"
#include "modem/ucp_frame.h"

namespace {

constexpr char kPositiveResult[] = "/A/";

}  // namespace

bool CCOMHdl::TransferUCP(HANDLE handle, const CString& number, const CString& text) {
    Sleep(MUCPWaitForHandShake);

    const CString frame = CreateUCPFrame(number, text);
    WritePageProtocolEntry("TransMsg: UCP:");
    WritePageProtocolEntry(frame);
    if (!Send(handle, frame)) {
        return TransferFails("TransMsg: D2: sending message block failed");
    }
    // Kept: a negative result is not looked for; the wait goes on to its end.
    if (!WaitString(handle, kPositiveResult, MUCPReadyTimeOut, false)) {
        return TransferFails("TransMsg: D2: no ACK from SMSC");
    }
    WritePageProtocolEntry("TransMsg: D2: OK !!!");
    return true;
}

DWORD CCOMHdl::LongestUCPMs() {
    return MUCPWaitForHandShake + MUCPReadyTimeOut;
}
