// Host_Trail: what people, and programs in their name, have done to alarms and to the site: who,
// when and what. Texts are UTF-8, whatever the site's encoding.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_TRAIL_H
#define PAGERFWD_HOST_STORE_TABLES_TRAIL_H

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

struct TrailEntry {
    int64_t row = 0;
    std::time_t at = 0;
    std::string who;
    std::string what;        // as below, or in words of whoever writes it
    std::string alarm = {};  // its number; empty: it is about none
    std::string note = {};   // a comment; may be empty
};

inline constexpr const char* kTrailAcknowledged = "acknowledged";
inline constexpr const char* kTrailWithdrawn = "withdrawn";

// Requires a write transaction.
void NoteInTrail(Connection& connection, const TrailEntry& entry);

// Of an alarm, in order.
std::vector<TrailEntry> TrailOf(Connection& connection, const std::string& alarm);

// The last so many before this row, the last first.
std::vector<TrailEntry> TrailBefore(Connection& connection, int64_t row, int64_t count);

// Requires a write transaction.
void ForgetTrail(Connection& connection, std::time_t before);

}  // namespace host

#endif
