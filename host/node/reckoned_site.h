// What the reckoning needs to know of lines and pagers, read from the tables as they are.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_NODE_RECKONED_SITE_H
#define PAGERFWD_HOST_NODE_RECKONED_SITE_H

#include <cstdint>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

// Texts as the tables have them.
struct ReckonedLine {
    std::string name;
    bool has_modem = false;
    std::map<std::string, std::string> dial;  // by type of pager, as a cell
    bool is_well = false;                     // served, neither sick nor paused
    bool is_sick = false;
    bool is_idle = false;

    // Its load.
    std::time_t last_sending = 0;  // over it, whatever it came to
    int64_t untried = 0;           // pages that it has been given and not tried yet
    int64_t pending = 0;           // all that it has
};

struct ReckonedPager {
    int rows = 0;  // of this description; with another number than one it can't be paged
    std::string port;
    std::string type;
    std::time_t delay = 0;  // seconds
};

struct ReckonedSite {
    std::vector<ReckonedLine> lines;
    std::map<std::string, ReckonedPager> pagers;

    const ReckonedLine* Find(const std::string& line) const;
    // Lines that are well and can have the pager's pages.
    std::vector<const ReckonedLine*> LinesFor(const std::string& pager) const;
    // Whether the pager names a line.
    bool IsBound(const std::string& pager) const;
};

// Without the loads of its lines: these are read by themselves.
ReckonedSite ReadReckonedSite(Connection& connection);
void ReadLoads(Connection& connection, ReckonedSite& site);

}  // namespace host

#endif
