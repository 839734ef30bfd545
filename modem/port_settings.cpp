// Look-ups over the port table.
// Tested by tests/unit/modem/port_settings_test.cpp.

#include <initializer_list>

#include "modem/COMHdl.h"

namespace {

constexpr unsigned long kNoHandle = ~0UL;

void Append(CString& settings, std::initializer_list<const CString*> texts) {
    for (const CString* text : texts) {
        settings += *text;
        settings += ";";
    }
}

}  // namespace

unsigned long CCOMHdl::GetCOMPortId(CString name) {
    const int index = FindCOMPort(name);
    return index < 0 ? kNoHandle
                     : reinterpret_cast<unsigned long>(COMPortTable[index]->handle.load());
}

// Kept: parity comes before the data bits here, unlike in the record; readers depend on it.
CString CCOMHdl::GetCOMPortSetting(CString name) {
    CString settings;
    const int index = FindCOMPort(name);
    if (index < 0) {
        return settings;
    }
    const ComPort& port = *COMPortTable[index];
    Append(settings, {&port.baud, &port.pagerParity, &port.pagerData, &port.pagerStop, &port.flow});
    if (port.isModem) {
        const ModemSet& modem = *port.modemSet;
        Append(settings, {&modem.init, &modem.reset, &modem.dialPrefix, &modem.activityPrompt});
        Append(settings, {&modem.sms1Protocol, &port.sms1Parity, &port.sms1Data, &port.sms1Stop,
                          &modem.sms1Number});
        Append(settings, {&modem.sms2Protocol, &port.sms2Parity, &port.sms2Data, &port.sms2Stop,
                          &modem.sms2Number});
    }
    return settings;
}

// Kept: whatever the name, nothing is read or changed and the answer is empty. Ports take their
// settings from their table rows, when the handler is made.
CString CCOMHdl::LoadCOMPortSetting(CString) {
    return {};
}
