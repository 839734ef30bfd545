// Routes in the tables. Tested by tests/unit/host/routes_test.cpp and site_tables_test.cpp.
#include "host/store/tables/routes.h"

namespace host {
namespace {

std::vector<std::string> PagersOfRoute(Connection& connection, int64_t route) {
    return Statement(connection,
                     "SELECT pager FROM Host_RoutePagers WHERE route = ? ORDER BY place")
        .Bind(route)
        .Texts();
}

void InsertRoute(Connection& connection, int64_t number, const RouteRow& route) {
    Statement(connection, "INSERT INTO Host_Routes VALUES (?, ?, ?)")
        .Bind(number)
        .Bind(route.groups)
        .Bind(route.severities)
        .Run();
    int64_t place = 0;
    for (const std::string& pager : route.pagers) {
        Statement(connection, "INSERT INTO Host_RoutePagers VALUES (?, ?, ?)")
            .Bind(number)
            .Bind(place++)
            .Bind(pager)
            .Run();
    }
}

}  // namespace

std::vector<RouteRow> ReadRouteRows(Connection& connection) {
    std::vector<RouteRow> routes;
    Statement statement(connection,
                        "SELECT route, alarm_groups, severities FROM Host_Routes ORDER BY route");
    while (statement.Step()) {
        routes.push_back({std::string(statement.Text(1)), std::string(statement.Text(2)),
                          PagersOfRoute(connection, statement.Number(0))});
    }
    return routes;
}

void StoreRouteRows(Connection& connection, const std::vector<RouteRow>& routes) {
    connection.Execute("DELETE FROM Host_RoutePagers; DELETE FROM Host_Routes");
    int64_t number = 0;
    for (const RouteRow& route : routes) {
        InsertRoute(connection, ++number, route);
    }
}

}  // namespace host
