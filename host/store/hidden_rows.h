// Events that are deleted, but not for good.
//
// The library replaces the row of a pending page by deleting it and inserting it anew, in two
// openings of the database. A process that is killed between the two must find the page again. So
// an event in state 2 that is deleted by its full key only vanishes from sight, marked with the
// number of the process that deleted it:
//   - an event inserted under the same key takes its place;
//   - a delete of all events of its alarm is final for it too;
//   - when the process has ended without either, the next opening of the table, by whomever, brings
//     the event back at its old place.
// A page whose alarm is acknowledged is owed to nobody: its event is deleted for good. The library
// deletes it so, and inserts none, when it finds it at its start.
//
// Each of these writes the history of what it changes (event_history.h).
//
// Requires   A write transaction on the connection, in each of these.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_HIDDEN_ROWS_H
#define PAGERFWD_HOST_STORE_HIDDEN_ROWS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/conditions.h"
#include "host/store/connection.h"
#include "host/store/owner_lock.h"

namespace host {

// What a condition on the events table needs in addition.
inline constexpr const char* kInSight = "hidden_by IS NULL";

// Hides the events in state 2 that the key selects, and deletes those in other states or of an
// acknowledged alarm. Returns how many events that were.
int32_t DeleteEvent(Connection& connection, const std::vector<Term>& key, int32_t owner);

// Deletes events in sight for good. Returns how many.
int32_t DeleteInSight(Connection& connection, const std::vector<Term>& terms);

// Deletes the alarm's events, those out of sight too. Returns how many were in sight.
int32_t DeleteEventsOfAlarm(Connection& connection, const std::vector<Term>& alarm);

// Deletes what is hidden under the key, since an event is about to be inserted there.
void DropHidden(Connection& connection, const std::vector<Term>& key);

// Whether there is anything to bring back: cheap, and asked outside a transaction.
bool HasOrphans(Connection& connection, OwnerLock& owners);

// On a site of several hosts the number of a process says nothing on another host. There a line
// brings its own back when it starts, before it hides any, and no other process does.
void BringBackOf(Connection& connection, const std::string& line);

// Brings back what processes have hidden that have ended since.
void BringBackOrphans(Connection& connection, OwnerLock& owners);

}  // namespace host

#endif
