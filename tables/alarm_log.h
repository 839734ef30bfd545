// The table "AlarmLog": the alarm-management service's own log of alarms.
//
// The service writes it too. This side reads what a page is made of, and writes two columns:
// "pagerstate" and "stationstate".
#ifndef PAGERFWD_TABLES_ALARM_LOG_H
#define PAGERFWD_TABLES_ALARM_LOG_H

#include <cstdint>

#include "tables/db_table.h"
#include "tables/forward_state.h"

// One alarm. A field whose column is missing is null or 0.
struct AlarmLogEntry {
    int32_t ackTime;
    int32_t alarmAck;
    int32_t alarmLogId;
    char* alarmName;
    char* alarmNote;
    char* details;
    int32_t execState;
    int32_t mailState;
    int32_t monitorOnly;
    ForwardState pagerState;
    ForwardState stationState;
    int32_t broadcastState;
    int32_t eventLogState;
    char* server;
    TRAP_SEVERITY severity;
    int32_t timestamp;  // seconds since 1970, as stored
};

// What of an alarm goes into a page. A field whose column is missing is null or 0.
struct AlarmLogFwdInfo {
    int32_t alarmLogId;
    char* alarmName;
    char* details;
    ForwardState stationState;
    ForwardState pagerState;
    int32_t timestamp;  // seconds since 1970, as stored
};

// Threads    Each write holds the table lock of the table access from before the table is opened
//            until it is written back, so that no change by the service is lost in between. When
//            the lock can't be had, the write is made without. Reads take no lock.
class CDB_AlarmLog : public CDB_Table {
 public:
    explicit CDB_AlarmLog(const char* databaseName);

    // The alarm of this id, or null unless exactly one row has it.
    AlarmLogEntry* FindAlarmLogEntry(int32_t alarmLogId);
    AlarmLogFwdInfo* GetAlarmLogFwdInfo(int32_t alarmLogId);

    // "stationstate" of the alarm; 0 unless exactly one row has this id.
    int32_t GetStationState(int32_t alarmLogId);

    // Write one state of an alarm. Return how many rows that were, 0 for an unknown alarm; -1 when
    // the table can't be opened.
    int32_t SetStationState(int32_t alarmLogId, ForwardState state);
    int32_t SetPagerState(int32_t alarmLogId, ForwardState state);

    // Every alarm whose "stationstate" is 2, in row order: *out receives a new array of as many
    // records as the result says, also when it is 0. -1, with *out untouched, when the table can't
    // be opened.
    int32_t GetAllAlarmLogEntries(AlarmLogEntry*** out);

    // Free a record and its texts. Null is allowed.
    static void FreeAlarmLogEntry(AlarmLogEntry* entry);
    static void FreeAlarmLogFwdInfo(AlarmLogFwdInfo* info);
};

#endif
