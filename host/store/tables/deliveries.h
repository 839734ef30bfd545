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
    int64_t severity = 9;           // its alarm's, when it was taken up; 9: it had none
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
// What is to go first at the head: severe before mild, old before new. What is too large to be read
// is left out.
std::vector<Delivery> OpenDeliveries(Connection& connection);
// Those that a line is to have, in the same order.
std::vector<Delivery> OpenDeliveriesOf(Connection& connection, const std::string& line);

// Those whose alarm still needs paging, and which lines may have.
std::vector<Delivery> OwedDeliveries(Connection& connection);
// The places of an alarm's open ones.
std::vector<int64_t> OpenPlaces(Connection& connection, const std::string& alarm);

// --- Those that wait for a line: open ones that none has yet, but for those of unknown outcome. Of
// however many, each of these reads only what it returns.

// Whose they are; and the query for it, whose column is "pager".
std::vector<std::string> PagersThatWait(Connection& connection);
std::string WaitingPagers();
// The first so many of a pager's.
std::vector<Delivery> FirstWaiting(Connection& connection, const std::string& pager, int64_t count);
// Severe before mild, old before new.
bool GoesBefore(const Delivery& one, const Delivery& other);

using DeliveryKey = std::pair<std::string, int64_t>;  // the alarm, and the place within it
struct LookedAt {
    DeliveryKey delivery;
    bool settled;  // may need no line any more: its alarm isn't there or needs no paging, or a
                   // library has had the page
};
// The next so many behind this one, in the order of their keys.
std::vector<LookedAt> LookWhetherSettled(Connection& connection, const DeliveryKey& behind,
                                         int64_t count);

// For statements: the severity of an alarm, whose number this expression is.
std::string SeverityOf(const std::string& alarm);

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
