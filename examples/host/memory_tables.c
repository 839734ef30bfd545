/*
 * Table access in memory: five tables, every cell a text. One mutex guards all rows; a second one
 * is the table lock, which the library holds across several calls. When memory ends, so does the
 * program: an example has nothing better to do.
 */
#include "memory_tables.h"

#include <pagerfwd/table_access.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#define MOST_COLUMNS (7 * 24 + 1)

struct table {
    const char* name;
    int column_count;
    const char* columns[12]; /* what the library doesn't find here counts as empty */
    char*** rows;
    int count;
};

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

static pthread_mutex_t rows_lock = PTHREAD_MUTEX_INITIALIZER;  /* guards rows and count */
static pthread_mutex_t table_lock = PTHREAD_MUTEX_INITIALIZER; /* DBAsciiAccessLock */

struct element { /* a column and its new cell */
    int column;
    char* cell;
    struct element* next;
};

static void* checked(void* memory) {
    if (memory == NULL) {
        abort();
    }
    return memory;
}

static char* copy_of(const char* text) {
    return strcpy(checked(malloc(strlen(text) + 1)), text);
}

static struct table* find_table(const char* name) {
    for (size_t i = 0; i < sizeof tables / sizeof *tables; ++i) {
        if (strcmp(tables[i].name, name) == 0) {
            return &tables[i];
        }
    }
    return NULL;
}

/* Column names are the same in capitals: the library writes "PagerState" and "Pagerstate". */
static int find_column(const struct table* table, const char* name) {
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

/*
 * Whether a condition selects a row: it does when it is the very text that the library writes for
 * this row. Nothing is taken apart, so that quotes in a name can't select anything else.
 */
static int selects(const char* condition, const struct table* table, int row) {
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

/* Requires: rows_lock held. */
static void append(struct table* table, char** cells) {
    const size_t size = ((size_t)table->count + 1) * sizeof *table->rows;
    table->rows = checked(realloc(table->rows, size));
    table->rows[table->count++] = cells;
}

/* Requires: rows_lock held. */
static void remove_row(struct table* table, int row) {
    for (int column = 0; column < table->column_count; ++column) {
        free(table->rows[row][column]);
    }
    free(table->rows[row]);
    --table->count;
    memmove(&table->rows[row], &table->rows[row + 1],
            (size_t)(table->count - row) * sizeof *table->rows);
}

/* Puts the cells of a list into a row. */
static void assign(char** cells, const struct element* list) {
    for (; list != NULL; list = list->next) {
        free(cells[list->column]);
        cells[list->column] = copy_of(list->cell);
    }
}

static void free_list(struct element* list) {
    while (list != NULL) {
        struct element* next = list->next;
        free(list->cell);
        free(list);
        list = next;
    }
}

static char** new_cells(const struct table* table) {
    char** cells = checked(calloc((size_t)table->column_count, sizeof *cells));
    for (int column = 0; column < table->column_count; ++column) {
        cells[column] = copy_of("");
    }
    return cells;
}

/* What host.c itself wants. */

void put_row(const char* name, const char* const* values) {
    struct table* table = find_table(name);
    char** cells = checked(calloc((size_t)table->column_count, sizeof *cells));
    for (int column = 0; column < table->column_count; ++column) {
        cells[column] = copy_of(values[column]);
    }
    pthread_mutex_lock(&rows_lock);
    append(table, cells);
    pthread_mutex_unlock(&rows_lock);
}

int32_t alarm_state(int32_t number) {
    const struct table* table = find_table("AlarmLog");
    int32_t state = 0;
    pthread_mutex_lock(&rows_lock);
    for (int row = 0; row < table->count; ++row) {
        if (atoi(cell_of(table, row, "alarmlogID")) == number) {
            state = atoi(cell_of(table, row, "pagerstate"));
        }
    }
    pthread_mutex_unlock(&rows_lock);
    return state;
}

/* What the library asks for. */

int32_t DBAsciiAccessOpen(const char* database, char mode, DBAsciiHandle* handle) {
    (void)database, (void)mode;
    *handle = tables; /* there is one database, and nothing of a thread's own to keep */
    return 0;
}

int32_t DBAsciiAccessTableOpen(DBAsciiHandle handle, const char* table) {
    (void)handle;
    return find_table(table) != NULL ? 0 : -1;
}

int32_t DBAsciiAccessClose(DBAsciiHandle handle) {
    (void)handle;
    return 0;
}

int32_t DBAsciiAccessCloseKeepStaticDllInfo(DBAsciiHandle handle) {
    return DBAsciiAccessClose(handle);
}

int32_t DBAsciiAccessLock(DBAsciiHandle handle, const char* table, int32_t first, int32_t second) {
    (void)handle, (void)table, (void)first, (void)second;
    return pthread_mutex_lock(&table_lock);
}

int32_t DBAsciiAccessUnlock(DBAsciiHandle handle, const char* table) {
    (void)handle, (void)table;
    return pthread_mutex_unlock(&table_lock);
}

/* The row set is one block: the rows, their cells, and the texts. Requires: rows_lock held. */
static DBAsciiRowSet copy_rows(const struct table* table, const int* chosen, int count) {
    const size_t columns = (size_t)table->column_count;
    size_t size = (size_t)count * (1 + columns) * sizeof(char*);
    for (int i = 0; i < count; ++i) {
        for (size_t column = 0; column < columns; ++column) {
            size += strlen(table->rows[chosen[i]][column]) + 1;
        }
    }
    char*** rows = checked(malloc(size));
    char** cell = (char**)(rows + count);
    char* text = (char*)(cell + (size_t)count * columns);
    for (int i = 0; i < count; ++i) {
        rows[i] = cell;
        for (size_t column = 0; column < columns; ++column) {
            *cell++ = text;
            text = stpcpy(text, table->rows[chosen[i]][column]) + 1;
        }
    }
    return rows;
}

int32_t DBAsciiAccessGetAllEntriesByCondition(DBAsciiHandle handle, const char* name,
                                              const char* column_name, DBAsciiRowSet* rows,
                                              int32_t reserved1, const char* value, char mode,
                                              const char* selection, char flag1, char flag2,
                                              int32_t reserved2) {
    (void)handle, (void)reserved1, (void)mode, (void)flag1, (void)flag2, (void)reserved2;
    const struct table* table = find_table(name);
    const int column = find_column(table, column_name);
    const int all = selection != NULL && strcmp(selection, "no") == 0;
    if (column < 0) {
        return -1;
    }
    pthread_mutex_lock(&rows_lock);
    int* chosen = checked(malloc(((size_t)table->count + 1) * sizeof *chosen));
    int count = 0;
    for (int row = 0; row < table->count; ++row) {
        if (all || strcmp(table->rows[row][column], value) == 0) {
            chosen[count++] = row;
        }
    }
    if (count > 0) {
        *rows = copy_rows(table, chosen, count);
    }
    pthread_mutex_unlock(&rows_lock);
    free(chosen);
    return count;
}

int32_t DBAsciiAccessFree(DBAsciiRowSet rows) {
    free(rows);
    return 0;
}

int32_t DBAsciiAccessGetElementColumn(DBAsciiHandle handle, const char* table, const char* column) {
    (void)handle;
    return find_column(find_table(table), column);
}

int32_t DBAsciiAccessAddElement(DBAsciiHandle handle, const char* table, const char* column,
                                char type, const void* value, DBAsciiElementList* list) {
    (void)handle;
    char number[12];
    const int place = find_column(find_table(table), column);
    if (place < 0) {
        return -1;
    }
    snprintf(number, sizeof number, "%d", type == 'i' ? (int)*(const int32_t*)value : 0);
    struct element* added = checked(malloc(sizeof *added));
    added->column = place;
    added->cell = copy_of(type == 'i' ? number : *(const char* const*)value);
    added->next = *list; /* the order of columns doesn't matter */
    *list = added;
    return 0;
}

int32_t DBAsciiAccessSet(DBAsciiHandle handle, const char* name, DBAsciiElementList list,
                         char flag1, char flag2, char flag3) {
    (void)handle, (void)flag1, (void)flag2, (void)flag3;
    struct table* table = find_table(name);
    char** cells = new_cells(table);
    assign(cells, list);
    free_list(list);
    pthread_mutex_lock(&rows_lock);
    append(table, cells);
    pthread_mutex_unlock(&rows_lock);
    return 0;
}

int32_t DBAsciiAccessSQLConditionSet(DBAsciiHandle handle, const char* name, const char* condition,
                                     DBAsciiElementList list, char flag, char writeNow) {
    (void)handle, (void)flag, (void)writeNow;
    struct table* table = find_table(name);
    int32_t hit = 0;
    pthread_mutex_lock(&rows_lock);
    for (int row = 0; row < table->count; ++row) {
        if (selects(condition, table, row)) {
            assign(table->rows[row], list);
            ++hit;
        }
    }
    pthread_mutex_unlock(&rows_lock);
    free_list(list);
    return hit;
}

int32_t DBAsciiAccessSQLConditionDelete(DBAsciiHandle handle, const char* name,
                                        const char* condition, char flag) {
    (void)handle, (void)flag;
    struct table* table = find_table(name);
    int32_t hit = 0;
    pthread_mutex_lock(&rows_lock);
    for (int row = table->count - 1; row >= 0; --row) {
        if (selects(condition, table, row)) {
            remove_row(table, row);
            ++hit;
        }
    }
    pthread_mutex_unlock(&rows_lock);
    return hit;
}

/* Rows are in their place already. */
int32_t DBAsciiAccessWrite(DBAsciiHandle handle, const char* table, int32_t* lockResult) {
    (void)handle, (void)lockResult;
    return find_table(table)->count;
}
