// What a route has to hold. Tested by tests/unit/host/route_rules_test.cpp.
#include <algorithm>
#include <string>
#include <vector>

#include "host/site/rules.h"
#include "host/site/words.h"

namespace host {
namespace {

std::string RouteFor(const Route& route) {
    return "route for " + InQuotes(route.groups.value);
}

void CheckSeverities(const Route& route, Findings& findings) {
    for (const SaidText& severity : route.severities) {
        if (CellFor(kSeverities, severity.value) == nullptr) {
            findings.Error(
                severity.line,
                RouteFor(route) + ": there is no severity " + InQuotes(severity.value),
                "No alarm has it: the route would reach nobody for it.",
                "Write " + ListOf(kSeverities) + ", or leave the line out for all severities.");
        }
    }
}

bool HasPager(const Site& site, const std::string& description) {
    return std::any_of(site.pagers.begin(), site.pagers.end(),
                       [&](const Pager& pager) { return pager.description.value == description; });
}

void CheckPager(const Site& site, const Route& route, size_t place, Findings& findings) {
    const SaidText& pager = route.pagers[place];
    if (!HasPager(site, pager.value)) {
        findings.Error(pager.line, RouteFor(route) + ": there is no pager " + InQuotes(pager.value),
                       "Nobody is paged in its place.", "Name a [[pager]] by its description.");
        return;
    }
    for (size_t before = 0; before < place; ++before) {
        if (route.pagers[before].value == pager.value) {
            findings.Warning(pager.line,
                             RouteFor(route) + ": pager " + InQuotes(pager.value) + " stands twice",
                             "It gets an alarm once.", "Leave one of the two out.");
            return;
        }
    }
}

}  // namespace

void CheckRoutes(const Site& site, Findings& findings) {
    for (const Route& route : site.routes) {
        CheckSeverities(route, findings);
        for (size_t place = 0; place < route.pagers.size(); ++place) {
            CheckPager(site, route, place, findings);
        }
        if (route.pagers.empty()) {
            findings.Warning(route.line, RouteFor(route) + ": names no pager", "It reaches nobody.",
                             "Add a line such as: pagers = [\"duty\"]");
        }
    }
}

}  // namespace host
