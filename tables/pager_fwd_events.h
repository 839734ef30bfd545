// The table "AlarmFwd_PagerEvents": one row for every page that an alarm owes a pager.
//
// Its rows are what a restart takes up again, and what the alarm log's view of an alarm is made of.
#ifndef PAGERFWD_TABLES_PAGER_FWD_EVENTS_H
#define PAGERFWD_TABLES_PAGER_FWD_EVENTS_H

#include <cstdint>

#include "tables/db_table.h"
#include "tables/forward_state.h"

// One row. Its key is the alarm's group, the alarm and the pager. A field whose column is missing
// is null or 0.
struct PagerFwdEvent {
    char* almGroup;
    int32_t almLogId;  // the alarm's row in the alarm log
    char* pagerDescr;  // the pager's description
    uint32_t pagerRetries;
    ForwardState pagerState;
    char* serverN;  // the server that raised the alarm
    TRAP_SEVERITY severity;
};

// Threads    This table is changed without a table lock: the caller serialises changes.
class CDB_PagerFwdEvents : public CDB_Table {
 public:
    explicit CDB_PagerFwdEvents(const char* databaseName);

    // Deletes every row that is not being paged. Returns 0, or what else the close returned, or the
    // result of the open that failed.
    int32_t DeleteInactiveEvents();

    // The rows that are being paged, in row order: *out receives a new array of as many records as
    // the result says. 0, with *out untouched, when there is none or the table can't be opened.
    int32_t GetActiveEvents(PagerFwdEvent*** out);

    // The first row of this key, texts compared exactly; or null.
    PagerFwdEvent* FindFwdEvent(int32_t almLogId, const char* almGroup, const char* pagerDescr);

    // Appends a row. Returns 0 = written, -1 when the table can't be opened or the row not be made
    // whole: no half row is written.
    int32_t NewPagerFwdEvent(const char* almGroup, int32_t almLogId, const char* pagerDescr,
                             const char* serverN, TRAP_SEVERITY severity, uint32_t retries,
                             ForwardState state);

    // Each of these four returns how many rows it hit, 0 being no error; -1 when the table can't be
    // opened or the change not be made whole.
    int32_t SetForwardState(const char* almGroup, int32_t almLogId, const char* pagerDescr,
                            ForwardState state);
    int32_t SetPagerForwarded(const char* almGroup, int32_t almLogId, const char* pagerDescr,
                              int32_t retries, ForwardState state);
    int32_t DeletePagerFwdEvent(const char* almGroup, int32_t almLogId, const char* pagerDescr);
    int32_t DeleteEventsByAlarmLogId(int32_t almLogId);

    // Frees the record and its texts. Null is allowed.
    static void FreePagerFwdEvent(PagerFwdEvent* event);

    // Folds the states of all rows of an alarm into one (FoldState) and writes it to the alarm log
    // as the alarm's "pagerstate". An alarm without rows is left as it is.
    void UpdateAlarmLog(int32_t almLogId);
};

// The state of an alarm with one page more, in row order: `folded` is that of the pages before it,
// 0 before the first.
//
// Being paged wins outright, for good. Otherwise the first page decides, but that off limit
// replaces done: 4, 3, 4 is 3, and 1, 3 stays 1.
ForwardState FoldState(ForwardState folded, ForwardState next);

#endif
