// What an alarm owes: one delivery for each pager of its routes, until the library has answered.
//
// The deliveries of an alarm and its state 2 are written in one transaction, before the library is
// called: a process that dies in between finds what is still open.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_DELIVERIES_H
#define PAGERFWD_HOST_STORE_TABLES_DELIVERIES_H

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/page_key.h"

namespace host {

// Texts as the tables have them.
struct Delivery {
    std::string alarm;  // its number
    int64_t place = 0;  // within the alarm, in the order of the routes
    std::string group;
    std::string pager;
    int64_t since = 0;              // the last row of Host_History when the alarm was taken up
    std::optional<int32_t> answer;  // none: open
    std::string line = {};          // that has it, or is to have it; empty: none yet
    int64_t tries = 0;              // by the lines that it was taken from
    bool unknown = false;           // it may have left: no line gets it until an operator says so
};

// The library's answers, and the host's own for a call that wasn't needed.
enum DeliveryAnswer : int32_t {
    kPagerUnknown = -1,
    kAlarmUnknown = 0,
    kQueued = 1,
    kWasAcknowledged = 2,  // before its turn came
    kWasQueued = 3,        // by a process that died before it could note the answer
    kGivenUp = 4,          // before its turn came, by the operator
};

// Takes up a new alarm: with no pager at all it is off limit at once. What was noted of an earlier
// alarm of this number is forgotten. Requires a write transaction; PlanDeliveries has one of its
// own.
void WriteDeliveries(Connection& connection, const Alarm& alarm,
                     const std::vector<std::string>& pagers);
void PlanDeliveries(Connection& connection, const Alarm& alarm,
                    const std::vector<std::string>& pagers);

std::vector<Delivery> DeliveriesOf(Connection& connection, const std::string& alarm);
// What is to go first at the head: severe before mild, old before new. unreadable: gets how many
// are too large to be read, if it is given. They hide no others.
std::vector<Delivery> OpenDeliveries(Connection& connection, size_t* unreadable = nullptr);
// Those that a line is to have, in the same order; what is too large to be read is left out.
std::vector<Delivery> OpenDeliveriesOf(Connection& connection, const std::string& line);

// Those whose alarm still needs paging, and which lines may have.
std::vector<Delivery> OwedDeliveries(Connection& connection);
// Of open ones without a line: those that may need none any more, since their alarm isn't there or
// needs no paging, or since a library has had the page. However many are open, at little cost.
std::set<std::pair<std::string, int64_t>> SettledDeliveries(Connection& connection);
// The places of an alarm's open ones.
std::vector<int64_t> OpenPlaces(Connection& connection, const std::string& alarm);

std::optional<Delivery> FindDelivery(Connection& connection, const PageKey& page);
bool IsOpen(const std::optional<Delivery>& delivery);

// Gives an open delivery without a line to this one, in a transaction of its own. False: it has one
// by now, or is no longer open.
bool GiveToLine(Connection& connection, const Delivery& delivery, const std::string& line);

// --- For those who change whose a page is (host/pages/page_owner.h), in their transactions.

void SetDeliveryLine(Connection& connection, const Delivery& delivery, const std::string& line);
void ForgetTries(Connection& connection, const Delivery& delivery);
// Of a page that has none, behind all others of its alarm.
void AddDelivery(Connection& connection, const PageKey& page);
void SetUnknown(Connection& connection, const Delivery& delivery, bool unknown);
// Without a line. tries: of the line that had it.
void OpenAgain(Connection& connection, const Delivery& delivery, int64_t tries);

// Notes the answer within a write transaction of the caller.
void CloseDelivery(Connection& connection, const std::string& alarm, int64_t place, int32_t answer);
void NoteAnswer(Connection& connection, const Delivery& delivery, int32_t answer);

// Whether the library has made this page since the alarm was taken up, however it ended.
bool WasEverQueued(Connection& connection, const Delivery& delivery);

// After the last answer: an alarm that went to nobody is given up.
void CloseAlarm(Connection& connection, const Alarm& alarm);

}  // namespace host

#endif
