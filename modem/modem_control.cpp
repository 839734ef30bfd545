// Driving the modem on an open port: initialise, dial, hang up, give back.
// Tested by tests/dialogue/modem_control_dialogue.cpp.

#include "linux/out_of_memory.h"
#include "linux/win_serial.h"
#include "modem/COMHdl.h"
#include "modem/port_lock.h"
#include "modem/printable_form.h"
#include "modem/protocol_group.h"
#include "modem/trace.h"

namespace {

constexpr DWORD kSettleMs = 1000;   // lets the modem finish what it has to say
constexpr DWORD kCommandMs = 2000;  // the answer to a command
constexpr DWORD kAfterResetMs = 5000;

constexpr char kNeverSaid[] = "WAIT_STRING";
constexpr char kEscape[] = "+++";
constexpr char kHangUp[] = "ATHV1\r\n";  // with verbal answers from now on

void Store(int* error, ModemResult result) {
    if (error != nullptr) {
        *error = result;
    }
}

// A line that there is no memory for is lost, as any other of the trace.
void TraceSent(const void* bytes, size_t count) {
    MemorySufficesFor([bytes, count] {
        const bool isShown = Tracing() && bytes != nullptr;
        const std::string shown = isShown ? PrintableForm(bytes, count) : std::string();
        TraceUnlocked("OUT: %*s!!!!", static_cast<int>(shown.size()), shown.c_str());
    });
}

}  // namespace

bool CCOMHdl::InitModem(int port, int* error) {
    const PortLock held;
    HANDLE handle = COMPortTable[port]->handle;
    ResetModem(port);
    WaitString(handle, kNeverSaid, kSettleMs, false);

    const CString command = COMPortTable[port]->modemSet->init + "V1" + MStrCR;
    WritePageProtocolEntry("InitModem:");
    WritePageProtocolEntry(command);
    const bool done = Send(handle, command) && WaitString(handle, MStrOK, kCommandMs, false);
    if (!done) {
        Store(error, kModemInitFailed);
    }
    return done;
}

DWORD CCOMHdl::LongestInitMs() {
    return LongestResetMs() + kSettleMs + kCommandMs;
}

bool CCOMHdl::Dial(int port, CString number, unsigned char protocol, CString text,
                   bool waitForConnect, int* error) {
    const PortLock held;
    HANDLE handle = COMPortTable[port]->handle;
    const CString command = DialCommand(*COMPortTable[port]->modemSet, protocol, number) + MStrCR;
    WritePageProtocolEntry("Dial:");
    WritePageProtocolEntry(command);

    bool done = Send(handle, command);
    if (done) {
        const CString& answer = waitForConnect ? MStrConnect : MStrOK;
        done = WaitString(handle, answer, MDialTimeOut, !ModemTest);
        // Kept: with nothing to transfer, the call itself was the page, answered or not.
        done = done || (waitForConnect && text.IsEmpty());
    }
    Store(error, done ? kModemSuccess : kDialFailed);
    return done;
}

DWORD CCOMHdl::LongestDialMs() {
    return MDialTimeOut;
}

bool CCOMHdl::ResetModem(int port) {
    HANDLE handle = COMPortTable[port]->handle;
    const CString command = COMPortTable[port]->modemSet->reset + MStrCR;

    Send(handle, kEscape);
    TraceUnlocked("ResetModem: %s", kEscape);
    WaitString(handle, MStrOK, kSettleMs, false);

    Send(handle, kHangUp);
    TraceUnlocked("ResetModem: %s", kHangUp);
    WaitString(handle, MStrOK, kCommandMs, false);

    WritePageProtocolEntry("ResetModem: resStr:");
    WritePageProtocolEntry(command);
    const bool done = Send(handle, command) && WaitString(handle, MStrOK, kCommandMs, false);
    Sleep(kAfterResetMs);
    return done;
}

// Escape, hang up, reset, pause.
DWORD CCOMHdl::LongestResetMs() {
    return kSettleMs + kCommandMs + kCommandMs + kAfterResetMs;
}

bool CCOMHdl::CloseCOMPort(int port) {
    TraceUnlocked("CloseCOMPort: %d\n", port);
    ComPort& closed = *COMPortTable[port];
    closed.inUse = false;
    return CloseHandle(closed.handle) != 0;
}

bool CCOMHdl::GetCOMPortError(HANDLE handle) {
    DWORD errors = 0;
    COMSTAT status{};
    return ClearCommError(handle, &errors, &status) != 0;
}

bool CCOMHdl::MyWriteFile(HANDLE handle, const void* buffer, DWORD length, DWORD* written,
                          OVERLAPPED* overlapped) {
    TraceSent(buffer, length);
    return WriteFile(handle, buffer, length, written, overlapped) != 0;
}

bool CCOMHdl::Send(HANDLE handle, const CString& bytes) {
    const bool sent =
        MyWriteFile(handle, bytes, static_cast<DWORD>(bytes.GetLength()), &ComWriteBytes, nullptr);
    if (!sent) {
        GetCOMPortError(handle);
    }
    return sent;
}
