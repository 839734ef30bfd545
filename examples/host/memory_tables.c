/* Five tables in memory: their rows, and which of them a condition selects. */
#include "memory_tables.h"

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

static struct table tables[] = {
    {"AlarmFwd_COMProperties",
     11,
     {"Description", "Baud", "Flow", "Select", "Init", "Reset", "SMS1Dial", "SMS1Protocol",
      "SMS1Data", "SMS1Parity", "SMS1Stop"},
     NULL,
     0},
    {"AlarmFwd_PagerSetting",
     7,
     {"description", "comport", "pgtype", "pgnumber", "numretries", "retrydelay", "timemodel"},
     NULL,
     0},
    /* The hours are taken by their place: only the column behind them has a name. */
    {"AlarmFwd_TMSetting", MOST_COLUMNS, {NULL}, NULL, 0},
    {"AlarmFwd_PagerEvents",
     7,
     {"AlmLogID", "AlmGroup", "PagerDescr", "PagerState", "PagerRetries", "Severity", "ServerN"},
     NULL,
     0},
    {"AlarmLog", 5, {"alarmlogID", "pagerstate", "severity", "server", "details"}, NULL, 0},
};

static pthread_mutex_t rows_lock = PTHREAD_MUTEX_INITIALIZER; /* guards rows and count */

void* checked(void* memory) {
    if (memory == NULL) {
        abort();
    }
    return memory;
}

char* copy_of(const char* text) {
    return strcpy(checked(malloc(strlen(text) + 1)), text);
}

struct table* find_table(const char* name) {
    for (size_t i = 0; i < sizeof tables / sizeof *tables; ++i) {
        if (strcmp(tables[i].name, name) == 0) {
            return &tables[i];
        }
    }
    return NULL;
}

int find_column(const struct table* table, const char* name) {
    if (table->columns[0] == NULL) {
        return strcasecmp(name, "description") == 0 ? MOST_COLUMNS - 1 : -1;
    }
    for (int i = 0; i < table->column_count; ++i) {
        if (strcasecmp(table->columns[i], name) == 0) {
            return i;
        }
    }
    return -1;
}

static const char* cell_of(const struct table* table, int row, const char* column) {
    return table->rows[row][find_column(table, column)];
}

int selects(const char* condition, const struct table* table, int row) {
    if (strcmp(table->name, "AlarmLog") == 0) {
        char text[64];
        snprintf(text, sizeof text, "WHERE alarmlogID = %s", cell_of(table, row, "alarmlogID"));
        return strcmp(condition, text) == 0;
    }
    if (strcmp(condition, "WHERE AlarmFwd_PagerEvents.PagerState <> 2") == 0) {
        return strcmp(cell_of(table, row, "PagerState"), "2") != 0;
    }
    const char* alarm = cell_of(table, row, "AlmLogID");
    const char* group = cell_of(table, row, "AlmGroup");
    const char* pager = cell_of(table, row, "PagerDescr");
    const size_t size = strlen(alarm) + strlen(group) + strlen(pager) + 80;
    char* text = checked(malloc(size));
    snprintf(text, size, "WHERE AlarmFwd_PagerEvents.AlmLogID  = %s", alarm);
    int selected = strcmp(condition, text) == 0;
    snprintf(text, size, "WHERE AlmGroup = \"%s\" AND AlmLogID = %s AND PagerDescr = \"%s\"", group,
             alarm, pager);
    selected = selected || strcmp(condition, text) == 0;
    free(text);
    return selected;
}

void append_row(struct table* table, char** cells) {
    const size_t size = ((size_t)table->count + 1) * sizeof *table->rows;
    table->rows = checked(realloc(table->rows, size));
    table->rows[table->count++] = cells;
}

void remove_row(struct table* table, int row) {
    for (int column = 0; column < table->column_count; ++column) {
        free(table->rows[row][column]);
    }
    free(table->rows[row]);
    --table->count;
    memmove(&table->rows[row], &table->rows[row + 1],
            (size_t)(table->count - row) * sizeof *table->rows);
}

void lock_rows(void) {
    pthread_mutex_lock(&rows_lock);
}

void unlock_rows(void) {
    pthread_mutex_unlock(&rows_lock);
}

void put_row(const char* name, const char* const* values) {
    struct table* table = find_table(name);
    char** cells = checked(calloc((size_t)table->column_count, sizeof *cells));
    for (int column = 0; column < table->column_count; ++column) {
        cells[column] = copy_of(values[column]);
    }
    lock_rows();
    append_row(table, cells);
    unlock_rows();
}

int32_t alarm_state(int32_t number) {
    const struct table* table = find_table("AlarmLog");
    int32_t state = 0;
    lock_rows();
    for (int row = 0; row < table->count; ++row) {
        if (atoi(cell_of(table, row, "alarmlogID")) == number) {
            state = atoi(cell_of(table, row, "pagerstate"));
        }
    }
    unlock_rows();
    return state;
}
