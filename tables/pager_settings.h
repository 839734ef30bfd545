// The table "AlarmFwd_PagerSetting": whose each pager is, how it is reached and how often.
#ifndef PAGERFWD_TABLES_PAGER_SETTINGS_H
#define PAGERFWD_TABLES_PAGER_SETTINGS_H

#include <cstdint>

#include "tables/db_table.h"

// One pager. A field whose column is missing is null or 0.
struct Pager {
    char* description;
    char* owner;
    char* comPort;      // description of its port in the table of ports; empty: any
    int32_t pagerType;  // 0 signal, 1 numeric, 2 alphanumeric, 3 NTT, 4 and 5 the SMS services
    char* pagerNumber;
    char* timeModel;     // description of its hours in the table of time models
    int32_t numRetries;  // attempts after the first
    int32_t retryDelay;  // minutes between attempts
};

class CDB_PagerSettings : public CDB_Table {
 public:
    explicit CDB_PagerSettings(const char* databaseName);

    // The pager of this description, or null unless exactly one row has it. Leaves two lines in the
    // paging trace: what is looked for, and how many rows there are.
    Pager* GetPager(const char* description);

    // Every pager, in row order: *out receives a new array of as many records as the result says.
    // -1, with *out untouched, when the table can't be opened or has no row.
    int32_t GetAllPagers(Pager*** out);

    // Frees the record and its texts. Null is allowed.
    static void FreePager(Pager* pager);
};

#endif
