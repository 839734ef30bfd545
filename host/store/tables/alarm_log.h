// AlarmLog: alarms as the host's commands and its service see them.
//
// An alarm is new while its pagerstate is empty or 0; then it has a ForwardState. Its own columns
// alarmack and acktime say that somebody has acknowledged it, and the database keeps its pagerstate
// at 1 from then on.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_ALARM_LOG_H
#define PAGERFWD_HOST_STORE_TABLES_ALARM_LOG_H

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
    std::string source = {};      // who says what is a key; in UTF-8, as the key
    std::string key = {};         // empty: it has none
    int64_t times_raised = 1;
    std::time_t raised_last = 0;
    std::time_t withdrawn = 0;  // 0: it wasn't
};

// Whether the library can name an alarm by this.
bool IsLibraryNumber(const std::string& number);

// Whether its pages ended since what it told of is over, and not since somebody has acknowledged.
bool EndedByWithdrawal(const Alarm& alarm);

// Whether nobody is to be paged for it any more.
bool NeedsNoPaging(const Alarm& alarm);

struct NewAlarm {
    std::string group;
    std::string severity;
    std::string server;
    std::string details;
    std::string source = {};
    std::string key = {};  // empty: none
};

// Adds an alarm, as new, and returns its number: the time of raising, in seconds since 1970, or the
// next number that is free, after the last one of 32 bits from 1 on. No other open alarm may have
// its source and key. Requires a write transaction; RaiseAlarm has one of its own.
int32_t AddAlarm(Connection& connection, const NewAlarm& alarm, std::time_t now);
int32_t RaiseAlarm(Connection& connection, const NewAlarm& alarm, std::time_t now);

enum class Acknowledged { kNow, kBefore, kUnknown };
// by: whom the alarm's note names then, unless it holds another text already.
// Requires a write transaction; AcknowledgeAlarm has one of its own.
Acknowledged NoteAcknowledged(Connection& connection, int64_t number, std::time_t now,
                              const std::string& by);
Acknowledged AcknowledgeAlarm(Connection& connection, int64_t number, std::time_t now,
                              const std::string& by = {});

// Those that are not acknowledged and still being paged, or new.
std::vector<Alarm> OpenAlarms(Connection& connection);
// Who follows alarms looks at so many. Older ones are history; of those, the pages tell.
constexpr int64_t kFollowedAlarms = 1000;
// The last so many, the oldest first.
std::vector<Alarm> LastAlarms(Connection& connection, int64_t count);
// unreadable: gets the rows that are too large to be read, if it is given. They hide no others.
// At most so many of the rows behind this one, in order.
std::vector<Alarm> AlarmsBehind(Connection& connection, int64_t row, int64_t count);
// Some of them, the newest first. Texts as the tables have them.
struct AlarmsWanted {
    int64_t before = INT64_MAX;  // only rows before this one
    int64_t count = 0;           // at most
    std::string state;           // as StateOf (page_words.h) calls it; empty: any
    std::string pager;           // that has had, or is owed, a page of it; empty: any
    std::time_t since = 0;       // raised then or later
    std::time_t until = 0;       // raised then or before; 0: whenever
};
std::vector<Alarm> FindAlarms(Connection& connection, const AlarmsWanted& wanted);
std::vector<Alarm> NewAlarms(Connection& connection, std::vector<int64_t>* unreadable = nullptr);
// None: there isn't exactly one of this number.
std::optional<Alarm> FindAlarm(Connection& connection, const std::string& number);

// --- Changes of one. Each requires a write transaction.

void SetPagerState(Connection& connection, int64_t row, const char* state);
// What its pages make of it, unless it is still owed one, or acknowledged.
void SetFoldedState(Connection& connection, const std::string& number, const std::string& state);
// Its severity and its texts.
void RewriteAlarm(Connection& connection, const Alarm& alarm);

// --- Alarms by what has become of them: their rows, or their numbers, in order.

std::string NumberOf(Connection& connection, int64_t row);

// Those that are not acknowledged and still being paged, or new; off_limit: those that were given
// up, too.
std::vector<int64_t> OldAlarms(Connection& connection, std::time_t raised_before, bool off_limit);
// Owed a page, though they count as over.
std::vector<int64_t> AlarmsEndedTooEarly(Connection& connection);
// All pages have ended, at least one in this state, though they count as being paged.
std::vector<int64_t> FinishedAlarms(Connection& connection, const char* state);

// Of those that nobody has acknowledged.
std::vector<std::string> AlarmsNotTakenUp(Connection& connection);
std::vector<std::string> AlarmsPagedWithoutPages(Connection& connection);
std::vector<std::string> AlarmsOverWithPages(Connection& connection);

}  // namespace host

#endif
