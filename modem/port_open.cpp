// Taking a port for one page: choosing it, opening its device, setting its line.
// Tested by tests/dialogue/port_open_dialogue.cpp.

#include <new>

#include "linux/win_serial.h"
#include "modem/COMHdl.h"
#include "modem/line_mode.h"
#include "modem/port_lock.h"
#include "modem/trace.h"

namespace {

// What the codes of a failed opening mean. A code that is not listed has no text.
struct OpenFailure {
    int code;
    const char* text;
    bool namesDevice;
    OpenResult result;
};

constexpr OpenFailure kOpenFailures[] = {
    {-1, "IE_BADID: unknown com port", true, kNoSuchPort},
    {-2, "IE_OPEN: device is already open, used by another application", false, kPortInUse},
    {-3, "IE_NOPEN: device is not open", false, kOpenFailed},
    {-4, "IE_MEMORY: queue memory allocation error", false, kOpenFailed},
    {-5, "IE_DEFAULT: COM port default parameters are in error", false, kOpenFailed},
    {-10, "IE_BYTESIZE: invalid bytesize", false, kOpenFailed},  // Kept: the hardware error too.
    {-11, "IE_BYTESIZE: invalid bytesize", false, kOpenFailed},
    {-12, "IE_BAUDRATE: baudrate not supported", false, kOpenFailed},
};

const OpenFailure* FindOpenFailure(int code) {
    for (const OpenFailure& failure : kOpenFailures) {
        if (failure.code == code) {
            return &failure;
        }
    }
    return nullptr;
}

// Requires, as all below: CCOMHdl::lock held.
OpenResult TraceOpenFailure(int code, const CString& device) {
    const OpenFailure* failure = FindOpenFailure(code);
    if (failure == nullptr) {
        return kOpenFailed;
    }
    const CString named = failure->namesDevice ? " (" + device + ")" : CString();
    Trace("OpenCOMPort [::OpenComm result %s%s] L:%%d", failure->text,
          static_cast<const char*>(named));
    return failure->result;
}

int TraceResult(int result) {
    Trace("OpenCOMPort() == %d L:%%d %%s", result);
    return result;
}

void TracePort(const ComPort& port, unsigned char protocol) {
    const auto line = [](const char* label, const CString& text) {
        Trace("%s%s", label, static_cast<const char*>(text));
    };
    CCOMHdl::WritePageProtocolEntry("COM port information:");
    line("COM Name: ", port.name);
    line("COM Settings: ", SettingsText(port, protocol));
    if (!port.isModem) {
        CCOMHdl::WritePageProtocolEntry("Isn't a Modemport");
        return;
    }
    const ModemSet& modem = *port.modemSet;
    line("Initialization string: ", modem.init);
    line("Reset string: ", modem.reset);
    line("Dial prefix: ", modem.dialPrefix);
    line("Activity prompt: ", modem.activityPrompt);
    line("SMS1Protocol: ", modem.sms1Protocol);
    line("SMS1Dial: ", modem.sms1Number);
    line("SMS2Protocol: ", modem.sms2Protocol);
    line("SMS2Dial: ", modem.sms2Number);
}

}  // namespace

int CCOMHdl::OpenComm(CString device, int, int) {
    const PortLock held;
    ComHandle = CreateFile(device);
    return ComHandle != INVALID_HANDLE_VALUE ? 0 : GetLastError();
}

int CCOMHdl::OpenCOMPort(CString port, unsigned char protocol) {
    const PortLock held;
    const int index = ChooseCOMPort(port);
    if (index < 0) {
        return index;
    }
    try {
        return OpenTakenPort(index, protocol);
    } catch (...) {
        // Memory ran out, and the port is not to blame: the next page may have it.
        CloseCOMPort(index);
        throw;
    }
}

int CCOMHdl::OpenTakenPort(int index, unsigned char protocol) {
    ComPort& taken = *COMPortTable[index];
    TracePort(taken, protocol);

    // Kept: a port that fails from here on stays in use; a broken port is not tried again.
    const CString device = DeviceName(taken.name);
    if (device.IsEmpty()) {
        Trace("OpenCOMPort: bad name: %d:%s\n", index, static_cast<const char*>(taken.name));
        return kNoSuchPort;
    }
    if (const int failure = OpenDevice(device); failure != 0) {
        return failure;
    }
    taken.handle = ComHandle;
    if (const int failure = SetLine(ModeText(device, taken, protocol), taken.flow); failure != 0) {
        return failure;
    }
    if (!taken.isModem && !SetDefaultModemStrings(taken)) {
        return TraceResult(kNoModemSet);
    }
    SetCommMask(ComHandle, EV_RXCHAR);
    PurgeComm(ComHandle, PURGE_TXABORT);
    PurgeComm(ComHandle, PURGE_RXABORT);
    TraceResult(HandleNumber(ComHandle));
    return index;
}

// Both purges.
DWORD CCOMHdl::LongestOpenMs() {
    return 2 * kLongestPurgeMs;
}

int CCOMHdl::ChooseCOMPort(const CString& port) {
    const char selector = port.IsEmpty() ? 'A' : port[0];
    switch (selector) {
        case 'A':
        case 'a':
            return ChooseAnyCOMPort();
        case 'C':
        case 'c':
            return ChooseNamedCOMPort(port);
        default:
            return kNoSuchPort;
    }
}

int CCOMHdl::ChooseAnyCOMPort() {
    for (int index = 0; index < COMPortCount(); ++index) {
        ComPort& port = *COMPortTable[index];
        Trace("OpenCOMPort: %d:%d:%d\n", index, port.isModem ? 1 : 0, port.inUse ? 1 : 0);
        if (port.isModem && !port.inUse) {
            Trace("Found: %d\n", index);
            port.inUse = true;
            return index;
        }
    }
    return kNoSuchPort;
}

int CCOMHdl::ChooseNamedCOMPort(const CString& name) {
    const int index = FindCOMPort(name);
    if (index < 0) {
        return kNoSuchPort;
    }
    ComPort& port = *COMPortTable[index];
    // Kept: a port without a modem is taken even when it is in use.
    if (port.isModem && port.inUse) {
        return kPortInUse;
    }
    port.inUse = true;
    return index;
}

int CCOMHdl::OpenDevice(const CString& device) {
    Trace("Before OpenComm: %s", static_cast<const char*>(device));
    const int code = OpenComm(device, 0, 0);
    WritePageProtocolEntry("After OpenComm");
    return code == 0 ? 0 : TraceResult(TraceOpenFailure(code, device));
}

int CCOMHdl::SetLine(const CString& mode, const CString& flow) {
    Trace("Before ::BuildCommDCB: %s", static_cast<const char*>(mode));
    DCB block{};
    block.DCBlength = sizeof block;
    if (BuildCommDCB(mode, &block) == 0) {
        return TraceResult(kBadSettings);  // Kept: the device stays open.
    }
    block.fDtrControl = DTR_CONTROL_ENABLE;
    SetFlowControl(block, flow);

    WritePageProtocolEntry("Before SetCommState");
    if (SetCommState(ComHandle, &block) == 0) {
        Trace("OpenCOMPort() == %d %d L:%%d %%s", kBadSettings, GetLastError());
        CloseHandle(ComHandle);
        return kBadSettings;
    }
    return 0;
}

// Whatever the row holds: a port without a modem of its own dials with the defaults.
bool CCOMHdl::SetDefaultModemStrings(ComPort& port) {
    if (port.modemSet == nullptr) {
        port.modemSet = new (std::nothrow) ModemSet;
    }
    if (port.modemSet == nullptr) {
        return false;
    }
    ModemSet& modem = *port.modemSet;
    modem.init = MStrInit;
    modem.reset = MStrReset;
    modem.dialPrefix = MStrDialPrefix;
    modem.activityPrompt = MStrActivityPrompt;
    modem.sms1Protocol = MStrS1Protocol;
    modem.sms1Number = MStrS1Number;
    modem.sms2Protocol = MStrS2Protocol;
    modem.sms2Number = MStrS2Number;
    return true;
}
