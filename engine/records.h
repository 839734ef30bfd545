// Records of the tables that are given back at the end of the scope that holds them.
#ifndef PAGERFWD_ENGINE_RECORDS_H
#define PAGERFWD_ENGINE_RECORDS_H

#include <memory>

#include "tables/alarm_log.h"
#include "tables/pager_fwd_events.h"
#include "tables/pager_settings.h"

struct RecordGiver {
    void operator()(Pager* pager) const { CDB_PagerSettings::FreePager(pager); }
    void operator()(PagerFwdEvent* row) const { CDB_PagerFwdEvents::FreePagerFwdEvent(row); }
    void operator()(AlarmLogEntry* alarm) const { CDB_AlarmLog::FreeAlarmLogEntry(alarm); }
    void operator()(AlarmLogFwdInfo* info) const { CDB_AlarmLog::FreeAlarmLogFwdInfo(info); }
};

using OwnedPager = std::unique_ptr<Pager, RecordGiver>;
using OwnedEvent = std::unique_ptr<PagerFwdEvent, RecordGiver>;
using OwnedAlarm = std::unique_ptr<AlarmLogEntry, RecordGiver>;
using OwnedFwdInfo = std::unique_ptr<AlarmLogFwdInfo, RecordGiver>;

#endif
