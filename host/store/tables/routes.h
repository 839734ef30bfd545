// Host_Routes and Host_RoutePagers: whom an alarm goes to; see host/pages/routes.h.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_ROUTES_H
#define PAGERFWD_HOST_STORE_TABLES_ROUTES_H

#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

// Texts as the tables have them.
struct RouteRow {
    std::string groups;      // a pattern
    std::string severities;  // "1,2": cells of the alarm log; empty for all
    std::vector<std::string> pagers;
};

// In their order.
std::vector<RouteRow> ReadRouteRows(Connection& connection);
// In the place of all there are. Requires a write transaction.
void StoreRouteRows(Connection& connection, const std::vector<RouteRow>& routes);

}  // namespace host

#endif
