// The backlog. Tested by tests/unit/host/backlog_test.cpp.
#include "host/pages/backlog.h"

#include <string>
#include <vector>

#include "host/store/faults.h"
#include "host/store/schema.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/events.h"
#include "host/store/tables/states.h"
#include "host/text/controls.h"

namespace host {
namespace {

// One that is too large doesn't hold up the others: it is told, and left as it is. Returns the sum
// of what `work` returns.
template <typename Work>
int32_t ForEach(const std::string& what, const std::vector<int64_t>& rows, Work work) {
    int32_t sum = 0;
    for (const int64_t row : rows) {
        try {
            sum += work(row);
        } catch (const RowTooLarge& error) {
            ReportFault(what + " " + std::to_string(row) + ": " + error.what());
        }
    }
    return sum;
}

constexpr const char* kAlarmRow = "row of AlarmLog";

// Returns how many have it then.
int32_t SetStates(Connection& connection, const std::vector<int64_t>& alarms, const char* state) {
    return ForEach(kAlarmRow, alarms, [&](int64_t row) {
        SetPagerState(connection, row, state);
        return 1;
    });
}

int32_t DiscardPending(Connection& connection, const std::string& alarm) {
    return ForEach("row of AlarmFwd_PagerEvents", PendingRows(connection, alarm), [&](int64_t row) {
        SetEventState(connection, row, kStateOffLimit, kChanged);
        return 1;
    });
}

int32_t DiscardPlanned(Connection& connection, const std::string& alarm) {
    return ForEach("delivery of alarm " + alarm + ", place", OpenPlaces(connection, alarm),
                   [&](int64_t place) {
                       CloseDelivery(connection, alarm, place, kGivenUp);
                       return 1;
                   });
}

}  // namespace

int32_t MendAlarmStates(Connection& connection) {
    WriteTransaction transaction(connection);
    const int32_t mended = SetStates(connection, AlarmsEndedTooEarly(connection), kStateBeingPaged);
    transaction.Commit();
    return mended;
}

int32_t EndFinishedAlarms(Connection& connection) {
    WriteTransaction transaction(connection);
    // One page that nobody got counts for all.
    int32_t ended = 0;
    for (const char* state : {kStateOffLimit, kStateDone}) {
        ended += SetStates(connection, FinishedAlarms(connection, state), state);
    }
    transaction.Commit();
    return ended;
}

void MendTexts(Connection& connection) {
    WriteTransaction transaction(connection);
    for (const EventKey& event : PendingKeys(connection)) {
        const std::string group = WithoutControls(event.page.group);
        const std::string pager = WithoutControls(event.page.pager);
        if (group != event.page.group || pager != event.page.pager) {
            RenameEvent(connection, event, group, pager);
        }
    }
    transaction.Commit();
}

int32_t DiscardPages(Connection& connection, std::time_t raised_before) {
    WriteTransaction transaction(connection);
    // Off limit first: the history tells then that they were given up.
    SetStates(connection, OldAlarms(connection, raised_before, false), kStateOffLimit);
    const std::vector<int64_t> alarms = OldAlarms(connection, raised_before, true);
    const int32_t discarded = ForEach(kAlarmRow, alarms, [&](int64_t row) {
        const std::string number = NumberOf(connection, row);
        return DiscardPending(connection, number) + DiscardPlanned(connection, number);
    });
    transaction.Commit();
    return discarded;
}

}  // namespace host
