// How a page, or an alarm, stands, in words.
#ifndef PAGERFWD_HOST_PAGES_PAGE_WORDS_H
#define PAGERFWD_HOST_PAGES_PAGE_WORDS_H

#include <string>

#include "host/pages/history.h"
#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"

namespace host {

// One word or two, of a state: "pending", "undelivered".
const char* StateOf(const PageStory& page);

// "1 of 6": counted tries, of those that it may have.
std::string TriesOf(const PageStory& page);

// Of an alarm, as the alarm log has it.
std::string StateOf(const Alarm& alarm);

// The same, but for off limit: "no route", or the states of its pages that are off limit, each
// once: "undelivered, unacknowledged". Throws StoreError.
std::string OutcomeOf(Connection& connection, const Alarm& alarm);

// Whether no page of it was ever owed, since no route led to a pager. Throws StoreError.
bool WentToNobody(Connection& connection, const Alarm& alarm);

// How a page ended: "given up: its tries are used up, and none got through".
const char* EndOf(const PageStory& page);

}  // namespace host

#endif
