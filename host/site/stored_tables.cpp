// Cells of a database. Tested by tests/unit/host/database_check_test.cpp.
#include "host/site/stored_tables.h"

#include <algorithm>
#include <utility>

#include "host/store/rows.h"
#include "host/store/schema.h"

namespace host {
namespace {

constexpr const char* kMoveOver =
    "Make a new database with pagerfwd init, and move the site over with pagerfwd export and "
    "import.";

// What comes of a column that is missing, where its rows don't show it.
struct MissingColumn {
    const char* table;
    const char* column;
    const char* consequence;
};
constexpr MissingColumn kMissing[] = {
    {kPorts, "Description", "No port is ever found: every page fails (result 5)."},
    {kPorts, "Select",
     "No port counts as one with a modem: numbers that are built in are dialled."},
    {kPagers, "description", "No pager is ever found: every page fails (result -1)."},
    {kEvents, "AlmLogID", "Pending pages are lost at a restart, and can't be acknowledged."},
    {kEvents, "PagerDescr", "Pending pages are lost at a restart."},
    {kEvents, "PagerState", "Pending pages are lost at a restart."},
    {kAlarmLog, "alarmlogID", "Every alarm counts as acknowledged: no page is ever sent."},
    {kAlarmLog, "pagerstate",
     "No acknowledgement is seen, and no pending page survives a restart."},
    {kAlarmLog, "details", "Every page is sent without the alarm's text."},
};

std::string ConsequenceOf(const char* table, const std::string& column) {
    for (const MissingColumn& missing : kMissing) {
        if (std::string_view(missing.table) == table && column == missing.column) {
            return missing.consequence;
        }
    }
    return "The library takes it for empty in every row.";
}

}  // namespace

std::string StoredTable::Cell(const StoredRow& row, std::string_view column) const {
    const auto found =
        std::find_if(columns.begin(), columns.end(),
                     [column](const std::string& own) { return SameColumn(own, column); });
    return found == columns.end() ? std::string()
                                  : row.cells.at(static_cast<size_t>(found - columns.begin()));
}

StoredTables::StoredTables(Connection& connection)
    : connection_(connection), places_(std::make_shared<std::vector<std::string>>()) {}

Findings StoredTables::MakeFindings() const {
    return Findings([places = places_](int line) {
        const auto at = static_cast<size_t>(line) - 1;
        return at < places->size() ? (*places)[at] : std::string("the site");
    });
}

StoredTable StoredTables::Read(const char* table, Findings& findings) {
    places_->push_back("table " + std::string(table));
    const int line = static_cast<int>(places_->size());
    StoredTable stored;
    try {
        const TableLayout layout = ReadLayout(connection_, table);
        stored.columns = layout.columns;
        for (const std::string& column : layout.table->columns) {
            if (layout.IndexOf(column) < 0) {
                findings.Error(line, "there is no column " + column, ConsequenceOf(table, column),
                               kMoveOver);
            }
        }
        ForEachRow(connection_, layout, [&](std::vector<std::string> cells) {
            places_->push_back("row " + std::to_string(stored.rows.size() + 1) + " of " + table);
            stored.rows.push_back({static_cast<int>(places_->size()), std::move(cells)});
        });
    } catch (const StoreError& reason) {
        findings.Error(line, reason.what(), "The library finds nothing in it: every page fails.",
                       kMoveOver);
    }
    return stored;
}

}  // namespace host
