// From a row of the ports' table to a usable port.
#ifndef PAGERFWD_MODEM_PORT_ROW_H
#define PAGERFWD_MODEM_PORT_ROW_H

#include <memory>

#include "modem/COMHdl.h"

struct DBComPort;

// A port with modem strings of its own (see ComPort about who frees them), not in use, no handle.
std::unique_ptr<ComPort> MakeComPort(const DBComPort& row);

#endif
