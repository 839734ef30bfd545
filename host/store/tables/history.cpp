// The history. Tested by tests/unit/host/event_history_test.cpp and history_test.cpp.
#include "host/store/tables/history.h"

#include "host/store/schema.h"
#include "host/store/tables/spooled.h"
#include "host/store/tables/trail.h"
#include "host/store/where.h"
#include "host/trace/traced_page.h"

namespace host {
namespace {

const std::string kInsert =
    "INSERT INTO Host_History (at, change, alarm, alarm_group, pager, state, tries, line, note) ";

int64_t Now() {
    return static_cast<int64_t>(std::time(nullptr));
}

}  // namespace

void WriteHistory(Connection& connection, const HistoryRow& row) {
    Statement(connection, kInsert + "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .Bind(Now())
        .Bind(row.change)
        .Bind(row.alarm)
        .Bind(row.group)
        .Bind(row.pager)
        .Bind(row.state)
        .Bind(row.tries)
        .Bind(row.line)
        .Bind(row.note)
        .Run();
}

void WriteHistory(Connection& connection, const EventChange& change, const std::string& condition,
                  const std::vector<Term>& terms) {
    const auto cell = [](const std::string* text, const char* column) {
        return text == nullptr ? std::string(column) : "?";
    };
    Statement statement(connection, kInsert + "SELECT ?, ?, AlmLogID, AlmGroup, PagerDescr, " +
                                        cell(change.state, "PagerState") + ", " +
                                        cell(change.tries, "PagerRetries") +
                                        ", line, ? FROM AlarmFwd_PagerEvents" + condition +
                                        " ORDER BY row_id");
    statement.Bind(Now()).Bind(change.change);
    for (const std::string* const text : {change.state, change.tries}) {
        if (text != nullptr) {
            statement.Bind(*text);
        }
    }
    statement.Bind(change.note);
    BindTerms(statement, terms);
    statement.Run();
}

void RenamePage(Connection& connection, const PageKey& page, const std::string& group,
                const std::string& pager) {
    Statement(connection,
              "UPDATE Host_History SET alarm_group = ?, pager = ?"
              " WHERE alarm = ? AND alarm_group = ? AND pager = ?")
        .Bind(group)
        .Bind(pager)
        .Bind(page.alarm)
        .Bind(page.group)
        .Bind(page.pager)
        .Run();
}

std::vector<PageChange> ChangesOf(Connection& connection, const PageKey& page) {
    std::vector<PageChange> changes;
    Statement statement(connection,
                        "SELECT at, change, state, CAST(tries AS INTEGER), row_id, line, note"
                        " FROM Host_History"
                        " WHERE (alarm = ?1 AND pager = ?2 AND alarm_group = ?3)"
                        " OR (alarm = '' AND pager = '' AND change = ?4 AND row_id >"
                        "  (SELECT min(row_id) FROM Host_History"
                        "   WHERE alarm = ?1 AND pager = ?2 AND alarm_group = ?3))"
                        " ORDER BY row_id");
    statement.Bind(page.alarm).Bind(page.pager).Bind(page.group).Bind(kEngineStarts);
    while (statement.Step()) {
        changes.push_back({static_cast<std::time_t>(statement.Number(0)),
                           std::string(statement.Text(1)), std::string(statement.Text(2)),
                           statement.Number(3), statement.Number(4), std::string(statement.Text(5)),
                           std::string(statement.Text(6))});
    }
    return changes;
}

std::vector<PageChangeOf> ChangesBehind(Connection& connection, int64_t row, int64_t count) {
    std::vector<PageChangeOf> changes;
    Statement statement(connection,
                        "SELECT alarm, alarm_group, pager, at, change, state,"
                        " CAST(tries AS INTEGER), row_id, line, note FROM Host_History"
                        " WHERE row_id > ? AND alarm <> '' ORDER BY row_id LIMIT ?");
    statement.Bind(row).Bind(count);
    while (statement.Step()) {
        changes.push_back(
            {KeyIn(statement),
             {static_cast<std::time_t>(statement.Number(3)), std::string(statement.Text(4)),
              std::string(statement.Text(5)), statement.Number(6), statement.Number(7),
              std::string(statement.Text(8)), std::string(statement.Text(9))}});
    }
    return changes;
}

int64_t LastChange(Connection& connection) {
    return Statement(connection, "SELECT coalesce(max(row_id), 0) FROM Host_History").FirstNumber();
}

std::vector<PageKey> PagesInHistory(Connection& connection, const std::string& alarm) {
    Statement statement(connection,
                        "SELECT alarm, alarm_group, pager FROM Host_History WHERE alarm = ?"
                        " GROUP BY alarm, alarm_group, pager ORDER BY min(row_id)");
    return KeysIn(statement.Bind(alarm));
}

namespace {

// Of a row behind another, up to a third: a page may have ended with it.
constexpr const char* kMayEndPages =
    "row_id > ? AND row_id <= ? AND alarm <> ''"
    " AND (state <> '2' OR change IN ('removed', 'cancelled'))";

}  // namespace

std::vector<PageKey> PagesThatMayHaveEnded(Connection& connection, int64_t first, int64_t last) {
    Statement statement(
        connection, std::string("SELECT alarm, alarm_group, pager FROM Host_History WHERE ") +
                        kMayEndPages + " GROUP BY alarm, alarm_group, pager ORDER BY max(row_id)");
    return KeysIn(statement.Bind(first).Bind(last));
}

int64_t BehindEnds(Connection& connection, int64_t first, int64_t last, int64_t count) {
    Statement statement(connection, std::string("SELECT row_id FROM Host_History WHERE ") +
                                        kMayEndPages + " ORDER BY row_id LIMIT 1 OFFSET ?");
    statement.Bind(first).Bind(last).Bind(count - 1);
    return statement.Step() ? statement.Number(0) : last;
}

std::vector<PageKey> PagesNotOwed(Connection& connection, int64_t count) {
    Statement statement(
        connection,
        "SELECT alarm, alarm_group, pager FROM"
        " (SELECT alarm, alarm_group, pager, max(row_id) AS last FROM Host_History AS history"
        "   WHERE alarm <> '' AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
        "    WHERE AlmLogID = history.alarm AND AlmGroup = history.alarm_group"
        "    AND PagerDescr = history.pager AND PagerState = '2')"
        "   AND NOT EXISTS (SELECT 1 FROM Host_Deliveries WHERE alarm = history.alarm"
        "    AND alarm_group = history.alarm_group AND pager = history.pager AND answer IS NULL)"
        "   GROUP BY alarm, alarm_group, pager ORDER BY last DESC LIMIT ?) AS ended"
        " ORDER BY last");
    return KeysIn(statement.Bind(count));
}

std::string Traced(const std::string& column) {
    return "substr(CAST(" + column + " AS BLOB), 1, " + std::to_string(kTracedTextKept) + ")";
}

bool HadPage(Connection& connection, const PageKey& traced) {
    Statement statement(connection, "SELECT 1 FROM Host_History WHERE alarm = ? AND " +
                                        Traced("pager") + " = CAST(? AS BLOB) AND " +
                                        Traced("alarm_group") + " = CAST(? AS BLOB) LIMIT 1");
    return statement.Bind(traced.alarm).Bind(traced.pager).Bind(traced.group).Step();
}

void NoteEngineStart(Connection& connection, const std::string& line) {
    HistoryRow start{kEngineStarts};
    start.line = line;
    WriteTransaction transaction(connection);
    WriteHistory(connection, start);
    transaction.Commit();
}

int32_t ForgetHistory(Connection& connection, std::time_t before) {
    WriteTransaction transaction(connection);
    Statement(connection,
              "DELETE FROM Host_History AS old WHERE alarm <> '' AND NOT EXISTS"
              " (SELECT 1 FROM Host_History WHERE alarm = old.alarm AND pager = old.pager"
              "  AND alarm_group = old.alarm_group AND at >= ?)"
              " AND alarm NOT IN"
              " (SELECT AlmLogID FROM AlarmFwd_PagerEvents WHERE PagerState = '2')"
              " AND alarm NOT IN (SELECT alarm FROM Host_Deliveries WHERE answer IS NULL)")
        .Bind(static_cast<int64_t>(before))
        .Run();
    const int32_t count = connection.Changes();
    // Starts of engines before every page that is left.
    connection.Execute(
        "DELETE FROM Host_History WHERE alarm = '' AND row_id <"
        " (SELECT coalesce(min(row_id), 9223372036854775807)"
        "  FROM Host_History WHERE alarm <> '')");
    Statement(connection,
              "DELETE FROM Host_Deliveries WHERE answer IS NOT NULL AND alarm NOT IN"
              " (SELECT alarm FROM Host_History) AND alarm NOT IN"
              " (SELECT alarmlogID FROM AlarmLog WHERE CAST(timestamp AS INTEGER) >= ?)")
        .Bind(static_cast<int64_t>(before))
        .Run();
    Statement(connection, "DELETE FROM Host_Sends WHERE at < ?")
        .Bind(static_cast<int64_t>(before))
        .Run();
    ForgetTrail(connection, before);
    ForgetSpooled(connection, before);
    transaction.Commit();
    return count;
}

}  // namespace host
