// Routes. Tested by tests/unit/host/routes_test.cpp.
#include "host/pages/routes.h"

#include <fnmatch.h>

#include <algorithm>
#include <utility>

#include "host/store/tables/routes.h"
#include "host/text/utf8_locale.h"

namespace host {
namespace {

std::vector<std::string> Split(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const size_t end = std::min(list.find(','), list.size());
        parts.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts;
}

template <typename Values, typename Value>
bool Has(const Values& values, const Value& value) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

// Requires a Utf8Locale.
bool Fits(const StoredRoute& route, const std::string& group, std::string_view severity) {
    return fnmatch(route.groups.c_str(), group.c_str(), 0) == 0 &&
           (route.severities.empty() || Has(route.severities, severity));
}

}  // namespace

std::vector<StoredRoute> ReadRoutes(Connection& connection, Encoding encoding) {
    std::vector<StoredRoute> routes;
    for (RouteRow& row : ReadRouteRows(connection)) {
        routes.push_back(
            {Decode(row.groups, encoding), Split(row.severities), std::move(row.pagers)});
    }
    return routes;
}

bool FitsGroup(const std::string& pattern, const std::string& group) {
    const Utf8Locale utf8;
    return fnmatch(pattern.c_str(), group.c_str(), 0) == 0;
}

std::vector<std::string> PagersFor(const std::vector<StoredRoute>& routes, const std::string& group,
                                   std::string_view severity) {
    const Utf8Locale utf8;
    std::vector<std::string> pagers;
    for (const StoredRoute& route : routes) {
        if (!Fits(route, group, severity)) {
            continue;
        }
        for (const std::string& pager : route.pagers) {
            if (!Has(pagers, pager)) {
                pagers.push_back(pager);
            }
        }
    }
    return pagers;
}

}  // namespace host
