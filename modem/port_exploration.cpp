// Which serial ports are usable: those that can be opened and have a row in the ports' table.
// Tested by tests/unit/modem/port_exploration_test.cpp.

#include "linux/win_serial.h"
#include "modem/COMHdl.h"
#include "modem/port_row.h"
#include "tables/com_ports.h"

void CCOMHdl::ExploreCOMPorts() {
    FreeCOMPorts();
    size_t found = 0;
    for (int number = 1; number <= kMaxPorts; ++number) {
        CString device;
        device.Format("COM%d", number);
        OpenComm(device, 0, 0);
        if (ComHandle == INVALID_HANDLE_VALUE) {
            continue;
        }
        CString description;
        description.Format("COM %d", number);
        DBComPort* row = pDBComPorts->FindComPort(description);
        if (row != nullptr) {
            std::unique_ptr<ComPort> port = MakeComPort(*row);
            port->handle = ComHandle;
            COMPortTable[found++] = port.release();
            CDB_ComPorts::FreeComPort(row);
        }
        CloseHandle(ComHandle);
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
