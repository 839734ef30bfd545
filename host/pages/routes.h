// Which pagers an alarm goes to.
//
// Host_Routes has a pattern of alarm groups and the severities ("1,2", empty for all) of each
// route, Host_RoutePagers its pagers in order. Every route that an alarm fits counts.
#ifndef PAGERFWD_HOST_PAGES_ROUTES_H
#define PAGERFWD_HOST_PAGES_ROUTES_H

#include <string>
#include <string_view>
#include <vector>

#include "host/store/connection.h"
#include "host/text/encoding.h"

namespace host {

struct StoredRoute {
    std::string groups;                   // UTF-8
    std::vector<std::string> severities;  // cells
    std::vector<std::string> pagers;      // as the tables have them
};

std::vector<StoredRoute> ReadRoutes(Connection& connection, Encoding encoding);

// As the patterns of routes: "plant/*". Both UTF-8.
bool FitsGroup(const std::string& pattern, const std::string& group);

// In the order of the routes, each pager once. group: UTF-8; severity: a cell of the alarm log.
std::vector<std::string> PagersFor(const std::vector<StoredRoute>& routes, const std::string& group,
                                   std::string_view severity);

}  // namespace host

#endif
