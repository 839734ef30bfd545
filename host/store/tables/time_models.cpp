// Hours in the tables. Tested by tests/unit/host/week_grid_test.cpp.
#include "host/store/tables/time_models.h"

#include "host/store/rows.h"
#include "host/store/schema.h"
#include "host/store/writes.h"

namespace host {
namespace {

const std::vector<std::string>& TimeModelColumns() {
    return FindTable(kTimeModels)->columns;
}

std::string HourColumns(const char* behindEach) {
    std::string columns;
    for (size_t hour = 0; hour < Week().size(); ++hour) {
        columns += (hour == 0 ? "" : ", ") + Quoted(TimeModelColumns().at(hour)) + behindEach;
    }
    return columns;
}

const char* CellOf(const Week& week, size_t hour) {
    return week.test(hour) ? "1" : "0";
}

void InsertWeek(Connection& connection, const std::string& name, const Week& week) {
    ElementList cells;
    for (size_t hour = 0; hour < week.size(); ++hour) {
        cells.Set(TimeModelColumns().at(hour), CellOf(week, hour));
    }
    cells.Set("description", name);
    InsertRow(connection, ReadLayout(connection, kTimeModels), cells);
}

}  // namespace

std::vector<NamedWeek> ReadWeeks(Connection& connection) {
    std::vector<NamedWeek> weeks;
    Statement statement(connection, "SELECT description, " + HourColumns("") + " FROM " +
                                        Quoted(kTimeModels) + " ORDER BY row_id");
    while (statement.Step()) {
        NamedWeek named{std::string(statement.Text(0)), {}};
        for (size_t hour = 0; hour < named.week.size(); ++hour) {
            named.week.set(hour, statement.Text(static_cast<int>(hour) + 1).substr(0, 1) == "1");
        }
        weeks.push_back(std::move(named));
    }
    return weeks;
}

std::optional<Week> FindWeek(Connection& connection, std::string_view name) {
    for (const NamedWeek& named : ReadWeeks(connection)) {
        if (named.name == name) {
            return named.week;
        }
    }
    return std::nullopt;
}

std::vector<std::string> TimeModelNames(Connection& connection) {
    return Statement(connection, "SELECT description FROM AlarmFwd_TMSetting ORDER BY row_id")
        .Texts();
}

void StoreWeek(Connection& connection, const std::string& name, const Week& week) {
    WriteTransaction transaction(connection);
    Statement update(connection, "UPDATE " + Quoted(kTimeModels) + " SET " + HourColumns(" = ?") +
                                     " WHERE row_id = (SELECT min(row_id) FROM " +
                                     Quoted(kTimeModels) + " WHERE description = ?)");
    for (size_t hour = 0; hour < week.size(); ++hour) {
        update.Bind(CellOf(week, hour));
    }
    update.Bind(std::string_view(name)).Run();
    if (connection.Changes() == 0) {
        InsertWeek(connection, name, week);
    }
    transaction.Commit();
}

}  // namespace host
