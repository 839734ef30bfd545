// AlarmFwd_PagerSetting as the host asks of it.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_PAGERS_H
#define PAGERFWD_HOST_STORE_TABLES_PAGERS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/connection.h"

namespace host {

// Texts as the tables have them.
struct PagerRow {
    std::string description;
    std::string port;
    std::string type;
    std::string number;
    std::string timeModel;
    int64_t delay = 0;      // minutes
    std::string node = {};  // a column of the host's own; empty: any node's lines
};

// In order. Every row of this description; the library reaches a pager only where there is exactly
// one.
std::vector<PagerRow> ReadPagers(Connection& connection);
std::vector<PagerRow> FindPagers(Connection& connection, std::string_view description);
std::vector<std::string> PagerNames(Connection& connection);

// Requires a write transaction.
void SetNodeOfPager(Connection& connection, const std::string& pager, const std::string& node);

// Whether it names this line.
bool IsBoundTo(Connection& connection, const std::string& pager, const std::string& line);

// How often a page to it is tried, and how far apart.
struct PagerLimits {
    int64_t retries = 5;  // what the library takes where there is no such pager
    int64_t delay = 45;   // minutes
};

PagerLimits LimitsOf(Connection& connection, const std::string& pager);

}  // namespace host

#endif
