/*
 * The functions of libPagerFwd.so.
 *
 * A host loads the library, after making the functions of table_access.h and text_helpers.h
 * visible to the dynamic linker, and calls these. Plain C linkage and the platform's C calling
 * convention throughout.
 *
 * Threads    Any thread may call AlarmFwdPager; several may at once. StartAlarmFwdPager,
 *            StopAlarmFwdPager, TestPager and the very first call of AlarmFwdPager create or
 *            destroy the engine and must not overlap with any other call.
 * Ownership  The library only reads its arguments and keeps no pointer into them.
 * Errors     Reported by the results below and, in words, in the trace: the file "pageprot.txt"
 *            in the working directory, written when the environment variable NX_PAGEPROT exists.
 *            Memory that runs out makes a page fail, or a call answer 0, 5 or -1. Only where the
 *            engine can't come up for want of memory, or of the descriptors of its worker,
 *            std::bad_alloc passes on to the caller; nothing is up then. Nor is it as long as the
 *            worker of an engine that was stopped is stuck: pages are taken then, and test pages
 *            answered with 5. Either way the next call tries again.
 */
#ifndef PAGERFWD_PAGERFWD_H
#define PAGERFWD_PAGERFWD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What an alarm-forwarding call is about. Four pointers, in this order. */
typedef struct FwdSpecialInfoStr {
    char* dbName;        /* the database that holds the tables; NUL-terminated */
    int32_t* alarmLogId; /* the alarm's row in the table "AlarmLog"; read by AlarmFwdPager only */
    void* reserved;      /* not read */
    char** alarmGroups;  /* one alarm-group text per pager of the call, same order; may be null
                            when the call names no pager */
} FwdSpecialInfoStr;

/*
 * Queues one page to each of pagerCount pagers for the alarm *info->alarmLogId, and returns without
 * waiting for any of them. Brings the engine up if it is not. A worker that the system had no
 * thread for is asked for again by every call.
 *
 * A duty of the caller: the alarm's "pagerstate" is set to 2 (being paged), and committed, before
 * this call. Otherwise the next start of the engine takes the alarm for acknowledged and drops it.
 *
 * serverName   the server that raised the alarm; part of the page's text
 * extra        not read
 * pagerNames   descriptions of the pagers ("description" in the table "AlarmFwd_PagerSetting")
 *
 * Returns 1 when the last pager that was found has been queued, 0 when it could not be (the alarm
 * has no row), -1 when pagerCount is 0 or no pager was found. To learn what became of each pager,
 * call with one pager at a time.
 */
int32_t AlarmFwdPager(FwdSpecialInfoStr* info, char* serverName, char* extra, char** pagerNames,
                      int32_t pagerCount);

/*
 * Brings the engine up, if it is not: probes the serial ports, takes up the pages that were pending
 * when the engine last went down, and starts sending those that are due. Reads info->dbName only.
 * On an engine that is up it only asks again for a worker that the system had no thread for.
 */
void StartAlarmFwdPager(FwdSpecialInfoStr* info);

/*
 * Takes the engine down; pending pages stay in the tables for the next start. A page on the line is
 * finished first, which can take minutes; without one, a worker that is held up by a table or the
 * trace is given a minute. Nothing happens when the engine is not up.
 */
void StopAlarmFwdPager(void);

/*
 * Sends one page now, whatever the pager's hours, and returns when it is over. All texts come from
 * the arguments, the line from the tables of info->dbName. Uses the engine if it is up; otherwise
 * one for the length of the call, which also starts sending pages that are pending.
 *
 * pagerType    decimal text: 0 signal, 1 numeric, 2 alphanumeric, 3 NTT, 4 first SMS service,
 *              5 second SMS service
 * comPort      "COM 1" to "COM 9" (with one blank), or empty for any free port with a modem
 * pagerNumber  the number; "PREFIX@NUMBER" dials PREFIX behind the line's dial command and
 *              transfers the page to NUMBER
 *
 * Returns 0 sent, 5 no line (port unknown, taken or refused), 6 dial failed, 7 transfer failed,
 * 8 modem did not initialise.
 */
int32_t TestPager(FwdSpecialInfoStr* info, char* description, char* pagerNumber, char* comPort,
                  char* pagerType, char* timeModel);

/*
 * Whether a page may leave in the current hour (local time) by the named time model.
 * Returns 0 allowed, 1 barred, -1 an argument is null or there is no such model.
 */
int32_t NXIsInTimeModel(const char* databaseName, const char* timeModelDescription);

#ifdef __cplusplus
}
#endif

#endif
