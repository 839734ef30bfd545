// What is written of every change of an event: one row of Host_History for each, in the transaction
// of the change, by whoever makes it.
//
// Requires   A write transaction on the connection, in each of these.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_EVENT_HISTORY_H
#define PAGERFWD_HOST_STORE_EVENT_HISTORY_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/conditions.h"
#include "host/store/connection.h"

namespace host {

// A row of the history, its texts as the tables have them. Its time is now.
struct HistoryRow {
    const char* change;  // as in schema.h
    std::string_view alarm = {};
    std::string_view group = {};
    std::string_view pager = {};
    std::string_view state = {};
    std::string_view tries = {};
    std::string_view line = {};
    std::string_view note = {};  // why, and who
};
void WriteHistory(Connection& connection, const HistoryRow& row);

// A change of events; what is null stays as it is.
struct EventChange {
    const char* change;  // as in schema.h
    const std::string* state = nullptr;
    const std::string* tries = nullptr;
    std::string_view note = {};
};

// Writes it of all events that the condition selects, " WHERE ...", whose parameters are those of
// the terms. To be called before the change: behind it, the condition may select others.
void WriteHistory(Connection& connection, const EventChange& change, const std::string& condition,
                  const std::vector<Term>& terms);

// Changes an event's state, with its history.
void SetEventState(Connection& connection, int64_t row, const std::string& state,
                   const char* change, std::string_view note = {});

}  // namespace host

#endif
