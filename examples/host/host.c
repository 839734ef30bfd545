/*
 * A host of libPagerFwd.so, as small as one can be: it makes an alarm, has one page sent for it,
 * and ends when the alarm needs no more paging. table_access.c and text_helpers.c supply what the
 * library asks of it.
 */
#include <pagerfwd/pagerfwd.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "memory_tables.h"

static char database[] = "site"; /* handed back to DBAsciiAccessOpen; these tables need no name */

/* The site: a modem, hours in which a pager may be paged, and a pager. */
static void make_site(void) {
    const char* hours[7 * 24 + 1] = {NULL}; /* Monday 0:00 to Sunday 23:00, then the name */
    for (int hour = 0; hour < 7 * 24; ++hour) {
        hours[hour] = "1";
    }
    hours[7 * 24] = "always";
    put_row("AlarmFwd_COMProperties", (const char*[]){"COM 1", "9600", "None", "1", "AT&F", "ATZ",
                                                      "ATDT0,5550101", "TAP", "7", "Even", "1"});
    put_row("AlarmFwd_TMSetting", hours);
    put_row("AlarmFwd_PagerSetting",
            (const char*[]){"duty phone", "COM 1", "4", "5550111", "5", "45", "always"});
}

/* Raises an alarm that is being paged. This comes before AlarmFwdPager, always. */
static void raise_alarm(int32_t number, const char* server, const char* details) {
    char id[12];
    snprintf(id, sizeof id, "%d", (int)number);
    put_row("AlarmLog", (const char*[]){id, "2", "1", server, details});
}

/* Asks for one pager at a time: the answer to several is that of the last one found. */
static int32_t page(int32_t alarm, char* group, char* server, char* pager) {
    char* groups[] = {group};
    char* pagers[] = {pager};
    char unused[] = "";
    FwdSpecialInfoStr info = {database, &alarm, NULL, groups};
    return AlarmFwdPager(&info, server, unused, pagers, 1);
}

int main(void) {
    char group[] = "PLANT/017", server[] = "pumps", pager[] = "duty phone";
    const int32_t alarm = 978948000; /* seconds since 1970: the trace shows it as a time */
    FwdSpecialInfoStr info = {database, NULL, NULL, NULL};

    make_site();
    StartAlarmFwdPager(&info);
    raise_alarm(alarm, server, "Pump 3 stands still");
    printf("queued: %s\n", page(alarm, group, server, pager) == 1 ? "yes" : "no");
    while (alarm_state(alarm) == 2) {
        sleep(1); /* a worker of the library sends the page meanwhile */
    }
    printf("state of the alarm: %d\n", alarm_state(alarm));
    StopAlarmFwdPager();
    return alarm_state(alarm) == 4 ? EXIT_SUCCESS : EXIT_FAILURE;
}
