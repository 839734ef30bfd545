/*
 * Table access: what a host must supply for libPagerFwd.so to reach the tables of its database.
 * The host defines these functions and exports them to the dynamic linker (link it with -rdynamic
 * or a dynamic list); they are resolved when the library is loaded.
 *
 * A table is a list of rows; every cell is handed out as text, integers in decimal. The library
 * opens the database for each operation and closes it again.
 *
 * Threads    Called by the host's own threads that are inside a function of pagerfwd.h, and by the
 *            library's one worker thread: concurrent calls, each thread with a handle of its own.
 * Ownership  A handle belongs to the library from a successful DBAsciiAccessOpen to the close. A
 *            row set belongs to the library until DBAsciiAccessFree. An element list belongs to
 *            the host: the call that takes it (Set, SQLConditionSet) consumes and frees it, also
 *            when it fails. All other pointers are borrowed for the call.
 * Errors     No function may throw or end the thread. A failure is a result, as said below.
 */
#ifndef PAGERFWD_TABLE_ACCESS_H
#define PAGERFWD_TABLE_ACCESS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void* DBAsciiHandle;      /* an open database */
typedef void* DBAsciiElementList; /* column/value pairs for a write; null is the empty list */
typedef char*** DBAsciiRowSet;    /* rows[row][column index], each cell a NUL-terminated text */

/* Opens a database. mode is 'n'. Returns 0 = opened, and the handle in *handle. */
int32_t DBAsciiAccessOpen(const char* database, char mode, DBAsciiHandle* handle);

/* Makes a table ready for use through the handle. Returns 0 = opened. */
int32_t DBAsciiAccessTableOpen(DBAsciiHandle handle, const char* table);

/* Ends the handle. Returns 0 = closed. */
int32_t DBAsciiAccessClose(DBAsciiHandle handle);

/* The same; a host with static state of its own keeps it here. */
int32_t DBAsciiAccessCloseKeepStaticDllInfo(DBAsciiHandle handle);

/*
 * Takes the lock of a table against every other writer of it, in any process, and may be called
 * before the table is opened. first and second are 400 and 300, lock parameters that a host may
 * ignore. Returns 0 when this call took the lock: then, and only then, DBAsciiAccessUnlock follows.
 */
int32_t DBAsciiAccessLock(DBAsciiHandle handle, const char* table, int32_t first, int32_t second);
int32_t DBAsciiAccessUnlock(DBAsciiHandle handle, const char* table);

/*
 * Reads rows, in order of insertion (a replaced row stands at the end). Two forms occur:
 *   one key:    (handle, table, column, &rows, 0, value, 'r', NULL, 'n', 0, 0)
 *               the rows whose column equals value
 *   every row:  (handle, table, column, &rows, 0, "", 'r', "no", 'n', 'n', 0)
 * Returns how many rows *rows holds; 0 or less: none. *rows is null before the call. A row set that
 * is stored there goes back through DBAsciiAccessFree, also one without a row; with no row it may
 * as well be left null, and then nothing is freed.
 */
int32_t DBAsciiAccessGetAllEntriesByCondition(DBAsciiHandle handle, const char* table,
                                              const char* column, DBAsciiRowSet* rows,
                                              int32_t reserved1, const char* value, char mode,
                                              const char* selection, char flag1, char flag2,
                                              int32_t reserved2);

/* The index of a column within a row, or -1 when the table has no such column. */
int32_t DBAsciiAccessGetElementColumn(DBAsciiHandle handle, const char* table, const char* column);

/* Frees a row set. */
int32_t DBAsciiAccessFree(DBAsciiRowSet rows);

/*
 * Appends a column and its value to *list, making the list when *list is null.
 * type 'i': value points to an int32_t. type 't': value points to a const char*. The value is
 * copied. Returns 0 = appended.
 */
int32_t DBAsciiAccessAddElement(DBAsciiHandle handle, const char* table, const char* column,
                                char type, const void* value, DBAsciiElementList* list);

/*
 * Appends a row made of the list. The three flags are 'y'. Returns 0 = written. A list of which an
 * element could not be added doesn't come here, so that no half row is written.
 */
int32_t DBAsciiAccessSet(DBAsciiHandle handle, const char* table, DBAsciiElementList list,
                         char flag1, char flag2, char flag3);

/*
 * Sets the columns of the list in every row that a condition selects, and returns how many rows
 * that were, or less than 0. writeNow 'y' writes at once; with 'n' DBAsciiAccessWrite follows when
 * the count is above 0. These are the conditions that occur, texts between double quotes as they
 * stand (nothing in them is escaped):
 *   WHERE alarmlogID = <integer>
 *   WHERE AlmGroup = "<text>" AND AlmLogID = <integer> AND PagerDescr = "<text>"
 * A list of which an element could not be added comes only to be freed: with 'n', a condition with
 * alarm 0 and empty texts, and no DBAsciiAccessWrite.
 */
int32_t DBAsciiAccessSQLConditionSet(DBAsciiHandle handle, const char* table, const char* condition,
                                     DBAsciiElementList list, char flag, char writeNow);

/*
 * Deletes the rows that a condition selects and returns how many, or less than 0. flag is 'y'.
 * Besides the conditions above:
 *   WHERE AlarmFwd_PagerEvents.PagerState <> 2
 *   WHERE AlarmFwd_PagerEvents.AlmLogID  = <integer>       (two blanks before the sign)
 */
int32_t DBAsciiAccessSQLConditionDelete(DBAsciiHandle handle, const char* table,
                                        const char* condition, char flag);

/*
 * Writes a table back after DBAsciiAccessSQLConditionSet with 'n'. *lockResult is what
 * DBAsciiAccessLock returned; a host that gives the lock up while writing sets it to non-zero.
 * Returns how many rows were written, or less than 0.
 */
int32_t DBAsciiAccessWrite(DBAsciiHandle handle, const char* table, int32_t* lockResult);

#ifdef __cplusplus
}
#endif

#endif
