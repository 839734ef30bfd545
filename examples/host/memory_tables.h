/* The tables of host.c, in memory. Any thread may call these at any time. */
#ifndef MEMORY_TABLES_H
#define MEMORY_TABLES_H

#include <stdint.h>

/* Appends a row: as many cells as the table has columns. The cells are copied. */
void put_row(const char* table, const char* const* cells);

/* The "pagerstate" of an alarm: 2 as long as pages are owed. 0 when there is no such alarm. */
int32_t alarm_state(int32_t number);

#endif
