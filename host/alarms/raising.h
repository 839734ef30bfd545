// What becomes of alarms: raised, raised again, acknowledged, withdrawn since what they told of is
// over. By whichever way they come: the command line, HTTP, a spool.
//
// An alarm with a key is open from its raising to its withdrawal, acknowledged or not. Raised again
// meanwhile it is counted, and has the newer text, but nobody is paged anew.
//
// Requires   A write transaction, in each of these; so many alarms cost one.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_ALARMS_RAISING_H
#define PAGERFWD_HOST_ALARMS_RAISING_H

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "host/store/tables/alarm_keys.h"
#include "host/store/tables/alarm_log.h"

namespace host {

struct Raised {
    std::string number;
    bool is_new = true;
};

// Which alarm a key names that was withdrawn before: a new one, as where a sensor always says the
// same; or still that one, as where each key is used for one alarm only and its raising may come
// again late.
enum class KeyUse { kAgainAndAgain, kOnce };

Raised Raise(Connection& connection, const NewAlarm& alarm, std::time_t now,
             KeyUse use = KeyUse::kAgainAndAgain);

// One that goes to these pagers, whatever the routes say: as the tables have them. Returns its
// number.
std::string RaiseTo(Connection& connection, const NewAlarm& alarm,
                    const std::vector<std::string>& pagers, std::time_t now);

// Who does something to an alarm, when, and what he says to it. In UTF-8.
struct Doer {
    std::string name;
    std::time_t now = 0;
    std::string comment = {};
};

Acknowledged AcknowledgeBy(Connection& connection, int64_t number, const Doer& doer);

// The alarm that is open under the key: its number. None: there is none. Where the site says so,
// each pager that has had a page of it gets a last one.
std::optional<std::string> WithdrawBy(Connection& connection, const AlarmKey& key,
                                      const Doer& doer);
// One of this number, with a key or without.
enum class Withdrawn { kNow, kBefore, kUnknown };
Withdrawn WithdrawBy(Connection& connection, const std::string& number, const Doer& doer);

// Last pages that have been sent need no acknowledgement of anybody. In a transaction of its own,
// where there are any.
void EndLastWords(Connection& connection, std::time_t now);

}  // namespace host

#endif
