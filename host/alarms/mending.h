// Alarms that another program has put into the alarm log, made such that the library pages what was
// meant: it reads a severity as a number, and takes texts byte by byte.
#ifndef PAGERFWD_HOST_ALARMS_MENDING_H
#define PAGERFWD_HOST_ALARMS_MENDING_H

#include "host/store/tables/alarm_log.h"
#include "host/text/encoding.h"

namespace host {

// The severity as its number, also where it is a word; what says none is the one that the library
// makes of it: critical, or unknown beyond the last. The texts as MendEncoded has them.
Alarm Mended(Alarm alarm, Encoding encoding);

// The same, in the alarm log too. Within a transaction of its own, where there is something to
// mend. Throws StoreError.
Alarm MendAlarm(Connection& connection, const Alarm& alarm, Encoding encoding);

}  // namespace host

#endif
