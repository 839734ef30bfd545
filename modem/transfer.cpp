// Carrying a message over the connected call: the entry, and which dialogue is held.
// Tested by tests/dialogue/transfer_dialogue.cpp.

#include <algorithm>

#include "modem/COMHdl.h"
#include "modem/port_lock.h"
#include "modem/trace.h"

namespace {

constexpr int kCutLength = 80;

// "1" in the service's 80-character switch cuts the message.
CString SmsText(const CString& message, const CString& cut80) {
    return cut80 == "1" ? message.Left(kCutLength) : message;
}

}  // namespace

bool CCOMHdl::TransMsg(int port, CString number, CString message, unsigned char protocol,
                       int* result) {
    const PortLock held;
    Trace("TransMsg( int %d, CString %s, CString %s, int %d ) L:%%d %%s", port,
          static_cast<const char*>(number), static_cast<const char*>(message), protocol);
    const bool done = Transfer(*COMPortTable[port], number, message, protocol);
    if (result != nullptr) {
        *result = done ? kModemSuccess : kTransferFailed;
    }
    return done;
}

bool CCOMHdl::Transfer(const ComPort& port, const CString& number, const CString& message,
                       unsigned char protocol) {
    const ModemSet& modem = *port.modemSet;
    switch (protocol) {
        case kSignalPager:
        case kNumericPager:
        case kAlphanumericPager:
            return TransferPlain(port, number, message);
        case kNTTPager:
            return TransferNTT(port.handle, message);
        case kFirstSmsService:
            return TransferSms(port.handle, modem.sms1Protocol, number,
                               SmsText(message, modem.sms1Cut80));
        case kSecondSmsService:
            return TransferSms(port.handle, modem.sms2Protocol, number,
                               SmsText(message, modem.sms2Cut80));
        default:
            return true;  // Kept: sends nothing and counts as success.
    }
}

bool CCOMHdl::TransferSms(HANDLE handle, const CString& protocolName, const CString& number,
                          const CString& text) {
    if (protocolName == "TAP") {
        return TransferTAP(handle, number, text);
    }
    if (protocolName == "UCP") {
        return TransferUCP(handle, number, text);
    }
    return true;  // Kept: any other name, "tap" too, sends nothing and counts as success.
}

DWORD CCOMHdl::LongestTransferMs() {
    return std::max({LongestTAPMs(), LongestUCPMs(), LongestPlainMs(), LongestNTTMs()});
}

bool CCOMHdl::TransferFails(const char* reason) {
    WritePageProtocolEntry(reason);
    return false;
}
