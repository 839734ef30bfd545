// Which serial ports are usable: those that can be opened and have a row in the ports' table.
// Tested by tests/unit/modem/port_exploration_test.cpp.

#include "linux/win_serial.h"
#include "modem/COMHdl.h"
#include "modem/port_row.h"
#include "tables/com_ports.h"

namespace {

// The device that is looked at, open until then.
struct ProbedDevice {
    ProbedDevice() = default;
    ~ProbedDevice() { CloseHandle(handle); }
    ProbedDevice(const ProbedDevice&) = delete;
    ProbedDevice& operator=(const ProbedDevice&) = delete;

    const HANDLE handle = CCOMHdl::ComHandle;
};

struct RowGiver {
    void operator()(DBComPort* row) const { CDB_ComPorts::FreeComPort(row); }
};
using OwnedRow = std::unique_ptr<DBComPort, RowGiver>;

}  // namespace

void CCOMHdl::ExploreCOMPorts() {
    FreeCOMPorts();
    size_t found = 0;
    for (int number = 1; number <= kMaxPorts; ++number) {
        CString name;
        name.Format("COM%d", number);
        OpenComm(name, 0, 0);
        if (ComHandle == INVALID_HANDLE_VALUE) {
            continue;
        }
        const ProbedDevice device;
        CString description;
        description.Format("COM %d", number);
        if (const OwnedRow row{pDBComPorts->FindComPort(description)}) {
            std::unique_ptr<ComPort> port = MakeComPort(*row);
            port->handle = device.handle;
            COMPortTable[found++] = port.release();
        }
    }
}

int CCOMHdl::COMPortCount() {
    int count = 0;
    while (count < kMaxPorts && COMPortTable[count] != nullptr) {
        ++count;
    }
    return count;
}

int CCOMHdl::FindCOMPort(const CString& name) {
    for (int index = 0; index < COMPortCount(); ++index) {
        if (COMPortTable[index]->name == name) {
            return index;
        }
    }
    return -1;
}
