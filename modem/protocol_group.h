// What of a port's records a protocol uses: pager protocols share one set of line settings and one
// dial command, each SMS service has its own.
#ifndef PAGERFWD_MODEM_PROTOCOL_GROUP_H
#define PAGERFWD_MODEM_PROTOCOL_GROUP_H

#include "modem/COMHdl.h"

struct ProtocolGroup {
    CString ComPort::*parity;
    CString ComPort::*data;
    CString ComPort::*stop;
    CString ModemSet::*dialCommand;
};

// Null for a protocol code that is none of PagerProtocol.
const ProtocolGroup* FindProtocolGroup(unsigned char protocol);

// What dials the number, without its carriage return.
CString DialCommand(const ModemSet& modem, unsigned char protocol, const CString& number);

#endif
