// Warnings about a new alarm. Tested by tests/unit/host/cli_alarm_test.cpp.
#include "host/cli/raise_warnings.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/pagers.h"

#include <cstdlib>

#include "host/cli/names.h"
#include "host/explain/paged_alarm.h"
#include "host/pages/routes.h"
#include "host/process/database_locks.h"
#include "host/site/words.h"

namespace host {
namespace {

int AsTheLibraryReads(const std::string& cell) {
    return std::atoi(cell.c_str());  // NOLINT(cert-err34-c)
}

PagedAlarm AsPaged(const NewAlarm& alarm) {
    return {alarm.group, alarm.server, alarm.details, AsTheLibraryReads(alarm.severity)};
}

std::string NoRoute(const NewAlarm& alarm, Encoding encoding) {
    return "no route leads from group \"" + Shown(alarm.group, encoding) + "\", severity " +
           WordFor(kSeverities, alarm.severity) + ", to a pager: nobody is paged";
}

}  // namespace

std::vector<std::string> WarningsFor(Connection& connection, const NewAlarm& alarm,
                                     Encoding encoding) {
    std::vector<std::string> warnings;
    if (!NodeLock(connection.Path()).IsTaken() && !AnyNodeLives(connection)) {
        warnings.emplace_back(
            "no engine is running for this database: nobody is paged until one is started");
    }
    const std::vector<std::string> pagers =
        PagersFor(ReadRoutes(connection, encoding), Decode(alarm.group, encoding), alarm.severity);
    if (pagers.empty()) {
        warnings.push_back(NoRoute(alarm, encoding));
    }
    for (const std::string& name : pagers) {
        for (const PagerRow& pager : FindPagers(connection, name)) {
            if (const auto cut = CutOf(AsTheLibraryReads(pager.type), AsPaged(alarm))) {
                warnings.push_back("pager \"" + Shown(name, encoding) + "\" gets only the first " +
                                   std::to_string(cut->kept) + " of " + std::to_string(cut->whole) +
                                   " characters of the page");
            }
        }
    }
    return warnings;
}

}  // namespace host
