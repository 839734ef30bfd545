// Pages of a node. Tested by tests/unit/host/takeover_test.cpp.
#include "host/store/tables/pages_of_node.h"

#include <ctime>

#include "host/store/schema.h"
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

// Of an event: the delivery of its page.
const std::string kSamePage =
    "alarm = event.AlmLogID AND alarm_group = event.AlmGroup AND pager = event.PagerDescr";

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
void AddMissingDeliveries(Connection& connection, const std::string& node) {
    Statement(connection,
              "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since)"
              " SELECT AlmLogID, (SELECT coalesce(max(place), -1) FROM Host_Deliveries"
              "  WHERE alarm = AlmLogID)"
              " + row_number() OVER (PARTITION BY AlmLogID ORDER BY min(row_id)),"
              " AlmGroup, PagerDescr, 0" +
                  kItsEvents + " AND " + kGoesOn +
                  " AND NOT EXISTS (SELECT 1 FROM Host_Deliveries WHERE " + kSamePage +
                  ") GROUP BY AlmLogID, AlmGroup, PagerDescr")
        .Bind(node)
        .Run();
}

// Behind the rows of the history that say so.
int64_t OpenDeliveriesAgain(Connection& connection, const std::string& node) {
    Statement(connection,
              "UPDATE Host_Deliveries SET answer = NULL, line = '',"
              " tries = tries + CAST(event.PagerRetries AS INTEGER),"
              " since = (SELECT coalesce(max(row_id), 0) FROM Host_History)" +
                  kItsEvents + " AND " + kGoesOn + " AND " + kSamePage +
                  " AND place = (SELECT min(place) FROM Host_Deliveries WHERE " + kSamePage + ")")
        .Bind(node)
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
              "UPDATE Host_Deliveries SET line = '' WHERE answer IS NULL AND " + kOnItsLines +
                  " AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
                  "  WHERE AlmLogID = alarm AND AlmGroup = alarm_group AND PagerDescr = pager"
                  "  AND PagerState || '' = '2')")
        .Bind(node)
        .Run();
    return connection.Changes();
}

}  // namespace

int64_t TakePagesOfNode(Connection& connection, const std::string& node, const std::string& why) {
    WriteHistoryOfAll(connection, node, why);
    AddMissingDeliveries(connection, node);
    const int64_t opened = OpenDeliveriesAgain(connection, node);
    DeleteEvents(connection, node);
    return opened + TakeWhatWasNotHandedOver(connection, node);
}

}  // namespace host
