// The dialogue with the service of a signal, numeric or alphanumeric pager: number, message and a
// confirmation, typed in answer to its prompt. Its failures write no trace text of their own.
// Tested by tests/dialogue/plain_pager_dialogue.cpp.

#include "linux/XStringView.h"
#include "modem/COMHdl.h"
#include "modem/dialogue_texts.h"

bool CCOMHdl::TransferPlain(const ComPort& port, const CString& number, const CString& message) {
    HANDLE handle = port.handle;
    const CString& prompt = port.modemSet->activityPrompt;

    WritePageProtocolEntry("***************START PAGER ***********************");
    WritePageProtocolEntry("TransMsg: write rn\n");
    // The service may have asked while the call was set up.
    if (View(m_modemSaid).find('?') != std::string_view::npos) {
        WritePageProtocolEntry("send jy after timeout");
        WritePageProtocolEntry("TransMsg: jy + rn");
        if (!Send(handle, kPlainYes + MStrCR) ||
            !WaitString(handle, prompt, MPagerReadyTimeOut, false)) {
            return false;
        }
    }

    const CString numberLine = number + MStrCR;
    WritePageProtocolEntry("***************SEND NUMBER ***********************");
    WritePageProtocolEntry("TransMsg: pnum + rn: ");
    WritePageProtocolEntry(numberLine);
    if (!Send(handle, numberLine) || !WaitString(handle, prompt, MPagerReadyTimeOut, false)) {
        return false;
    }

    if (!message.IsEmpty()) {
        const CString messageLine = message + MStrCR;
        WritePageProtocolEntry("***************SEND MESSAGE ***********************");
        WritePageProtocolEntry("TransMsg: msg + rn:");
        WritePageProtocolEntry(messageLine);
        if (!Send(handle, messageLine)) {
            return false;
        }
    }

    WritePageProtocolEntry("***************SEND J/N ***********************");
    WritePageProtocolEntry("TransMsg: jy + rn");
    Send(handle, kPlainYes);
    if (!Send(handle, MStrCR)) {
        return false;
    }
    WaitString(handle, MStrNoCarrier, MPagerReadyTimeOut, false);  // It need not hang up.
    return true;
}

// Question, number, hang-up.
DWORD CCOMHdl::LongestPlainMs() {
    return 3 * MPagerReadyTimeOut;
}
