/*
 * Tables in memory, every cell a text. When memory ends, so does the program: an example has
 * nothing better to do.
 */
#ifndef MEMORY_TABLES_H
#define MEMORY_TABLES_H

#include <stdint.h>

/* For host.c. Any thread may call these at any time. */

/* Appends a row: as many cells as the table has columns. The cells are copied. */
void put_row(const char* table, const char* const* cells);

/* The "pagerstate" of an alarm: 2 as long as pages are owed. 0 when there is no such alarm. */
int32_t alarm_state(int32_t number);

/* For table_access.c. */

#define MOST_COLUMNS (7 * 24 + 1)

struct table {
    const char* name;
    int column_count;
    const char* columns[12]; /* what the library doesn't find here counts as empty */
    char*** rows;
    int count;
};

/* Null when there is none. */
struct table* find_table(const char* name);

/*
 * -1 when the table has no such column. Names are the same in capitals: the library writes
 * "PagerState" and "Pagerstate".
 */
int find_column(const struct table* table, const char* name);

/* Around every look at rows and every change of them, those below too. */
void lock_rows(void);
void unlock_rows(void);

/*
 * Whether a condition selects a row: it does when it is the very text that the library writes for
 * this row. Nothing is taken apart, so that quotes in a name can't select anything else.
 */
int selects(const char* condition, const struct table* table, int row);

void append_row(struct table* table, char** cells); /* takes the cells over */
void remove_row(struct table* table, int row);

void* checked(void* memory); /* ends the program when there is none */
char* copy_of(const char* text);

#endif
