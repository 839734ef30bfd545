// Records as tests hold them: given back to their class at the end of the scope.
#ifndef PAGERFWD_TESTS_UNIT_TABLES_RECORDS_H
#define PAGERFWD_TESTS_UNIT_TABLES_RECORDS_H

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tables/alarm_log.h"
#include "tables/com_ports.h"
#include "tables/pager_fwd_events.h"
#include "tables/pager_settings.h"
#include "tables/time_models.h"

struct GiveBack {
    void operator()(DBComPort* port) const { CDB_ComPorts::FreeComPort(port); }
    void operator()(Pager* pager) const { CDB_PagerSettings::FreePager(pager); }
    void operator()(TimeModel* model) const { delete model; }
    void operator()(PagerFwdEvent* event) const { CDB_PagerFwdEvents::FreePagerFwdEvent(event); }
    void operator()(AlarmLogEntry* entry) const { CDB_AlarmLog::FreeAlarmLogEntry(entry); }
    void operator()(AlarmLogFwdInfo* info) const { CDB_AlarmLog::FreeAlarmLogFwdInfo(info); }
};

template <class Record>
using Held = std::unique_ptr<Record, GiveBack>;

template <class Record>
Held<Record> Hold(Record* record) {
    return Held<Record>(record);
}

// The records of an array that an operation handed out; the array itself ends here.
template <class Record>
std::vector<Held<Record>> HoldAll(Record** records, int32_t count) {
    std::vector<Held<Record>> held;
    held.reserve(static_cast<size_t>(std::max(count, 0)));
    for (int32_t i = 0; i < count; ++i) {
        held.emplace_back(records[i]);
    }
    delete[] records;
    return held;
}

// A field that may be null, for comparison.
inline std::string Text(const char* field) {
    return field != nullptr ? field : "(null)";
}

using Lines = std::vector<std::string>;

// "name -> place" for each column becomes the line of its look-up.
inline Lines LookUps(const std::string& table, const Lines& columns) {
    Lines lines;
    for (const std::string& column : columns) {
        std::string line = "GetElementColumn(";
        line.append(table).append(", ").append(column);
        lines.push_back(line.insert(line.find(" -> "), ")"));
    }
    return lines;
}

inline Lines operator+(Lines left, const Lines& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

#endif
