// The Win32-named serial calls, each handed on to the line driver. Tested by
// tests/unit/linux/serial_test.cpp.
#include "linux/win_serial.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <mutex>
#include <new>

#include "linux/tty.h"

namespace {

// What a handle points to.
struct Port {
    TtyLine* line;  // null once closed
    DWORD mask;     // what GetCommMask reports
};

// All ports ever opened, so that a handle kept beyond its close still points to something. A deque
// never moves its elements. Never destroyed: a thread may send a page while the process ends.
std::mutex portsLock;
std::deque<Port>& Ports() {  // guarded by portsLock; each Port by its user
    static auto& ports = *new std::deque<Port>;
    return ports;
}

Port* NewPort(TtyLine* line) {
    try {
        const std::lock_guard<std::mutex> hold(portsLock);
        Ports().push_back(Port{line, 0});
        return &Ports().back();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

Port* PortOf(HANDLE handle) {
    return handle == INVALID_HANDLE_VALUE ? nullptr : static_cast<Port*>(handle);
}

TtyLine* LineOf(HANDLE handle) {
    const Port* const port = PortOf(handle);
    return port == nullptr ? nullptr : port->line;
}

// Null when the name has no digit or the device can't be opened.
TtyLine* OpenLine(const char* name) {
    const char* const digit = name == nullptr ? nullptr : strpbrk(name, "0123456789");
    if (digit == nullptr) {
        return nullptr;
    }
    // Kept: one digit only. COM10 is COM1, and COM0 is "/dev/ttyS/", which nobody can open.
    char device[] = "/dev/ttyS?";
    device[sizeof device - 2] = static_cast<char>(*digit - 1);
    return tty_open(device, nullptr, nullptr);
}

int32_t ToCount(DWORD length) {
    return static_cast<int32_t>(std::min<DWORD>(length, INT32_MAX));
}

// Hands on how many bytes the driver moved; below 0 it failed.
BOOL Moved(int32_t count, DWORD* moved) {
    *moved = static_cast<DWORD>(std::max(count, 0));
    return count >= 0 ? 1 : 0;
}

}  // namespace

HANDLE CreateFile(const char* name, DWORD /*access*/, DWORD /*share*/, void* /*security*/,
                  DWORD /*disposition*/, DWORD /*attributes*/, HANDLE /*pattern*/) {
    TtyLine* const line = OpenLine(name);
    Port* const port = line == nullptr ? nullptr : NewPort(line);
    if (port == nullptr) {
        tty_close(line);
        win_errno = IE_BADID;
        return INVALID_HANDLE_VALUE;
    }
    return port;
}

BOOL CloseHandle(HANDLE handle) {
    Port* const port = PortOf(handle);
    if (port == nullptr) {
        return 0;
    }
    tty_close(port->line);
    port->line = nullptr;
    return 1;
}

BOOL SetCommState(HANDLE handle, const DCB* dcb) {
    if (dcb == nullptr || dcb->Parity >= strlen(abbr_parity)) {
        return 0;
    }
    const int32_t stopBits = dcb->StopBits != ONESTOPBIT ? 2 : 1;
    // 0 = set.
    return tty_setup(LineOf(handle), true, true, ToCount(dcb->BaudRate), dcb->ByteSize, stopBits,
                     abbr_parity[dcb->Parity]) >= 0
               ? 1
               : 0;
}

BOOL WriteFile(HANDLE handle, const void* buffer, DWORD length, DWORD* written,
               OVERLAPPED* /*overlapped*/) {
    return Moved(tty_send(LineOf(handle), buffer, ToCount(length)), written);
}

BOOL ReadFile(HANDLE handle, void* buffer, DWORD length, DWORD* read, OVERLAPPED* /*overlapped*/) {
    return Moved(tty_receive(LineOf(handle), buffer, ToCount(length)), read);
}

BOOL ClearCommError(HANDLE handle, DWORD* errors, COMSTAT* status) {
    *errors = 0;
    if (status != nullptr) {
        *status = COMSTAT{};
        status->cbInQue = static_cast<DWORD>(tty_data_ready(LineOf(handle), 0));
    }
    return PortOf(handle) != nullptr ? 1 : 0;
}

BOOL SetCommMask(HANDLE handle, DWORD mask) {
    Port* const port = PortOf(handle);
    if (port == nullptr) {
        return 0;
    }
    port->mask = mask;
    return 1;
}

BOOL GetCommMask(HANDLE handle, DWORD* events) {
    *events = 0;
    const Port* const port = PortOf(handle);
    if (port == nullptr) {
        return 0;
    }
    if ((port->mask & EV_RXCHAR) != 0 && tty_data_ready(port->line, 0) != 0) {
        *events = EV_RXCHAR;
    }
    return 1;
}

BOOL PurgeComm(HANDLE handle, DWORD /*flags*/) {
    constexpr int32_t kQuietSeconds = 1;
    static_assert(kLongestPurgeMs == kLongestDrainMs + 1000 * kQuietSeconds);
    tty_drain(LineOf(handle), kQuietSeconds);
    return PortOf(handle) != nullptr ? 1 : 0;
}
