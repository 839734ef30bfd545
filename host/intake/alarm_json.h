// Alarms as JSON: what `alarm raise --json` and the HTTP API take.
//
//   {"text": "Disk full", "group": "ops/1", "severity": "major", "server": "web1",
//    "source": "icinga", "key": "web1!disk"}
//
// or a list of such; only the text has to be there. What is to be withdrawn is told by its source
// and key, or by "alarm", its number.
//
// Errors     BadField.
#ifndef PAGERFWD_HOST_INTAKE_ALARM_JSON_H
#define PAGERFWD_HOST_INTAKE_ALARM_JSON_H

#include <string>
#include <string_view>
#include <vector>

#include "host/alarms/incoming.h"
#include "host/alarms/raising.h"
#include "host/text/json.h"

namespace host {

// server: of those that name none.
std::vector<IncomingAlarm> AlarmsFromJson(std::string_view text, const std::string& server);
// The other way round, as a spool keeps them.
Json ToJson(const IncomingAlarm& alarm);

// All of them, or none.
std::vector<NewAlarm> CheckedAlarms(const std::vector<IncomingAlarm>& alarms, Encoding encoding);

struct ToWithdraw {
    std::string number;  // empty: by the key
    AlarmKey key;
};
std::vector<ToWithdraw> WithdrawalsFromJson(std::string_view text);

// {"alarm": 978948000, "new": true}
Json ToJson(const Raised& raised);

// A number as a JSON number, where it is one: other programs may have put any text there.
Json NumberOrText(const std::string& number);

}  // namespace host

#endif
