// The table of COM port properties. Tested by tests/unit/tables/com_ports_test.cpp.
#include "tables/com_ports.h"

#include "tables/record_columns.h"
#include "tables/table_names.h"
#include "tables/table_session.h"

namespace {

template <auto Field>
void FillModemText(DBComPort& port, const char* cell) {
    FillText<Field>(*port.modem, cell);
}

void FillSelect(DBComPort& port, const char* cell) {
    port.select = cell[0] == '1';
}

constexpr char kDescription[] = "Description";

constexpr Column<DBComPort> kColumns[] = {
    {"Baud", FillText<&DBComPort::baud>},
    {"Flow", FillText<&DBComPort::flow>},
    {"Select", FillSelect},
    {"Init", FillModemText<&DBComPortModem::init>},
    {"Reset", FillModemText<&DBComPortModem::reset>},
    {"PagerData", FillText<&DBComPort::pagerData>},
    {"PagerParity", FillText<&DBComPort::pagerParity>},
    {"PagerStop", FillText<&DBComPort::pagerStop>},
    {"PagerDial", FillModemText<&DBComPortModem::pagerDial>},
    {"PagerActivity", FillModemText<&DBComPortModem::pagerActivity>},
    {"SMS1Data", FillText<&DBComPort::sms1Data>},
    {"SMS1Parity", FillText<&DBComPort::sms1Parity>},
    {"SMS1Stop", FillText<&DBComPort::sms1Stop>},
    {"SMS1Dial", FillModemText<&DBComPortModem::sms1Dial>},
    {"SMS1Protocol", FillModemText<&DBComPortModem::sms1Protocol>},
    {"SMS1Restrict", FillModemText<&DBComPortModem::sms1Restrict>},
    {"SMS2Data", FillText<&DBComPort::sms2Data>},
    {"SMS2Parity", FillText<&DBComPort::sms2Parity>},
    {"SMS2Stop", FillText<&DBComPort::sms2Stop>},
    {"SMS2Dial", FillModemText<&DBComPortModem::sms2Dial>},
    {"SMS2Protocol", FillModemText<&DBComPortModem::sms2Protocol>},
    {"SMS2Restrict", FillModemText<&DBComPortModem::sms2Restrict>},
};

void FreeModem(DBComPortModem* modem) {
    if (modem == nullptr) {
        return;
    }
    for (char* text : {modem->init, modem->reset, modem->pagerDial, modem->pagerActivity,
                       modem->sms1Dial, modem->sms1Protocol, modem->sms2Dial, modem->sms2Protocol,
                       modem->sms1Restrict, modem->sms2Restrict}) {
        delete[] text;
    }
    delete modem;
}

}  // namespace

CDB_ComPorts::CDB_ComPorts(const char* databaseName) : CDB_Table(databaseName, kComPortsTable) {}

DBComPort* CDB_ComPorts::FindComPort(const char* description) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return nullptr;
    }
    const RowSet rows(session, kDescription, description);
    if (rows.IsEmpty()) {
        return nullptr;
    }
    const RecordColumns columns(session, kColumns);
    RecordPtr<DBComPort> port(new DBComPort(), FreeComPort);
    port->modem = new DBComPortModem();
    port->description = CopyText(TextOrEmpty(description));
    columns.Fill(*port, rows.Row(0));
    return port.release();
}

void CDB_ComPorts::FreeComPort(DBComPort* port) {
    if (port == nullptr) {
        return;
    }
    for (char* text : {port->description, port->baud, port->pagerData, port->pagerParity,
                       port->pagerStop, port->flow, port->sms1Parity, port->sms1Stop,
                       port->sms1Data, port->sms2Parity, port->sms2Stop, port->sms2Data}) {
        delete[] text;
    }
    FreeModem(port->modem);
    delete port;
}
