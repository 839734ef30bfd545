// The table "AlarmFwd_TMSetting": in which hours of the week a pager may be paged.
//
// The exported question NXIsInTimeModel, declared in <pagerfwd/pagerfwd.h>, is answered here too.
#ifndef PAGERFWD_TABLES_TIME_MODELS_H
#define PAGERFWD_TABLES_TIME_MODELS_H

#include "tables/db_table.h"

// The first character of each cell of a row: 168 hours, Monday 0:00 first and Sunday 23:00 last,
// then the description. The last byte is 0. Freed with plain delete.
//
// Hour h (0-23) of day d (0 Monday ... 6 Sunday) is cells[d * 24 + h]; '1' allows it, anything else
// bars it.
struct TimeModel {
    char cells[170];
};

class CDB_TimeModels : public CDB_Table {
 public:
    explicit CDB_TimeModels(const char* databaseName);

    // The first model of this description; null when there is none or the table can't be opened.
    // The caller deletes it.
    //
    // Cells are taken by their place in the row, since a row does not say how wide it is: the table
    // is defined with the 168 hours first and the description behind them.
    TimeModel* FindTimeModel(const char* description);

    // Whether the hour is allowed. day 0 Monday ... 6 Sunday, hour 0-23; neither is checked.
    static bool IsHourSet(const TimeModel* model, int day, int hour);
};

#endif
