// Pages of a node. Tested by tests/unit/host/takeover_test.cpp.
#include "host/store/tables/pages_of_node.h"

#include <ctime>

#include "host/store/schema.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/history.h"

namespace host {
namespace {

// On a row of a table with a line: whether it is a line of the node ?1.
const std::string kOnItsLines = "line IN (SELECT line FROM Host_Lines WHERE node = ?1)";

// Events that its libraries had.
const std::string kItsEvents =
    " FROM AlarmFwd_PagerEvents AS event WHERE PagerState = '2' AND event." + kOnItsLines;

// Of an event: its alarm is there, and needs paging. A number that two alarms have means none.
const std::string kGoesOn =
    "(SELECT count(*) = 1 AND max(CASE WHEN alarmack IN ('', '0') AND pagerstate <> '1'"
    " THEN 1 ELSE 0 END) = 1 FROM AlarmLog WHERE alarmlogID = event.AlmLogID)";

// Of those that go on, the rows that WriteHistoryOfAll has just written, which is behind ?1: so
// that their alarms are asked for once.
const std::string kThatGoOn =
    " FROM Host_History AS gone WHERE gone.row_id > ?1 AND gone.change = ?2";

// Of such a row: the delivery of its page.
const std::string kSamePage =
    "owed.alarm = gone.alarm AND owed.alarm_group = gone.alarm_group AND owed.pager = gone.pager";

void WriteHistoryOfAll(Connection& connection, const std::string& node, const std::string& why) {
    Statement(connection,
              "INSERT INTO Host_History (at, change, alarm, alarm_group, pager, state, tries, line,"
              " note) SELECT ?2, CASE WHEN " +
                  kGoesOn +
                  " THEN ?3 ELSE ?4 END, AlmLogID, AlmGroup, PagerDescr, PagerState,"
                  " PagerRetries, line, ?5" +
                  kItsEvents + " ORDER BY row_id")
        .Bind(node)
        .Bind(static_cast<int64_t>(std::time(nullptr)))
        .Bind(std::string_view(kMoved))
        .Bind(std::string_view(kRemoved))
        .Bind(why)
        .Run();
}

// A page of another program has none: it gets one behind all others of its alarm.
void AddMissingDeliveries(Connection& connection, int64_t behind) {
    Statement(connection,
              "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since, severity)"
              " SELECT gone.alarm, (SELECT coalesce(max(place), -1) FROM Host_Deliveries AS owed"
              "  WHERE owed.alarm = gone.alarm)"
              " + row_number() OVER (PARTITION BY gone.alarm ORDER BY min(gone.row_id)),"
              " gone.alarm_group, gone.pager, 0, " +
                  SeverityOf("gone.alarm") + kThatGoOn +
                  " AND NOT EXISTS (SELECT 1 FROM Host_Deliveries AS owed WHERE " + kSamePage +
                  ") GROUP BY gone.alarm, gone.alarm_group, gone.pager")
        .Bind(behind)
        .Bind(std::string_view(kMoved))
        .Run();
}

// Behind the rows of the history that say so.
int64_t OpenDeliveriesAgain(Connection& connection, int64_t behind) {
    Statement(connection,
              "UPDATE Host_Deliveries AS owed SET answer = NULL, line = '',"
              " tries = owed.tries + CAST(gone.tries AS INTEGER),"
              " since = (SELECT coalesce(max(row_id), 0) FROM Host_History)" +
                  kThatGoOn + " AND " + kSamePage +
                  " AND owed.place = (SELECT min(owed.place) FROM Host_Deliveries AS owed WHERE " +
                  kSamePage + ")")
        .Bind(behind)
        .Bind(std::string_view(kMoved))
        .Run();
    return connection.Changes();
}

void DeleteEvents(Connection& connection, const std::string& node) {
    Statement(connection,
              "DELETE FROM AlarmFwd_PagerEvents WHERE PagerState = '2' AND " + kOnItsLines)
        .Bind(node)
        .Run();
}

// The library of another line may have it by now.
int64_t TakeWhatWasNotHandedOver(Connection& connection, const std::string& node) {
    Statement(connection,
              "UPDATE Host_Deliveries SET line = '' WHERE answer IS NULL AND line > '' AND " +
                  kOnItsLines +
                  " AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
                  "  WHERE AlmLogID = alarm AND AlmGroup = alarm_group AND PagerDescr = pager"
                  "  AND PagerState || '' = '2')")
        .Bind(node)
        .Run();
    return connection.Changes();
}

}  // namespace

int64_t TakePagesOfNode(Connection& connection, const std::string& node, const std::string& why) {
    const int64_t before = LastChange(connection);
    WriteHistoryOfAll(connection, node, why);
    AddMissingDeliveries(connection, before);
    const int64_t opened = OpenDeliveriesAgain(connection, before);
    DeleteEvents(connection, node);
    return opened + TakeWhatWasNotHandedOver(connection, node);
}

}  // namespace host
