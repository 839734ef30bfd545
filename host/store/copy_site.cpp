// Copying. Tested by tests/unit/host/copy_site_test.cpp and postgres_test.cpp.
#include "host/store/copy_site.h"

#include <algorithm>
#include <string_view>

#include "host/store/rights.h"
#include "host/store/schema.h"

namespace host {
namespace {

// A server ends a session that says nothing within a transaction.
constexpr int64_t kRowsBetweenWords = 1000;

// FNV-1a: of every row of a large table no more is kept.
class Digest {
 public:
    void Add(std::string_view bytes) {
        for (const char c : bytes) {
            value_ = (value_ ^ static_cast<unsigned char>(c)) * 1099511628211U;
        }
    }
    uint64_t Value() const { return value_; }

 private:
    uint64_t value_ = 14695981039346656037U;
};

class TableCopy {
 public:
    TableCopy(Connection& from, Connection& to, const std::string& table)
        : from_(from),
          to_(to),
          table_(table),
          columns_(from.ColumnsOf(table)),
          numbered_(std::count(columns_.begin(), columns_.end(), "row_id") > 0) {
        if (columns_.empty() || columns_.size() != to.ColumnsOf(table).size()) {
            throw StoreError(to.Name() + ": its table " + table +
                             " has other columns than that of " + from.Name());
        }
    }

    int64_t Copy() {
        RequireNoRow();
        const int64_t rows = Insert();
        if (numbered_) {
            to_.GoOnBehind(table_);
        }
        Compare();
        return rows;
    }

 private:
    std::string Select() const {
        std::string columns;
        for (const std::string& column : columns_) {
            columns += (columns.empty() ? "" : ", ") + Quoted(column);
        }
        return "SELECT " + columns + " FROM " + Quoted(table_) +
               (numbered_ ? " ORDER BY row_id" : "");
    }

    std::string InsertText() const {
        std::string columns;
        std::string values;
        for (const std::string& column : columns_) {
            columns += (columns.empty() ? "" : ", ") + Quoted(column);
            values += values.empty() ? "?" : ", ?";
        }
        return "INSERT INTO " + Quoted(table_) + " (" + columns + ") VALUES (" + values + ")";
    }

    void RequireNoRow() const {
        if (Statement(to_, "SELECT 1 FROM " + Quoted(table_) + " LIMIT 1").Step()) {
            throw StoreError(to_.Name() + ": holds a site already: there are rows in " + table_);
        }
    }

    int64_t Insert() const {
        int64_t rows = 0;
        Statement source(from_, Select());
        const std::string insert = InsertText();
        for (; source.Step(); ++rows) {
            Statement row(to_, insert);
            for (int column = 0; column < source.Columns(); ++column) {
                if (source.IsNull(column)) {
                    row.BindNull();
                } else {
                    row.Bind(source.Text(column));
                }
            }
            row.Run();
            if (rows % kRowsBetweenWords == 0) {
                Statement(from_, "SELECT 1").Run();
            }
        }
        return rows;
    }

    void Compare() const {
        if (RowsIn(from_) != RowsIn(to_)) {
            throw StoreError(to_.Name() + ": the rows of " + table_ + " have become others");
        }
    }

    // In an order that both have.
    std::vector<uint64_t> RowsIn(Connection& connection) const {
        std::vector<uint64_t> rows;
        Statement row(connection, Select());
        while (row.Step()) {
            Digest digest;
            for (int column = 0; column < row.Columns(); ++column) {
                digest.Add(row.IsNull(column) ? "-" : "+");
                digest.Add(row.Text(column));
                digest.Add(std::string(1, '\0'));
            }
            rows.push_back(digest.Value());
        }
        std::sort(rows.begin(), rows.end());
        return rows;
    }

    Connection& from_;
    Connection& to_;
    const std::string table_;
    const std::vector<std::string> columns_;
    const bool numbered_;  // its rows have numbers of their own
};

}  // namespace

std::vector<CopiedTable> CopySite(Connection& from, Connection& to) {
    WriteTransaction reading(from);
    WriteTransaction writing(to);
    std::vector<CopiedTable> copied;
    for (const TableRights& rights : AllTables()) {
        copied.push_back({rights.table, TableCopy(from, to, rights.table).Copy()});
    }
    writing.Commit();
    return copied;
}

}  // namespace host
