// Writing the history. Tested by tests/unit/host/event_history_test.cpp.
#include "host/store/event_history.h"

#include <ctime>

#include "host/store/where.h"

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

void SetEventState(Connection& connection, int64_t row, const std::string& state,
                   const char* change, std::string_view note) {
    const std::string number = std::to_string(row);
    WriteHistory(connection, {change, &state, nullptr, note}, " WHERE row_id = ?",
                 {{"row_id", "=", number}});
    Statement(connection, "UPDATE AlarmFwd_PagerEvents SET PagerState = ? WHERE row_id = ?")
        .Bind(state)
        .Bind(row)
        .Run();
}

}  // namespace host
