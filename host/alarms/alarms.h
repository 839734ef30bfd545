// Alarms in the alarm log, as the host's commands and its service see them.
//
// An alarm is new while its pagerstate is empty or 0; then it has a ForwardState. Its own columns
// alarmack and acktime say that somebody has acknowledged it, and the database keeps its pagerstate
// at 1 from then on.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_ALARMS_ALARMS_H
#define PAGERFWD_HOST_ALARMS_ALARMS_H

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

// Texts as the tables have them.
struct Alarm {
    int64_t row = 0;
    std::string number;    // alarmlogID
    std::string group;     // alarm_group; the alarm's name where it has none
    std::string severity;  // 1 critical ... 5 unknown
    std::string server;
    std::string details;
    std::string state;  // pagerstate
    std::time_t raised = 0;
    bool acknowledged = false;
    std::time_t acknowledged_at = 0;
    std::string acknowledged_by;  // empty: the alarm log doesn't say
};

// Whether the library can name an alarm by this.
bool IsLibraryNumber(const std::string& number);

// Whether nobody is to be paged for it any more.
bool NeedsNoPaging(const Alarm& alarm);

struct NewAlarm {
    std::string group;
    std::string severity;
    std::string server;
    std::string details;
};

// Adds an alarm, as new, and returns its number: the time of raising, in seconds since 1970, or the
// next number that is free, after the last one of 32 bits from 1 on. Within a transaction of its
// own.
int32_t RaiseAlarm(Connection& connection, const NewAlarm& alarm, std::time_t now);

enum class Acknowledged { kNow, kBefore, kUnknown };
// by: whom the alarm's note names then, unless it holds another text already.
Acknowledged AcknowledgeAlarm(Connection& connection, int64_t number, std::time_t now,
                              const std::string& by = {});

// Those that are not acknowledged and still being paged, or new.
std::vector<Alarm> OpenAlarms(Connection& connection);
// Who follows alarms looks at so many. Older ones are history; of those, the pages tell.
constexpr int64_t kFollowedAlarms = 1000;
// The last so many, the oldest first.
std::vector<Alarm> LastAlarms(Connection& connection, int64_t count);
// unreadable: gets the rows that are too large to be read, if it is given. They hide no others.
std::vector<Alarm> NewAlarms(Connection& connection, std::vector<int64_t>* unreadable = nullptr);
// None: there isn't exactly one of this number.
std::optional<Alarm> FindAlarm(Connection& connection, const std::string& number);

void SetPagerState(Connection& connection, int64_t row, const char* state);

}  // namespace host

#endif
