// The lines of a site, as they are shown: the node writes their health, a line what it is doing,
// the operator whether it is paused.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_LINES_H
#define PAGERFWD_HOST_STORE_TABLES_LINES_H

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

enum class Health { kUnknown, kWell, kSick };

// Texts as the tables have them.
struct LineState {
    std::string line;                  // the port's name
    std::string device;                // of the port: its path; empty: by the name
    Health health = Health::kUnknown;  // unknown: no node has looked yet
    std::time_t since = 0;             // when it became so
    std::string reason;                // why it is sick, in words
    bool paused = false;
    std::string doing;  // empty: no process serves it
    std::time_t doing_since = 0;
    int64_t process = 0;  // 0: none
};

// One for each port of the site, in the order of the ports.
std::vector<LineState> ReadLines(Connection& connection);
std::vector<std::string> LineNames(Connection& connection);
// None: the site has no such port.
std::optional<LineState> FindLine(Connection& connection, const std::string& line);

// Each is a transaction of its own.
void SetHealth(Connection& connection, const std::string& line, Health health,
               const std::string& reason, std::time_t now);
void SetPaused(Connection& connection, const std::string& line, bool paused);
void SetDoing(Connection& connection, const std::string& line, const std::string& doing,
              std::time_t now);
// 0: it has ended; it does nothing then.
void SetProcess(Connection& connection, const std::string& line, int64_t process);

// Forgets lines that are no port of the site any more.
void ForgetOtherLines(Connection& connection);

const char* WordOf(Health health);

}  // namespace host

#endif
