// What became of an alarm, from its raising to the end of its last page: put together from the
// alarm log, the deliveries, the history of its pages and the record of every sending.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_ALARM_STORY_H
#define PAGERFWD_HOST_PAGES_ALARM_STORY_H

#include <ctime>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"

namespace host {

struct StoryLine {
    std::time_t at = 0;
    std::string pager;  // as the tables have it; empty: of the alarm itself
    std::string what;   // in words: "sent", "not sent"
    std::string more;   // why, or how long; may be empty
};

// In order of time.
std::vector<StoryLine> TellAlarm(Connection& connection, const Alarm& alarm);

}  // namespace host

#endif
