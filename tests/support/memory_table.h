// One table of a MemoryStore: columns, and rows in order of insertion.
//
// Threads    None of its own: the store guards it.
#ifndef PAGERFWD_TESTS_SUPPORT_MEMORY_TABLE_H
#define PAGERFWD_TESTS_SUPPORT_MEMORY_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/memory_store.h"

namespace test_support {

// What a condition demands of a row: all of its terms.
struct Term {
    std::string column;
    std::string text;
    bool differs = false;  // the cell is not the text
};
using Condition = std::vector<Term>;

struct MemoryRow {
    uint64_t id;  // its own for as long as the table lives
    std::vector<MemoryStore::Cell> cells;
};

class MemoryTable {
 public:
    explicit MemoryTable(std::vector<std::string> columns) : columns_(std::move(columns)) {}

    // The place of a column, whatever its case; -1 when there is none.
    int32_t Find(std::string_view column) const;
    // The same; throws std::out_of_range when there is none.
    size_t Place(std::string_view column) const;

    size_t Width() const { return columns_.size(); }
    const std::vector<MemoryRow>& Rows() const { return rows_; }

    // Throws std::out_of_range for a column that the table does not have; so do the others.
    std::vector<MemoryRow> Select(const Condition& condition) const;
    void Append(const MemoryStore::Cells& cells);
    // False when the row is gone.
    bool Update(uint64_t id, const MemoryStore::Cells& cells);
    // Returns how many rows that were.
    size_t Delete(const Condition& condition);

 private:
    bool Fits(const MemoryRow& row, const Condition& condition) const;
    void Fill(MemoryRow& row, const MemoryStore::Cells& cells) const;

    std::vector<std::string> columns_;
    std::vector<MemoryRow> rows_;
    uint64_t next_id_ = 1;
};

}  // namespace test_support

#endif
