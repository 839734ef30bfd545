// The alarm log. Tested by tests/unit/tables/alarm_log_test.cpp.
#include "tables/alarm_log.h"

#include <string>

#include "tables/record_columns.h"
#include "tables/table_names.h"
#include "tables/table_session.h"

namespace {

constexpr char kNoAlarm[] = "WHERE alarmlogID = 0";
constexpr char kAlarmLogId[] = "alarmlogID";
constexpr char kAlarmName[] = "alarmName";
constexpr char kDetails[] = "details";
constexpr char kPagerState[] = "pagerstate";
constexpr char kStationState[] = "stationstate";
constexpr char kTimestamp[] = "timestamp";
constexpr Column<AlarmLogEntry> kEntryColumns[] = {
    {"acktime", FillNumber<&AlarmLogEntry::ackTime>},
    {"alarmack", FillNumber<&AlarmLogEntry::alarmAck>},
    {kAlarmLogId, FillNumber<&AlarmLogEntry::alarmLogId>},
    {kAlarmName, FillText<&AlarmLogEntry::alarmName>},
    {"alarmnote", FillText<&AlarmLogEntry::alarmNote>},
    {kDetails, FillText<&AlarmLogEntry::details>},
    {"execstate", FillNumber<&AlarmLogEntry::execState>},
    {"mailstate", FillNumber<&AlarmLogEntry::mailState>},
    {"monitoronly", FillNumber<&AlarmLogEntry::monitorOnly>},
    {kPagerState, FillNumber<&AlarmLogEntry::pagerState>},
    {kStationState, FillNumber<&AlarmLogEntry::stationState>},
    // Kept: looked up and read a second time; the calls that a table store sees stay the same.
    {kPagerState, FillNumber<&AlarmLogEntry::pagerState>},
    {"broadcaststate", FillNumber<&AlarmLogEntry::broadcastState>},
    {"eventlogstate", FillNumber<&AlarmLogEntry::eventLogState>},
    {"server", FillText<&AlarmLogEntry::server>},
    {"severity", FillNumber<&AlarmLogEntry::severity>},
    {kTimestamp, FillNumber<&AlarmLogEntry::timestamp>},
};

constexpr Column<AlarmLogFwdInfo> kFwdInfoColumns[] = {
    {kAlarmName, FillText<&AlarmLogFwdInfo::alarmName>},
    {kDetails, FillText<&AlarmLogFwdInfo::details>},
    {kStationState, FillNumber<&AlarmLogFwdInfo::stationState>},
    {kPagerState, FillNumber<&AlarmLogFwdInfo::pagerState>},
    {kTimestamp, FillNumber<&AlarmLogFwdInfo::timestamp>},
};

// The rows of an alarm. An id that two rows have is the same as unknown.
RowSet RowsOfAlarm(const DatabaseSession& session, int32_t alarmLogId) {
    return {session, kAlarmLogId, DecimalText(alarmLogId).c_str()};
}

// Writes a column of an alarm's row under the lock of the table, and returns the number of rows.
int32_t WriteState(DatabaseSession& session, const char* table, int32_t alarmLogId,
                   const char* column, ForwardState state) {
    if (!session.IsOpen()) {
        return -1;
    }
    TableLock lock(session, table);
    if (!session.OpenTable(table)) {
        return -1;
    }
    const std::string condition =
        std::string("WHERE ") + kAlarmLogId + " = " + DecimalText(alarmLogId);
    ElementList changes(session, kNoAlarm);
    changes.Add(column, state);
    if (!changes.IsWhole()) {
        return -1;
    }
    const int32_t changed = DBAsciiAccessSQLConditionSet(session.Handle(), table, condition.c_str(),
                                                         changes.Take(), 'y', 'n');
    return changed > 0 ? DBAsciiAccessWrite(session.Handle(), table, lock.Result()) : changed;
}

}  // namespace

CDB_AlarmLog::CDB_AlarmLog(const char* databaseName) : CDB_Table(databaseName, kAlarmLogTable) {}

AlarmLogEntry* CDB_AlarmLog::FindAlarmLogEntry(int32_t alarmLogId) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return nullptr;
    }
    const RowSet rows = RowsOfAlarm(session, alarmLogId);
    if (rows.Count() != 1) {
        return nullptr;
    }
    const RecordColumns columns(session, kEntryColumns, kAlarmLogId);
    auto entry = columns.NewRecord(rows.Row(0), FreeAlarmLogEntry);
    entry->alarmLogId = alarmLogId;
    return entry.release();
}

AlarmLogFwdInfo* CDB_AlarmLog::GetAlarmLogFwdInfo(int32_t alarmLogId) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return nullptr;
    }
    const RowSet rows = RowsOfAlarm(session, alarmLogId);
    if (rows.Count() != 1) {
        return nullptr;
    }
    const RecordColumns columns(session, kFwdInfoColumns);
    auto info = columns.NewRecord(rows.Row(0), FreeAlarmLogFwdInfo);
    info->alarmLogId = alarmLogId;
    return info.release();
}

int32_t CDB_AlarmLog::GetStationState(int32_t alarmLogId) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return 0;
    }
    const RowSet rows = RowsOfAlarm(session, alarmLogId);
    if (rows.Count() != 1) {
        return 0;
    }
    return ToInteger(CellAt(rows.Row(0), session.FindColumn(kStationState)));
}

int32_t CDB_AlarmLog::SetStationState(int32_t alarmLogId, ForwardState state) {
    // Kept: this write alone closes so that the host's static state stays.
    DatabaseSession session(Database(), DBAsciiAccessCloseKeepStaticDllInfo);
    return WriteState(session, Table(), alarmLogId, kStationState, state);
}

int32_t CDB_AlarmLog::SetPagerState(int32_t alarmLogId, ForwardState state) {
    DatabaseSession session(Database());
    return WriteState(session, Table(), alarmLogId, kPagerState, state);
}

int32_t CDB_AlarmLog::GetAllAlarmLogEntries(AlarmLogEntry*** out) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return -1;
    }
    const RowSet rows(session, kStationState, DecimalText(kForwardBeingPaged).c_str());
    if (rows.IsEmpty()) {
        // Kept: no waiting alarm still hands out an array, which the caller frees.
        *out = new AlarmLogEntry*[0];
        return 0;
    }
    const RecordColumns columns(session, kEntryColumns);
    *out = columns.NewRecords(rows, FreeAlarmLogEntry);
    return rows.Count();
}

void CDB_AlarmLog::FreeAlarmLogEntry(AlarmLogEntry* entry) {
    if (entry == nullptr) {
        return;
    }
    for (char* text : {entry->alarmName, entry->alarmNote, entry->details, entry->server}) {
        delete[] text;
    }
    delete entry;
}

void CDB_AlarmLog::FreeAlarmLogFwdInfo(AlarmLogFwdInfo* info) {
    if (info == nullptr) {
        return;
    }
    for (char* text : {info->alarmName, info->details}) {
        delete[] text;
    }
    delete info;
}
