// Reading of tables. Tested by tests/unit/host/store_contract_test.cpp.
#include "host/store/rows.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "host/store/faults.h"
#include "host/store/line_view.h"
#include "host/store/where.h"
#include "host/text/controls.h"

namespace host {
namespace {

bool Contains(const std::vector<std::string>& columns, std::string_view wanted) {
    return std::any_of(columns.begin(), columns.end(),
                       [wanted](const std::string& column) { return SameColumn(column, wanted); });
}

std::string SelectStatement(const TableLayout& layout, const std::vector<Term>& terms) {
    std::string columns;
    for (const std::string& column : layout.columns) {
        columns += (columns.empty() ? "" : ", ") + Quoted(column);
    }
    // Without the order, an index that SQLite chooses would decide it.
    return "SELECT " + columns + " FROM " + Quoted(layout.table->name) +
           WhereInSight(*layout.table, terms) + " ORDER BY row_id";
}

// Copies the cells into one piece of memory: the rows, the cells of all rows, then their texts.
// Those are given one behind the other, a zero byte after each.
OwnedRowSet Pack(const std::string& texts, size_t height, size_t width) {
    const size_t count = height * width;
    void* memory = std::malloc(height * sizeof(char**) + count * sizeof(char*) + texts.size());
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    auto** rows = static_cast<char***>(memory);
    auto** cells = reinterpret_cast<char**>(rows + height);
    auto* text = reinterpret_cast<char*>(cells + count);
    std::copy(texts.begin(), texts.end(), text);
    for (size_t row = 0; row < height; ++row) {
        rows[row] = cells + row * width;
    }
    for (size_t cell = 0; cell < count; ++cell) {
        cells[cell] = text;
        text += std::strlen(text) + 1;
    }
    return OwnedRowSet(rows);
}

}  // namespace

int32_t TableLayout::IndexOf(std::string_view column) const {
    const auto found =
        std::find_if(columns.begin(), columns.end(),
                     [column](const std::string& own) { return SameColumn(own, column); });
    return found == columns.end() ? -1 : static_cast<int32_t>(found - columns.begin());
}

TableLayout ReadLayout(Connection& connection, std::string_view name) {
    const Table* table = FindTable(name);
    if (table == nullptr) {
        throw StoreError("the library has no table of this name");
    }
    const std::vector<std::string> existing = connection.ColumnsOf(name);
    if (existing.empty()) {
        throw StoreError("the database has no such table");
    }
    TableLayout layout{table, {}};
    for (const std::string& column : table->columns) {
        if (Contains(existing, column)) {
            layout.columns.push_back(column);
        } else if (table->positional) {
            throw StoreError("the column " + column + " is missing, and all behind it would shift");
        }
    }
    if (layout.columns.empty()) {
        throw StoreError("the table has none of the library's columns");
    }
    return layout;
}

std::shared_ptr<const TableLayout> KnownLayouts::Find(Connection& connection,
                                                      std::string_view table) {
    const int64_t schema = connection.SchemaVersion();
    if (schema != schema_) {
        layouts_.clear();
        schema_ = schema;
    }
    for (const std::shared_ptr<const TableLayout>& layout : layouts_) {
        if (table == layout->table->name) {
            return layout;
        }
    }
    return layouts_.emplace_back(
        std::make_shared<const TableLayout>(ReadLayout(connection, table)));
}

void RowSetFree::operator()(DBAsciiRowSet rows) const {
    std::free(rows);
}

namespace {

// The cells of rows, one behind the other.
struct Cells {
    size_t height = 0;
    std::string texts;

    // The row that the statement stands on.
    void Take(const Statement& statement, const TableLayout& layout) {
        std::string row;
        for (size_t column = 0; column < layout.columns.size(); ++column) {
            const std::string_view cell = InView(*layout.table, layout.columns[column],
                                                 statement.Text(static_cast<int>(column)));
            row.append(WithoutControls(cell)).push_back('\0');
        }
        texts += row;
        ++height;
    }
};

Cells ReadAtOnce(Connection& connection, const TableLayout& layout,
                 const std::vector<Term>& terms) {
    Cells cells;
    Statement statement(connection, SelectStatement(layout, terms));
    BindTerms(statement, terms);
    while (statement.Step()) {
        cells.Take(statement, layout);
    }
    return cells;
}

std::vector<int64_t> RowIds(Connection& connection, const TableLayout& layout,
                            const std::vector<Term>& terms) {
    Statement statement(connection, "SELECT row_id FROM " + Quoted(layout.table->name) +
                                        WhereInSight(*layout.table, terms) + " ORDER BY row_id");
    BindTerms(statement, terms);
    return statement.Numbers();
}

// One that can't be read doesn't hide the others.
Cells ReadOneByOne(Connection& connection, const TableLayout& layout,
                   const std::vector<Term>& terms) {
    Cells cells;
    for (const int64_t row : RowIds(connection, layout, terms)) {
        const std::string number = std::to_string(row);
        try {
            const Cells one = ReadAtOnce(connection, layout, {{"row_id", "=", number}});
            cells.height += one.height;
            cells.texts += one.texts;
        } catch (const RowTooLarge& error) {
            ReportFault("row " + number + " of " + layout.table->name +
                        " is left out: " + error.what());
        }
    }
    return cells;
}

Cells ReadCells(Connection& connection, const TableLayout& layout, const std::vector<Term>& terms) {
    try {
        return ReadAtOnce(connection, layout, terms);
    } catch (const RowTooLarge&) {
        return ReadOneByOne(connection, layout, terms);
    }
}

}  // namespace

void ForEachRow(Connection& connection, const TableLayout& layout,
                const std::function<void(std::vector<std::string> cells)>& take) {
    Statement statement(connection, SelectStatement(layout, {}));
    while (statement.Step()) {
        std::vector<std::string> cells;
        for (size_t column = 0; column < layout.columns.size(); ++column) {
            cells.emplace_back(statement.Text(static_cast<int>(column)));
        }
        take(std::move(cells));
    }
}

Rows ReadRows(Connection& connection, const TableLayout& layout, const std::vector<Term>& terms) {
    const Cells cells = ReadCells(connection, layout, terms);
    if (cells.height == 0) {
        return {};
    }
    return {static_cast<int32_t>(cells.height),
            Pack(cells.texts, cells.height, layout.columns.size())};
}

}  // namespace host
