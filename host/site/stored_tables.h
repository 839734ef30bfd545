// The tables of a site as they are in a database, cell by cell, with what is wrong about them.
#ifndef PAGERFWD_HOST_SITE_STORED_TABLES_H
#define PAGERFWD_HOST_SITE_STORED_TABLES_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/site/findings.h"
#include "host/store/connection.h"

namespace host {

// A row, with the line by which findings name it.
struct StoredRow {
    int line;
    std::vector<std::string> cells;
};

class StoredTable {
 public:
    std::vector<std::string> columns;
    std::vector<StoredRow> rows;

    // Empty where there is no such column, as the library reads it.
    std::string Cell(const StoredRow& row, std::string_view column) const;
};

// Gives each row that is read a line of its own.
class StoredTables {
 public:
    explicit StoredTables(Connection& connection);

    // Findings that name these rows, for as long as they live.
    Findings MakeFindings() const;

    // All rows, in order. A table that isn't there, or lacks columns, is a finding.
    StoredTable Read(const char* table, Findings& findings);

 private:
    Connection& connection_;
    std::shared_ptr<std::vector<std::string>> places_;
};

}  // namespace host

#endif
