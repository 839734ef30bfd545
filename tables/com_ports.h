// The table "AlarmFwd_COMProperties": how the line and the modem of each serial port are set.
#ifndef PAGERFWD_TABLES_COM_PORTS_H
#define PAGERFWD_TABLES_COM_PORTS_H

#include <cstdint>

#include "tables/db_table.h"

// The modem commands of a port. A text whose column is missing is null.
struct DBComPortModem {
    char* init;
    char* reset;
    char* pagerDial;
    char* pagerActivity;
    char* sms1Dial;
    char* sms1Protocol;
    char* sms2Dial;
    char* sms2Protocol;
    char* sms1Restrict;
    char* sms2Restrict;
};

// The properties of a port, all of them still texts. A text whose column is missing is null.
struct DBComPort {
    char* description;  // as asked for; always set
    char* baud;
    char* pagerData;
    char* pagerParity;
    char* pagerStop;
    char* flow;
    bool select;            // true exactly when the cell begins with '1'
    DBComPortModem* modem;  // always set
    int32_t unused;         // no column fills it
    char* sms1Parity;
    char* sms1Stop;
    char* sms1Data;
    char* sms2Parity;
    char* sms2Stop;
    char* sms2Data;
};

class CDB_ComPorts : public CDB_Table {
 public:
    explicit CDB_ComPorts(const char* databaseName);

    // The first port with this description, such as "COM 1"; null when there is none or the table
    // can't be opened.
    DBComPort* FindComPort(const char* description);

    // Frees the record, its modem record and all their texts. Null is allowed.
    static void FreeComPort(DBComPort* port);
};

#endif
