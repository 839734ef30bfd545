// Hiding events and bringing them back. Tested by tests/unit/host/hidden_rows_test.cpp.
#include "host/store/hidden_rows.h"

#include <algorithm>
#include <string>

#include "host/store/schema.h"
#include "host/store/tables/history.h"
#include "host/store/where.h"

namespace host {
namespace {

const std::string kHide = "UPDATE AlarmFwd_PagerEvents SET hidden_by = ";
constexpr const char* kOwed =
    " AND PagerState || '' = '2' AND NOT EXISTS (SELECT 1 FROM AlarmLog"
    " WHERE alarmlogID = AlarmFwd_PagerEvents.AlmLogID AND pagerstate = '1')";
const std::string kDelete = "DELETE FROM AlarmFwd_PagerEvents";

std::string EventsInSight(const std::vector<Term>& terms) {
    return WhereInSight(*FindTable(kEvents), terms);
}

std::vector<int32_t> OwnersThatEnded(Connection& connection, OwnerLock& owners) {
    std::vector<int32_t> ended;
    Statement statement(connection,
                        "SELECT DISTINCT hidden_by FROM AlarmFwd_PagerEvents"
                        " WHERE hidden_by IS NOT NULL");
    while (statement.Step()) {
        const auto owner = static_cast<int32_t>(statement.Number(0));
        if (!owners.Lives(owner)) {
            ended.push_back(owner);
        }
    }
    return ended;
}

}  // namespace

int32_t DeleteInSight(Connection& connection, const std::vector<Term>& terms) {
    WriteHistory(connection, {kRemoved}, EventsInSight(terms), terms);
    return ChangeRows(connection, kDelete + EventsInSight(terms), terms);
}

int32_t DeleteEvent(Connection& connection, const std::vector<Term>& key, int32_t owner) {
    const std::string owed = EventsInSight(key) + kOwed;
    WriteHistory(connection, {kTakenOut}, owed, key);
    const int32_t hidden = ChangeRows(connection, kHide + std::to_string(owner) + owed, key);
    return hidden + DeleteInSight(connection, key);
}

int32_t DeleteEventsOfAlarm(Connection& connection, const std::vector<Term>& alarm) {
    DropHidden(connection, alarm);
    return DeleteInSight(connection, alarm);
}

void DropHidden(Connection& connection, const std::vector<Term>& key) {
    std::string condition = " WHERE hidden_by IS NOT NULL";
    for (const Term& term : key) {
        condition += " AND " + Quoted(term.column) + " = ?";
    }
    ChangeRows(connection, kDelete + condition, key);
}

bool HasOrphans(Connection& connection, OwnerLock& owners) {
    return !OwnersThatEnded(connection, owners).empty();
}

void BringBackOf(Connection& connection, const std::string& line) {
    const std::vector<Term> of_line = {{"line", "=", line}};
    const std::string hidden = " WHERE hidden_by IS NOT NULL AND line = ?";
    WriteTransaction transaction(connection);
    WriteHistory(connection, {kBroughtBack}, hidden, of_line);
    ChangeRows(connection, "UPDATE AlarmFwd_PagerEvents SET hidden_by = NULL" + hidden, of_line);
    transaction.Commit();
}

void BringBackOrphans(Connection& connection, OwnerLock& owners) {
    for (const int32_t owner : OwnersThatEnded(connection, owners)) {
        const std::string number = std::to_string(owner);
        const std::vector<Term> hidden = {{"hidden_by", "=", number}};
        WriteHistory(connection, {kBroughtBack}, " WHERE hidden_by = ?", hidden);
        ChangeRows(connection,
                   "UPDATE AlarmFwd_PagerEvents SET hidden_by = NULL WHERE hidden_by = ?", hidden);
    }
}

}  // namespace host
