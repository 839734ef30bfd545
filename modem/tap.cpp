// The TAP dialogue (Telocator Alphanumeric Protocol 1.8, appendix C): knock, log on, one block, log
// off.
// Tested by tests/dialogue/tap_dialogue.cpp.

#include "modem/COMHdl.h"
#include "modem/dialogue_texts.h"
#include "modem/tap_block.h"

namespace {

constexpr char kLogOnPrompt[] = "ID=";
constexpr char kGoAhead[] = "\x1b[p\r";
constexpr char kAccepted[] = "\r\x06\r";
constexpr char kEndOfDialogue[] = "\x1b\x04";

}  // namespace

bool CCOMHdl::TransferTAP(HANDLE handle, const CString& number, const CString& text) {
    if (!KnockTAP(handle)) {
        return false;
    }

    WritePageProtocolEntry("TransMsg: EscPG1");
    if (!Send(handle, kTapLogOn)) {
        return TransferFails("sending escPG1 failed");
    }
    if (!WaitString(handle, kGoAhead, MTAPReadyTimeOut, false)) {
        return TransferFails("no message go ahead received");
    }

    const CString block = CreateD1Block(number, text);
    WritePageProtocolEntry("TransMsg: Block:");
    WritePageProtocolEntry(block);
    if (!Send(handle, block)) {
        return TransferFails("TransMsg: D1: sending message block failed");
    }
    // Kept: a refusal is not looked for and the block is not sent again.
    if (!WaitString(handle, kAccepted, MTAPReadyTimeOut, false)) {
        return TransferFails("TransMsg: D1: no EOT from D1 received");
    }

    WritePageProtocolEntry("TransMsg: EOT CR");
    Send(handle, kTapEndOfTransmission);
    if (!WaitString(handle, kEndOfDialogue, MTAPReadyTimeOut, false)) {
        return TransferFails("TransMsg: D1: no EOT at end of dialog");
    }
    WritePageProtocolEntry("TransMsg: D1: OK !!!");
    return true;
}

// Three knocks, go-ahead, acknowledgement, end.
DWORD CCOMHdl::LongestTAPMs() {
    return 6 * MTAPReadyTimeOut;
}

// Up to three carriage returns, until the service asks who is calling.
bool CCOMHdl::KnockTAP(HANDLE handle) {
    const CString knock(kTapKnock.data(), static_cast<int>(kTapKnock.size()));

    WritePageProtocolEntry("TransMsg: TAP: rn");
    Send(handle, knock);
    if (WaitString(handle, kLogOnPrompt, MTAPReadyTimeOut, false)) {
        return true;
    }
    WritePageProtocolEntry("TransMsg: rn");
    Send(handle, knock);
    if (WaitString(handle, kLogOnPrompt, MTAPReadyTimeOut, false)) {
        return true;
    }
    WritePageProtocolEntry("TransMsg: rn");
    if (!Send(handle, knock)) {
        return TransferFails("sending cr for ID= failed");
    }
    return WaitString(handle, kLogOnPrompt, MTAPReadyTimeOut, false) ||
           TransferFails("no ID= received");
}
