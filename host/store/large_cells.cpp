// Cells that are too large. Tested by tests/unit/host/large_cells_test.cpp.
#include "host/store/large_cells.h"

#include "host/store/schema.h"

namespace host {
namespace {

// By what an alarm is found.
const std::vector<std::string> kOfAlarm = {"alarmlogID", "pagerstate", "timestamp", "alarmack"};
// Of the history, the texts that come from an event.
const std::vector<std::string> kOfChange = {"alarm", "alarm_group", "pager", "state", "tries"};

std::string IsLarge(const std::string& column) {
    return "length(CAST(" + Quoted(column) + " AS BLOB)) > " + std::to_string(kLongestCell);
}

std::string AnyIsLarge(const std::vector<std::string>& columns) {
    std::string condition;
    for (const std::string& column : columns) {
        condition += (condition.empty() ? "" : " OR ") + IsLarge(column);
    }
    return condition;
}

// With a state that says that nothing more is to be done.
std::string Emptied(const std::vector<std::string>& columns, const char* state,
                    const std::string& ended) {
    std::string set;
    for (const std::string& column : columns) {
        if (!SameColumn(column, state)) {
            set += Quoted(column) + " = CASE WHEN " + IsLarge(column) + " THEN '' ELSE " +
                   Quoted(column) + " END, ";
        }
    }
    return set + Quoted(state) + " = " + ended;
}

void NameRows(Connection& connection, const char* table, const std::string& condition,
              std::vector<std::string>& names) {
    Statement statement(connection, "SELECT row_id FROM " + Quoted(table) + " WHERE " + condition);
    while (statement.Step()) {
        names.push_back("row " + std::to_string(statement.Number(0)) + " of " + table);
    }
}

void Empty(Connection& connection, const char* table, const std::vector<std::string>& columns,
           const char* state, const std::string& ended, std::vector<std::string>& names) {
    const std::string condition = AnyIsLarge(columns);
    const size_t before = names.size();
    NameRows(connection, table, condition, names);
    if (names.size() > before) {
        Statement(connection, "UPDATE " + Quoted(table) + " SET " + Emptied(columns, state, ended) +
                                  " WHERE " + condition)
            .Run();
    }
}

}  // namespace

std::vector<std::string> EmptyLargeCells(Connection& connection) {
    const Connection::AnyLength any_length(connection);
    std::vector<std::string> names;
    WriteTransaction transaction(connection);
    Empty(connection, kAlarmLog, kOfAlarm, "pagerstate", "'3'", names);
    Empty(
        connection, kEvents, FindTable(kEvents)->columns, "PagerState",
        "CASE WHEN " + IsLarge("PagerState") + " OR PagerState = '2' THEN '3' ELSE PagerState END",
        names);
    Statement(connection, "DELETE FROM Host_History WHERE " + AnyIsLarge(kOfChange)).Run();
    transaction.Commit();
    return names;
}

}  // namespace host
