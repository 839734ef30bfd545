// Cells that are too large. Tested by tests/unit/host/large_cells_test.cpp.
#include "host/store/large_cells.h"

#include "host/store/schema.h"
#include "host/store/tables/history.h"

namespace host {
namespace {

// By what an alarm is found.
const std::vector<std::string> kOfAlarm = {"alarmlogID", "pagerstate", "timestamp", "alarmack"};
// Of the history, the texts that come from an event.
const std::vector<std::string> kOfChange = {"alarm", "alarm_group", "pager", "state",
                                            "tries", "line",        "note"};
const std::vector<std::string> kOfDelivery = {"alarm", "alarm_group", "pager", "line"};

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

std::vector<std::string> RowsWhere(Connection& connection, const char* table,
                                   const std::string& condition) {
    return Statement(connection, "SELECT row_id FROM " + Quoted(table) + " WHERE " + condition)
        .Texts();
}

// Returns which rows that were.
std::vector<std::string> Empty(Connection& connection, const char* table,
                               const std::vector<std::string>& columns, const char* state,
                               const std::string& ended, std::vector<std::string>& names) {
    const std::string condition = AnyIsLarge(columns);
    std::vector<std::string> rows = RowsWhere(connection, table, condition);
    if (!rows.empty()) {
        Statement(connection, "UPDATE " + Quoted(table) + " SET " + Emptied(columns, state, ended) +
                                  " WHERE " + condition)
            .Run();
    }
    for (const std::string& row : rows) {
        names.push_back("row " + row + " of " + table);
    }
    return rows;
}

std::vector<std::string> ColumnsOfEvents() {
    std::vector<std::string> columns = FindTable(kEvents)->columns;
    columns.emplace_back(kLineColumn);
    return columns;
}

// Behind the change: the history could hold no large cell either.
void EmptyEvents(Connection& connection, std::vector<std::string>& names) {
    const std::string ended =
        "CASE WHEN " + IsLarge("PagerState") + " OR PagerState = '2' THEN '3' ELSE PagerState END";
    for (const std::string& row :
         Empty(connection, kEvents, ColumnsOfEvents(), "PagerState", ended, names)) {
        WriteHistory(connection, {kChanged}, " WHERE row_id = ?", {{"row_id", "=", row}});
    }
}

// Of a delivery, too, what it is found by: the alarm's other pages are left to it.
void DropDeliveries(Connection& connection, std::vector<std::string>& names) {
    Statement(connection, "DELETE FROM Host_Deliveries WHERE " + AnyIsLarge(kOfDelivery)).Run();
    if (connection.Changes() > 0) {
        names.push_back(std::to_string(connection.Changes()) + " row(s) of Host_Deliveries");
    }
}

// A temporary view goes before the table whose name it has.
void Cover(Connection& connection, const std::string& table) {
    std::string cells;
    for (const std::string& column : connection.ColumnsOf(table)) {
        cells += (cells.empty() ? "CASE WHEN " : ", CASE WHEN ") + IsLarge(column) +
                 " THEN '' ELSE " + Quoted(column) + " END AS " + Quoted(column);
    }
    Statement(connection, "CREATE TEMP VIEW " + Quoted(table) + " AS SELECT " + cells +
                              " FROM main." + Quoted(table))
        .Run();
}

}  // namespace

void HideLargeCells(Connection& connection) {
    if (connection.Can().hides_large) {
        return;
    }
    connection.Execute("PRAGMA temp_store = MEMORY");
    Statement tables(connection,
                     "SELECT name FROM main.sqlite_schema WHERE type = 'table'"
                     " AND name NOT LIKE 'sqlite^_%' ESCAPE '^'");
    for (const std::string& table : tables.Texts()) {
        Cover(connection, table);
    }
}

std::vector<std::string> EmptyLargeCells(Connection& connection) {
    const Connection::AnyLength any_length(connection);
    std::vector<std::string> names;
    WriteTransaction transaction(connection);
    Empty(connection, kAlarmLog, kOfAlarm, "pagerstate", "'3'", names);
    EmptyEvents(connection, names);
    DropDeliveries(connection, names);
    Statement(connection, "DELETE FROM Host_History WHERE " + AnyIsLarge(kOfChange)).Run();
    transaction.Commit();
    return names;
}

}  // namespace host
