/*
 * Table access for the library, on the tables in memory. One mutex guards the rows within a call;
 * the table lock is another one, since the library holds it across several calls.
 */
#include <pagerfwd/table_access.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "memory_tables.h"

static pthread_mutex_t table_lock = PTHREAD_MUTEX_INITIALIZER;

struct element { /* a column and its new cell */
    int column;
    char* cell;
    struct element* next;
};

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

int32_t DBAsciiAccessOpen(const char* database, char mode, DBAsciiHandle* handle) {
    (void)database, (void)mode;
    *handle = handle; /* there is one database, and nothing of a thread's own to keep */
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

/* The row set is one block: the rows, their cells, and the texts. Requires: rows locked. */
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
    lock_rows();
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
    unlock_rows();
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
    lock_rows();
    append_row(table, cells);
    unlock_rows();
    return 0;
}

int32_t DBAsciiAccessSQLConditionSet(DBAsciiHandle handle, const char* name, const char* condition,
                                     DBAsciiElementList list, char flag, char writeNow) {
    (void)handle, (void)flag, (void)writeNow;
    struct table* table = find_table(name);
    int32_t hit = 0;
    lock_rows();
    for (int row = 0; row < table->count; ++row) {
        if (selects(condition, table, row)) {
            assign(table->rows[row], list);
            ++hit;
        }
    }
    unlock_rows();
    free_list(list);
    return hit;
}

int32_t DBAsciiAccessSQLConditionDelete(DBAsciiHandle handle, const char* name,
                                        const char* condition, char flag) {
    (void)handle, (void)flag;
    struct table* table = find_table(name);
    int32_t hit = 0;
    lock_rows();
    for (int row = table->count - 1; row >= 0; --row) {
        if (selects(condition, table, row)) {
            remove_row(table, row);
            ++hit;
        }
    }
    unlock_rows();
    return hit;
}

/* Rows are in their place already. */
int32_t DBAsciiAccessWrite(DBAsciiHandle handle, const char* table, int32_t* lockResult) {
    (void)handle, (void)lockResult;
    return find_table(table)->count;
}
