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
    int64_t process = 0;       // 0: none
    std::string node;          // that serves it; empty: none, or the only one
    std::string node_of_site;  // whose line it is, by the site file; empty: the only node's
};

// One for each port of the site, in the order of the ports.
std::vector<LineState> ReadLines(Connection& connection);
std::vector<std::string> LineNames(Connection& connection);
// None: the site has no such port.
std::optional<LineState> FindLine(Connection& connection, const std::string& line);

// Requires a write transaction.
void SetPaused(Connection& connection, const std::string& line, bool paused);

// Each is a transaction of its own.
void SetHealth(Connection& connection, const std::string& line, Health health,
               const std::string& reason, std::time_t now);
void SetDoing(Connection& connection, const std::string& line, const std::string& doing,
              std::time_t now);
// 0: it has ended; it does nothing then.
void SetProcess(Connection& connection, const std::string& line, int64_t process);

// Requires a write transaction. A port that comes back to the site is in service: whoever paused a
// line of that name meant one that is no more.
void ForgetPausesOfFormerLines(Connection& connection);

// --- On a site of several hosts.

// Which node serves a line, one at a time. False: another does.
bool ClaimLine(Connection& connection, const std::string& line, const std::string& node);
// That serves it; empty: none.
std::string NodeOfLine(Connection& connection, const std::string& line);
// When its process has ended.
void LetGoOfLine(Connection& connection, const std::string& line, const std::string& node);
// Of a node; those that the site knows no more, too.
std::vector<std::string> ClaimedLines(Connection& connection, const std::string& node);
// Requires a write transaction: nobody serves them any more, nor does anything there.
void FreeLinesOf(Connection& connection, const std::string& node);

// The page that may be on the line: texts as the trace has them, which cuts long ones. Empty: none.
struct PageOnLine {
    std::string alarm;  // empty: any of the group and the pager
    std::string group;
    std::string pager;
};
void SetPageOnLine(Connection& connection, const std::string& line, const PageOnLine& page);
PageOnLine FindPageOnLine(Connection& connection, const std::string& line);

const char* WordOf(Health health);

}  // namespace host

#endif
