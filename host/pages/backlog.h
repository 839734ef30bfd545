// What an engine finds when it starts.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_BACKLOG_H
#define PAGERFWD_HOST_PAGES_BACKLOG_H

#include <cstdint>
#include <ctime>

#include "host/store/connection.h"

namespace host {

// Alarms that are owed a page, though their state says that all pages have ended: the engine would
// drop those pages. It happens where a process dies between the end of an alarm's one page and the
// queueing of the next, or where the two happen at once. Returns how many they were. To be called
// before the engine is started, and after a page was queued.
int32_t MendAlarmStates(Connection& connection);

// Alarms that count as being paged, though all their pages have ended, and none is owed: it happens
// where the store refuses the last word of a page, or keeps it until another page has had its own,
// or until that one was dropped.
// Their state becomes what the library makes of such pages. Returns how many they were. At any
// time.
int32_t EndFinishedAlarms(Connection& connection);

// Pending pages whose group or pager has control characters, as an older make or another program
// wrote them: the library sees them without, and would not find their rows again. To be called
// before the engine is started.
void MendTexts(Connection& connection);

// Gives up the pages of alarms that were raised before: those that are pending, those still to be
// queued, and those of alarms that were never taken up. Returns how many pages of the first two
// kinds that were. To be called before the engine is started, behind MendAlarmStates.
int32_t DiscardPages(Connection& connection, std::time_t raised_before);

}  // namespace host

#endif
