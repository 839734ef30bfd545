// From a row of the ports' table to a usable port.
// Tested by tests/unit/modem/port_row_test.cpp.

#include "modem/port_row.h"

#include "tables/com_ports.h"

namespace {

// Kept: the row's texts "SMS1Restrict" and "SMS2Restrict" are not copied. The 80-character switches
// stay empty, so that no message is cut; sites have always had whole messages.
std::unique_ptr<ModemSet> MakeModemSet(const DBComPortModem& row) {
    auto set = std::make_unique<ModemSet>();
    set->init = row.init;
    set->reset = row.reset;
    set->dialPrefix = row.pagerDial;
    set->activityPrompt = row.pagerActivity;
    set->sms1Protocol = row.sms1Protocol;
    set->sms1Number = row.sms1Dial;
    set->sms2Protocol = row.sms2Protocol;
    set->sms2Number = row.sms2Dial;
    return set;
}

}  // namespace

std::unique_ptr<ComPort> MakeComPort(const DBComPort& row) {
    auto port = std::make_unique<ComPort>();
    port->name = row.description;
    port->baud = row.baud;
    port->pagerData = row.pagerData;
    port->pagerParity = row.pagerParity;
    port->pagerStop = row.pagerStop;
    port->flow = row.flow;
    port->isModem = row.select;
    port->sms1Parity = row.sms1Parity;
    port->sms1Stop = row.sms1Stop;
    port->sms1Data = row.sms1Data;
    port->sms2Parity = row.sms2Parity;
    port->sms2Stop = row.sms2Stop;
    port->sms2Data = row.sms2Data;
    port->modemSet = MakeModemSet(*row.modem).release();
    return port;
}
