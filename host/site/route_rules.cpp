// What a route has to hold. Tested by tests/unit/host/route_rules_test.cpp.
#include <fnmatch.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "host/site/rules.h"
#include "host/site/words.h"
#include "host/text/printable.h"
#include "host/text/utf8_locale.h"

namespace host {
namespace {

// Where a set of characters such as [a-z] ends; where it begins if it isn't one.
size_t EndOfSet(const std::string& pattern, size_t begin) {
    size_t first = begin + 1;
    if (first < pattern.size() && (pattern[first] == '!' || pattern[first] == '^')) {
        ++first;
    }
    const size_t end = pattern.find(']', first + 1);
    return end == std::string::npos ? begin : end;
}

// The first character of ASCII, or of the set's own, that the set takes; empty: none.
std::string FirstOf(const std::string& set) {
    for (char c = ' '; c < '\x7F'; ++c) {
        std::string one(1, c);
        if (fnmatch(set.c_str(), one.c_str(), 0) == 0) {
            return one;
        }
    }
    for (std::string_view rest = set; !rest.empty();) {
        std::string one(rest.substr(0, FirstCharacter(rest).length));
        if (fnmatch(set.c_str(), one.c_str(), 0) == 0) {
            return one;
        }
        rest.remove_prefix(one.size());
    }
    return {};
}

std::string RouteFor(const Route& route) {
    return "route for " + InQuotes(route.groups.value);
}

// A text that the pattern takes, if there is any: nothing for a *, a letter for a ?, and for a set
// the first character that it takes.
std::string Sample(const std::string& pattern) {
    std::string sample;
    for (size_t at = 0; at < pattern.size(); ++at) {
        const size_t end = pattern[at] == '[' ? EndOfSet(pattern, at) : at;
        if (pattern[at] == '?') {
            sample += 'x';
        } else if (pattern[at] == '\\' && at + 1 < pattern.size()) {
            sample += pattern[++at];
        } else if (end != at) {
            sample += FirstOf(pattern.substr(at, end - at + 1));
            at = end;
        } else if (pattern[at] != '*') {
            sample += pattern[at];
        }
    }
    return sample;
}

void CheckGroups(const Route& route, Findings& findings) {
    const std::string& groups = route.groups.value;
    const Utf8Locale utf8;
    if (fnmatch(groups.c_str(), Sample(groups).c_str(), 0) != 0) {
        findings.Error(route.groups.line, RouteFor(route) + ": no group fits this pattern",
                       "It reaches nobody.",
                       "Write * for any text, ? for any letter; before one that is meant as it "
                       "stands, and before a backslash, a backslash.");
    } else if (groups.empty()) {
        findings.Warning(route.groups.line, RouteFor(route) + ": only alarms without a group fit",
                         "It reaches nobody about any other.",
                         "Leave the line out for every group.");
    }
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
    if (site.routes.empty() && !site.pagers.empty()) {
        findings.Warning(site.pagers.front().line, "there is no route",
                         "Alarms reach nobody; only test pages leave.",
                         "Add a [[route]] such as: pagers = [\"duty\"]");
    }
    for (const Route& route : site.routes) {
        CheckGroups(route, findings);
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
