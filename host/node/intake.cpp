// New alarms. Tested by tests/unit/host/intake_test.cpp.
#include "host/node/intake.h"

#include <algorithm>

#include "host/alarms/mending.h"
#include "host/pages/routes.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/states.h"

namespace host {
namespace {

std::string RowOf(int64_t row) {
    return "row " + std::to_string(row) + " of the alarm log";
}

void GiveUp(Connection& connection, const Alarm& alarm) {
    WriteTransaction transaction(connection);
    SetPagerState(connection, alarm.row, kStateOffLimit);
    transaction.Commit();
}

}  // namespace

bool Intake::IsDone(Connection& connection) const {
    const std::vector<Alarm> alarms = NewAlarms(connection);
    return std::all_of(alarms.begin(), alarms.end(),
                       [this](const Alarm& alarm) { return aside_.Has(RowOf(alarm.row)); });
}

void Intake::Run(Connection& connection) {
    std::vector<int64_t> unreadable;
    const std::vector<Alarm> alarms = NewAlarms(connection, &unreadable);
    for (const int64_t row : unreadable) {
        aside_.Add(RowOf(row), SetAside::kTooLarge);
    }
    if (alarms.empty()) {
        return;
    }
    const std::vector<StoredRoute> routes = ReadRoutes(connection, encoding_);
    for (const Alarm& found : alarms) {
        try {
            const Alarm alarm = MendAlarm(connection, found, encoding_);
            TakeUp(connection, alarm,
                   PagersFor(routes, Decode(alarm.group, encoding_), alarm.severity));
        } catch (const RowTooLarge& error) {
            aside_.Add(RowOf(found.row), error.what());
        }
    }
}

void Intake::TakeUp(Connection& connection, const Alarm& alarm,
                    const std::vector<std::string>& pagers) {
    const std::string name = "alarm " + alarm.number + " (" + Decode(alarm.group, encoding_) + ")";
    if (alarm.acknowledged) {
        PlanDeliveries(connection, alarm, {});
    } else if (!IsLibraryNumber(alarm.number) || !FindAlarm(connection, alarm.number)) {
        log_.Error(name +
                   ": its number can't be used: it isn't one, or another alarm has it; "
                   "nobody is paged");
        GiveUp(connection, alarm);
    } else {
        PlanDeliveries(connection, alarm, pagers);
        if (pagers.empty()) {
            log_.Warning(name + ": no route leads to a pager; nobody is paged");
        }
    }
}

}  // namespace host
