// A table in memory. Tested by tests/unit/support/memory_store_test.cpp.
#include "tests/support/memory_table.h"

#include <strings.h>

#include <algorithm>
#include <stdexcept>

namespace test_support {
namespace {

bool IsSameName(const std::string& left, const std::string& right) {
    return strcasecmp(left.c_str(), right.c_str()) == 0;
}

}  // namespace

int32_t MemoryTable::Find(std::string_view column) const {
    const auto found = std::find_if(
        columns_.begin(), columns_.end(),
        [wanted = std::string(column)](const auto& name) { return IsSameName(name, wanted); });
    return found != columns_.end() ? static_cast<int32_t>(found - columns_.begin()) : -1;
}

size_t MemoryTable::Place(std::string_view column) const {
    const int32_t place = Find(column);
    if (place < 0) {
        throw std::out_of_range("no column " + std::string(column));
    }
    return static_cast<size_t>(place);
}

std::vector<MemoryRow> MemoryTable::Select(const Condition& condition) const {
    for (const Term& term : condition) {
        Place(term.column);  // a mistake also where there is no row
    }
    std::vector<MemoryRow> selected;
    std::copy_if(rows_.begin(), rows_.end(), std::back_inserter(selected),
                 [&](const MemoryRow& row) { return Fits(row, condition); });
    return selected;
}

void MemoryTable::Append(const MemoryStore::Cells& cells) {
    MemoryRow row{next_id_++, std::vector<MemoryStore::Cell>(columns_.size(), "")};
    Fill(row, cells);
    rows_.push_back(std::move(row));
}

bool MemoryTable::Update(uint64_t id, const MemoryStore::Cells& cells) {
    const auto row = std::find_if(rows_.begin(), rows_.end(),
                                  [id](const MemoryRow& each) { return each.id == id; });
    if (row == rows_.end()) {
        return false;
    }
    Fill(*row, cells);
    return true;
}

size_t MemoryTable::Delete(const Condition& condition) {
    const auto rest = std::remove_if(rows_.begin(), rows_.end(),
                                     [&](const MemoryRow& row) { return Fits(row, condition); });
    const auto count = static_cast<size_t>(rows_.end() - rest);
    rows_.erase(rest, rows_.end());
    return count;
}

bool MemoryTable::Fits(const MemoryRow& row, const Condition& condition) const {
    return std::all_of(condition.begin(), condition.end(), [&](const Term& term) {
        const bool is_same = row.cells[Place(term.column)] == term.text;
        return is_same != term.differs;
    });
}

void MemoryTable::Fill(MemoryRow& row, const MemoryStore::Cells& cells) const {
    for (const auto& [column, cell] : cells) {
        row.cells[Place(column)] = cell;
    }
}

}  // namespace test_support
