// Events. Tested by tests/unit/host/hidden_rows_test.cpp, page_owner_test.cpp and
// reckoning_test.cpp.
#include "host/store/tables/events.h"

#include "host/store/schema.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/history.h"
#include "host/store/tables/states.h"

namespace host {
namespace {

// The condition of a page that no library has yet, or any more, on its row of Host_Deliveries.
const std::string kWaitsForALibrary =
    "answer IS NULL AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
    " WHERE AlmLogID = Host_Deliveries.alarm AND AlmGroup = Host_Deliveries.alarm_group"
    " AND PagerDescr = Host_Deliveries.pager AND PagerState || '' = '2')";

// Those that an engine takes up.
const std::string kTakenUp =
    " FROM AlarmFwd_PagerEvents AS event WHERE PagerState = '2'"
    " AND EXISTS (SELECT 1 FROM AlarmLog"
    "  WHERE alarmlogID = event.AlmLogID AND pagerstate = '2')"
    " AND EXISTS (SELECT 1 FROM AlarmFwd_PagerSetting"
    "  WHERE description = event.PagerDescr)";

constexpr const char* kWasSent =
    "EXISTS (SELECT 1 FROM Host_Sends AS sent WHERE sent.alarm = event.AlmLogID"
    "  AND sent.pager = event.PagerDescr AND sent.port = event.line)";

void WriteHistoryOf(Connection& connection, int64_t row, const EventChange& change) {
    const std::string number = std::to_string(row);
    WriteHistory(connection, change, " WHERE row_id = ?", {{"row_id", "=", number}});
}

}  // namespace

std::optional<PendingEvent> FindEvent(Connection& connection, const PageKey& page) {
    Statement statement(connection,
                        "SELECT row_id, CAST(PagerRetries AS INTEGER), line"
                        " FROM AlarmFwd_PagerEvents WHERE AlmLogID = ? AND AlmGroup = ?"
                        " AND PagerDescr = ? AND PagerState || '' = '2' ORDER BY row_id");
    statement.Bind(page.alarm).Bind(page.group).Bind(page.pager);
    return statement.Step() ? std::optional<PendingEvent>({statement.Number(0), statement.Number(1),
                                                           std::string(statement.Text(2))})
                            : std::nullopt;
}

void SetEventState(Connection& connection, int64_t row, const std::string& state,
                   const char* change, std::string_view note) {
    WriteHistoryOf(connection, row, {change, &state, nullptr, note});
    Statement(connection, "UPDATE AlarmFwd_PagerEvents SET PagerState = ? WHERE row_id = ?")
        .Bind(state)
        .Bind(row)
        .Run();
}

void EndEvent(Connection& connection, int64_t row, const char* change, const std::string& why) {
    SetEventState(connection, row, kStateOffLimit, change, why);
    Statement(connection, "UPDATE AlarmFwd_PagerEvents SET hidden_by = NULL WHERE row_id = ?")
        .Bind(row)
        .Run();
}

void RemoveEvent(Connection& connection, int64_t row, const char* change, const std::string& why) {
    WriteHistoryOf(connection, row, {change, nullptr, nullptr, why});
    Statement(connection, "DELETE FROM AlarmFwd_PagerEvents WHERE row_id = ?").Bind(row).Run();
}

void AddEndedEvent(Connection& connection, const PageKey& page, const char* state,
                   const std::string& why) {
    Statement(connection,
              "INSERT INTO AlarmFwd_PagerEvents (AlmLogID, AlmGroup, PagerDescr, PagerState,"
              " PagerRetries) VALUES (?, ?, ?, ?, '0')")
        .Bind(page.alarm)
        .Bind(page.group)
        .Bind(page.pager)
        .Bind(std::string_view(state))
        .Run();
    WriteHistory(connection, {kWritten, page.alarm, page.group, page.pager, state, "0", "", why});
}

void SetEventLine(Connection& connection, const PageKey& page, const std::string& line) {
    Statement(connection,
              "UPDATE AlarmFwd_PagerEvents SET line = ? WHERE AlmLogID = ? AND AlmGroup = ?"
              " AND PagerDescr = ? AND line = ''")
        .Bind(line)
        .Bind(page.alarm)
        .Bind(page.group)
        .Bind(page.pager)
        .Run();
}

std::vector<std::string> EventStates(Connection& connection, const std::string& alarm) {
    return Statement(connection,
                     "SELECT PagerState FROM AlarmFwd_PagerEvents WHERE AlmLogID = ?"
                     " ORDER BY row_id")
        .Bind(alarm)
        .Texts();
}

std::vector<int64_t> PendingRows(Connection& connection, const std::string& alarm) {
    return Statement(connection,
                     "SELECT row_id FROM AlarmFwd_PagerEvents"
                     " WHERE AlmLogID = ? AND PagerState = '2' ORDER BY row_id")
        .Bind(alarm)
        .Numbers();
}

std::vector<PageKey> PendingEvents(Connection& connection, const std::string& line) {
    Statement statement(connection,
                        "SELECT AlmLogID, AlmGroup, PagerDescr FROM AlarmFwd_PagerEvents"
                        " WHERE PagerState = '2' AND line = ? ORDER BY row_id");
    return KeysIn(statement.Bind(line));
}

std::vector<PageKey> PendingTracedEvents(Connection& connection, const std::string& line,
                                         const PageKey& traced) {
    Statement statement(connection,
                        "SELECT AlmLogID, AlmGroup, PagerDescr FROM AlarmFwd_PagerEvents"
                        " WHERE PagerState = '2' AND line = ? AND ? IN ('', AlmLogID) AND " +
                            Traced("AlmGroup") + " = CAST(? AS BLOB) AND " + Traced("PagerDescr") +
                            " = CAST(? AS BLOB) ORDER BY row_id");
    statement.Bind(line).Bind(traced.alarm).Bind(traced.group).Bind(traced.pager);
    return KeysIn(statement);
}

bool HasPagesOf(Connection& connection, const std::string& line) {
    Statement statement(connection, "SELECT 1" + kTakenUp + " AND line = ? LIMIT 1");
    return statement.Bind(line).Step();
}

// Asked every second: the deliveries lead, of which few were moved.
std::vector<MovedEvent> PendingMovedEvents(Connection& connection) {
    std::vector<MovedEvent> moved;
    Statement statement(connection,
                        "SELECT moved.alarm, moved.alarm_group, moved.pager,"
                        " moved.tries + CAST(event.PagerRetries AS INTEGER), event.line"
                        " FROM Host_Deliveries AS moved CROSS JOIN AlarmFwd_PagerEvents AS event"
                        " WHERE event.AlmLogID = moved.alarm"
                        " AND event.AlmGroup = moved.alarm_group"
                        " AND event.PagerDescr = moved.pager"
                        " AND moved.tries > 0 AND event.line <> ''"
                        " AND event.PagerState || '' = '2'");
    while (statement.Step()) {
        moved.push_back({KeyIn(statement), statement.Number(3), std::string(statement.Text(4))});
    }
    return moved;
}

std::vector<EventKey> PendingKeys(Connection& connection) {
    std::vector<EventKey> keys;
    Statement statement(connection,
                        "SELECT AlmLogID, AlmGroup, PagerDescr, row_id FROM AlarmFwd_PagerEvents"
                        " WHERE PagerState = '2' ORDER BY row_id");
    while (statement.Step()) {
        keys.push_back({statement.Number(3), KeyIn(statement)});
    }
    return keys;
}

void RenameEvent(Connection& connection, const EventKey& event, const std::string& group,
                 const std::string& pager) {
    Statement(connection,
              "UPDATE AlarmFwd_PagerEvents SET AlmGroup = ?, PagerDescr = ? WHERE row_id = ?")
        .Bind(group)
        .Bind(pager)
        .Bind(event.row)
        .Run();
    RenamePage(connection, event.page, group, pager);
}

std::vector<EventOnItsWay> EventsOnTheirWay(Connection& connection) {
    std::vector<EventOnItsWay> events;
    Statement statement(
        connection,
        std::string("SELECT AlmLogID, PagerDescr, event.line,"
                    " coalesce((SELECT max(at) FROM Host_History AS history"
                    "  WHERE history.alarm = AlmLogID AND history.pager = PagerDescr"
                    "  AND change IN ('written', 'changed')), 0),"
                    " EXISTS (SELECT 1 FROM Host_Deliveries AS owed WHERE owed.alarm = AlmLogID"
                    "  AND owed.pager = PagerDescr AND owed.tries > 0), ") +
            kWasSent +
            " FROM AlarmFwd_PagerEvents AS event JOIN AlarmLog AS alarm ON alarmlogID = AlmLogID"
            " WHERE event.PagerState = '2' AND alarm.pagerstate = '2'"
            " AND alarmack IN ('', '0')");
    while (statement.Step()) {
        events.push_back({std::string(statement.Text(0)), std::string(statement.Text(1)),
                          std::string(statement.Text(2)),
                          static_cast<std::time_t>(statement.Number(3)), statement.Number(5) != 0,
                          statement.Number(4) != 0});
    }
    return events;
}

bool HasPagesInHand(Connection& connection) {
    return Statement(connection,
                     "SELECT event.* FROM AlarmFwd_PagerEvents AS event WHERE PagerState = '2'"
                     " AND EXISTS (SELECT 1 FROM AlarmLog WHERE alarmlogID = event.AlmLogID)"
                     " AND EXISTS (SELECT 1 FROM AlarmFwd_PagerSetting"
                     "  WHERE description = event.PagerDescr) LIMIT 1")
        .Step();
}

std::vector<OwedPage> OwedPages(Connection& connection) {
    std::vector<OwedPage> pages;
    Statement statement(
        connection,
        "SELECT alarm, alarm_group, pager, waits, line, unknown, place FROM"
        " (SELECT AlmLogID AS alarm, AlmGroup AS alarm_group, PagerDescr AS pager, 0 AS waits,"
        "   row_id AS place, line, 0 AS unknown FROM AlarmFwd_PagerEvents WHERE PagerState = '2' "
        "UNION ALL"
        "  SELECT alarm, alarm_group, pager, 1, place, line, unknown FROM Host_Deliveries WHERE " +
            kWaitsForALibrary +
            ") AS owed"
            " ORDER BY CAST(alarm AS INTEGER), waits, place");
    while (statement.Step()) {
        pages.push_back({KeyIn(statement), statement.Number(3) != 0, std::string(statement.Text(4)),
                         statement.Number(5) != 0, statement.Number(6)});
    }
    return pages;
}

int64_t CountPendingPages(Connection& connection) {
    return Statement(connection, "SELECT count(*) + (SELECT count(*) FROM Host_Deliveries WHERE " +
                                     kWaitsForALibrary + ")" + kTakenUp)
        .FirstNumber();
}

Backlog LookAtBacklog(Connection& connection) {
    Statement statement(
        connection,
        "SELECT count(*), min(CAST(alarm.timestamp AS INTEGER)) FROM"
        " (SELECT AlmLogID AS number FROM AlarmFwd_PagerEvents"
        "   WHERE PagerState = '2'"
        "  UNION ALL SELECT alarm FROM Host_Deliveries WHERE answer IS NULL) AS owed"
        " JOIN AlarmLog AS alarm ON alarm.alarmlogID = number"
        " WHERE alarm.pagerstate = '2'");
    statement.Step();
    return {statement.Number(0), static_cast<std::time_t>(statement.Number(1))};
}

std::time_t OldestUntried(Connection& connection) {
    return static_cast<std::time_t>(
        Statement(connection,
                  "SELECT coalesce(min(CAST(alarm.timestamp AS INTEGER)), 0) FROM"
                  " (SELECT AlmLogID AS number, PagerDescr AS pager FROM AlarmFwd_PagerEvents"
                  "   WHERE PagerState = '2'"
                  "  UNION ALL SELECT alarm, pager FROM Host_Deliveries WHERE answer IS NULL)"
                  " AS owed JOIN AlarmLog AS alarm ON alarm.alarmlogID = number"
                  " WHERE alarm.pagerstate = '2' AND NOT EXISTS (SELECT 1 FROM Host_Sends AS sent"
                  "  WHERE sent.alarm = owed.number AND sent.pager = owed.pager)")
            .FirstNumber());
}

std::vector<std::string> PagersWithPages(Connection& connection) {
    return Statement(connection,
                     WaitingPagers() +
                         " AND EXISTS (SELECT 1 FROM Host_Deliveries"
                         "  JOIN AlarmLog ON alarmlogID = Host_Deliveries.alarm"
                         "  WHERE Host_Deliveries.pager = waiting.pager AND answer IS NULL"
                         "  AND line = '' AND unknown = 0 AND alarmack IN ('', '0'))"
                         " UNION SELECT pager FROM Host_Deliveries"
                         " JOIN AlarmLog ON alarmlogID = Host_Deliveries.alarm"
                         " WHERE answer IS NULL AND line > '' AND alarmack IN ('', '0')"
                         " UNION SELECT PagerDescr FROM AlarmFwd_PagerEvents"
                         " JOIN AlarmLog ON alarmlogID = AlmLogID"
                         " WHERE AlarmFwd_PagerEvents.PagerState = '2' AND alarmack IN ('', '0')")
        .Texts();
}

std::map<std::string, int64_t> CountByLine(Connection& connection) {
    std::map<std::string, int64_t> counts;
    Statement statement(connection,
                        "SELECT line, count(*) FROM (SELECT line FROM AlarmFwd_PagerEvents"
                        "  WHERE PagerState = '2' UNION ALL"
                        "  SELECT line FROM Host_Deliveries WHERE line > '' AND " +
                            kWaitsForALibrary +
                            ") AS owed"
                            " WHERE line <> '' GROUP BY line");
    while (statement.Step()) {
        counts.emplace(statement.Text(0), statement.Number(1));
    }
    return counts;
}

std::map<std::string, LinePages> PagesByLine(Connection& connection) {
    std::map<std::string, LinePages> lines;
    // Two kinds of pages: still to be handed over, and in the library.
    Statement statement(connection,
                        std::string("SELECT line, count(*), count(*) FROM Host_Deliveries"
                                    " WHERE answer IS NULL AND line > '' GROUP BY line"
                                    " UNION ALL SELECT line, sum(CASE WHEN ") +
                            kWasSent +
                            " THEN 0 ELSE 1 END), count(*)"
                            " FROM AlarmFwd_PagerEvents AS event WHERE PagerState = '2'"
                            " GROUP BY line");
    while (statement.Step()) {
        LinePages& line = lines[std::string(statement.Text(0))];
        line.untried += statement.Number(1);
        line.all += statement.Number(2);
    }
    return lines;
}

}  // namespace host
