// The table of pager forward events. Tested by tests/unit/tables/pager_fwd_events_test.cpp, the
// fold by tests/unit/tables/fold_test.cpp.
#include "tables/pager_fwd_events.h"

#include <cstring>
#include <string>

#include "tables/alarm_log.h"
#include "tables/record_columns.h"
#include "tables/table_names.h"
#include "tables/table_session.h"

namespace {

constexpr char kAlmGroup[] = "AlmGroup";
constexpr char kAlmLogId[] = "AlmLogID";
constexpr char kPagerDescr[] = "PagerDescr";
constexpr char kPagerRetries[] = "PagerRetries";
constexpr char kPagerState[] = "PagerState";
constexpr char kServerN[] = "ServerN";
constexpr char kSeverity[] = "Severity";

constexpr Column<PagerFwdEvent> kColumns[] = {
    {kAlmGroup, FillText<&PagerFwdEvent::almGroup>},
    {kAlmLogId, FillNumber<&PagerFwdEvent::almLogId>},
    {kPagerDescr, FillText<&PagerFwdEvent::pagerDescr>},
    {kPagerRetries, FillNumber<&PagerFwdEvent::pagerRetries>},
    {kPagerState, FillNumber<&PagerFwdEvent::pagerState>},
    {kServerN, FillText<&PagerFwdEvent::serverN>},
    {kSeverity, FillNumber<&PagerFwdEvent::severity>},
};

// No page's key.
constexpr char kNoPage[] = R"(WHERE AlmGroup = "" AND AlmLogID = 0 AND PagerDescr = "")";

// Conditions hold their texts as they stand and whole, however long.
std::string WhereKeyIs(const char* almGroup, int32_t almLogId, const char* pagerDescr) {
    return std::string("WHERE ") + kAlmGroup + " = \"" + TextOrEmpty(almGroup) + "\" AND " +
           kAlmLogId + " = " + DecimalText(almLogId) + " AND " + kPagerDescr + " = \"" +
           TextOrEmpty(pagerDescr) + "\"";
}

std::string WhereNotBeingPaged(const char* table) {
    return std::string("WHERE ") + table + "." + kPagerState + " <> " +
           DecimalText(kForwardBeingPaged);
}

std::string WhereAlarmIs(const char* table, int32_t almLogId) {
    // Kept: two blanks before the sign; table stores match the condition as a whole.
    return std::string("WHERE ") + table + "." + kAlmLogId + "  = " + DecimalText(almLogId);
}

// Returns how many rows were hit; -1 when the list isn't whole.
int32_t ChangeRows(const DatabaseSession& session, const std::string& condition,
                   ElementList& changes) {
    if (!changes.IsWhole()) {
        return -1;
    }
    return DBAsciiAccessSQLConditionSet(session.Handle(), session.Table(), condition.c_str(),
                                        changes.Take(), 'y', 'y');
}

// A missing cell equals no text, not even the empty one.
bool IsSameText(const char* cell, const char* wanted) {
    return cell != nullptr && std::strcmp(cell, TextOrEmpty(wanted)) == 0;
}

}  // namespace

ForwardState FoldState(ForwardState folded, ForwardState next) {
    constexpr ForwardState kNoStateYet{};
    if (folded == kForwardBeingPaged || next == kForwardBeingPaged) {
        return kForwardBeingPaged;
    }
    const bool outranks = folded == kForwardDone && next == kForwardOffLimit;
    // Kept: the first page decides, so that an acknowledged one keeps the alarm acknowledged.
    return folded == kNoStateYet || outranks ? next : folded;
}

CDB_PagerFwdEvents::CDB_PagerFwdEvents(const char* databaseName)
    : CDB_Table(databaseName, kPagerFwdEventsTable) {}

int32_t CDB_PagerFwdEvents::DeleteInactiveEvents() {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return session.OpenResult();
    }
    DBAsciiAccessSQLConditionDelete(session.Handle(), Table(), WhereNotBeingPaged(Table()).c_str(),
                                    'y');
    // Kept: the result of the close, not the number of rows; 0 is success to its caller.
    return session.Close();
}

int32_t CDB_PagerFwdEvents::GetActiveEvents(PagerFwdEvent*** out) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return 0;
    }
    const RowSet rows(session, kPagerState, DecimalText(kForwardBeingPaged).c_str());
    if (rows.IsEmpty()) {
        return 0;
    }
    const RecordColumns columns(session, kColumns);
    *out = columns.NewRecords(rows, FreePagerFwdEvent);
    return rows.Count();
}

PagerFwdEvent* CDB_PagerFwdEvents::FindFwdEvent(int32_t almLogId, const char* almGroup,
                                                const char* pagerDescr) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return nullptr;
    }
    const RowSet rows(session, kAlmLogId, DecimalText(almLogId).c_str());
    if (rows.IsEmpty()) {
        return nullptr;
    }
    const RecordColumns columns(session, kColumns);
    for (int32_t i = 0; i < rows.Count(); ++i) {
        const char* const* const row = rows.Row(i);
        if (IsSameText(columns.Cell(row, kAlmGroup), almGroup) &&
            IsSameText(columns.Cell(row, kPagerDescr), pagerDescr)) {
            return columns.NewRecord(row, FreePagerFwdEvent).release();
        }
    }
    return nullptr;
}

int32_t CDB_PagerFwdEvents::NewPagerFwdEvent(const char* almGroup, int32_t almLogId,
                                             const char* pagerDescr, const char* serverN,
                                             TRAP_SEVERITY severity, uint32_t retries,
                                             ForwardState state) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return -1;
    }
    ElementList row(session, kNoPage);
    row.Add(kAlmLogId, almLogId)
        .Add(kAlmGroup, almGroup)
        .Add(kPagerDescr, pagerDescr)
        .Add(kPagerState, state)
        .Add(kPagerRetries, static_cast<int32_t>(retries))
        .Add(kSeverity, severity)
        .Add(kServerN, serverN);
    if (!row.IsWhole()) {
        return -1;
    }
    return DBAsciiAccessSet(session.Handle(), Table(), row.Take(), 'y', 'y', 'y');
}

int32_t CDB_PagerFwdEvents::SetForwardState(const char* almGroup, int32_t almLogId,
                                            const char* pagerDescr, ForwardState state) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return -1;
    }
    const std::string condition = WhereKeyIs(almGroup, almLogId, pagerDescr);
    ElementList changes(session, kNoPage);
    changes.Add(kPagerState, state);
    return ChangeRows(session, condition, changes);
}

int32_t CDB_PagerFwdEvents::SetPagerForwarded(const char* almGroup, int32_t almLogId,
                                              const char* pagerDescr, int32_t retries,
                                              ForwardState state) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return -1;
    }
    const std::string condition = WhereKeyIs(almGroup, almLogId, pagerDescr);
    ElementList changes(session, kNoPage);
    // Kept: the lower-case s; table stores know the column by this name too.
    changes.Add("Pagerstate", state).Add(kPagerRetries, retries);
    return ChangeRows(session, condition, changes);
}

int32_t CDB_PagerFwdEvents::DeletePagerFwdEvent(const char* almGroup, int32_t almLogId,
                                                const char* pagerDescr) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return -1;
    }
    return DBAsciiAccessSQLConditionDelete(session.Handle(), Table(),
                                           WhereKeyIs(almGroup, almLogId, pagerDescr).c_str(), 'y');
}

int32_t CDB_PagerFwdEvents::DeleteEventsByAlarmLogId(int32_t almLogId) {
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return -1;
    }
    return DBAsciiAccessSQLConditionDelete(session.Handle(), Table(),
                                           WhereAlarmIs(Table(), almLogId).c_str(), 'y');
}

void CDB_PagerFwdEvents::FreePagerFwdEvent(PagerFwdEvent* event) {
    if (event == nullptr) {
        return;
    }
    for (char* text : {event->almGroup, event->pagerDescr, event->serverN}) {
        delete[] text;
    }
    delete event;
}

void CDB_PagerFwdEvents::UpdateAlarmLog(int32_t almLogId) {
    CDB_AlarmLog alarmLog(Database());
    DatabaseSession session(Database());
    if (!session.OpenTable(Table())) {
        return;
    }
    const RowSet rows(session, kAlmLogId, DecimalText(almLogId).c_str());
    if (rows.IsEmpty()) {
        return;
    }
    const int32_t column = session.FindColumn(kPagerState);
    if (column < 0) {
        return;  // pages without any state say nothing about their alarm
    }
    ForwardState folded{};
    for (int32_t i = 0; i < rows.Count(); ++i) {
        folded =
            FoldState(folded, static_cast<ForwardState>(ToInteger(CellAt(rows.Row(i), column))));
    }
    alarmLog.SetPagerState(almLogId, folded);
}
