// Reading: the columns of a table as they are, and rows in the form in which the library takes
// them.
#ifndef PAGERFWD_HOST_STORE_ROWS_H
#define PAGERFWD_HOST_STORE_ROWS_H

#include <pagerfwd/table_access.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/conditions.h"
#include "host/store/connection.h"
#include "host/store/schema.h"

namespace host {

// The columns of the library that a table really has, in the order of the rows handed out. A
// database of an older make may lack some; the host's own columns are never among them.
struct TableLayout {
    const Table* table;
    std::vector<std::string> columns;

    // The place of a column within a row, -1 when there is none.
    int32_t IndexOf(std::string_view column) const;
};

// Throws StoreError when there is no such table, or not enough of it to be read.
TableLayout ReadLayout(Connection& connection, std::string_view table);

// The layouts of one connection's database, read again when its tables have changed. Each stays
// valid for as long as it is held.
class KnownLayouts {
 public:
    std::shared_ptr<const TableLayout> Find(Connection& connection, std::string_view table);

 private:
    int64_t schema_ = 0;
    std::vector<std::shared_ptr<const TableLayout>> layouts_;
};

struct RowSetFree {
    void operator()(DBAsciiRowSet rows) const;
};
using OwnedRowSet = std::unique_ptr<char**, RowSetFree>;

struct Rows {
    int32_t count = 0;
    OwnedRowSet cells;  // null when count is 0; one piece of memory
};

// All rows, in order of insertion, their cells as they are.
void ForEachRow(Connection& connection, const TableLayout& layout,
                const std::function<void(std::vector<std::string> cells)>& take);

// The rows for which the terms hold, in order of insertion; their texts without control characters.
// A row that is too large to be read is left out, and told as a fault.
Rows ReadRows(Connection& connection, const TableLayout& layout, const std::vector<Term>& terms);

}  // namespace host

#endif
