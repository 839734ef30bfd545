// A MemoryStore's rows: reading, changing, writing. Tested by
// tests/unit/support/memory_store_test.cpp.
#include <algorithm>
#include <cstring>
#include <utility>

#include "tests/support/memory_condition.h"
#include "tests/support/store_state.h"

namespace test_support {
namespace {

constexpr int32_t kFailed = -1;

std::unique_ptr<char[]> CopyOf(const std::string& text) {
    auto copy = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(copy.get(), text.c_str(), text.size() + 1);
    return copy;
}

}  // namespace

StoreState::HandedRows StoreState::HandOut(const std::vector<MemoryRow>& selected) {
    HandedRows handed;
    handed.set = std::make_unique<char**[]>(selected.size());
    for (const MemoryRow& row : selected) {
        auto cells = std::make_unique<char*[]>(row.cells.size());
        for (size_t i = 0; i < row.cells.size(); ++i) {
            if (row.cells[i]) {
                handed.cells.push_back(CopyOf(*row.cells[i]));
                cells[i] = handed.cells.back().get();
            }
        }
        handed.set[handed.rows.size()] = cells.get();
        handed.rows.push_back(std::move(cells));
    }
    return handed;
}

int32_t StoreState::Read(DBAsciiHandle handle, const std::string& table, const Condition& condition,
                         DBAsciiRowSet* rows, bool fails) {
    const MemoryTable* const usable = Usable(handle, table);
    if (usable == nullptr || fails) {
        return kFailed;
    }
    const bool has_columns = std::all_of(condition.begin(), condition.end(), [&](const Term& term) {
        return usable->Find(term.column) >= 0;
    });
    const auto selected = has_columns ? usable->Select(condition) : std::vector<MemoryRow>();
    if (!selected.empty() || hands_out_empty_row_sets) {
        HandedRows handed = HandOut(selected);
        *rows = handed.set.get();
        row_sets_.emplace(*rows, std::move(handed));
    }
    return static_cast<int32_t>(selected.size());
}

int32_t StoreState::FindColumn(DBAsciiHandle handle, const std::string& table,
                               const std::string& column, bool fails) {
    const MemoryTable* const usable = Usable(handle, table);
    return usable != nullptr && !fails ? usable->Find(column) : -1;
}

int32_t StoreState::Free(DBAsciiRowSet rows) {
    row_sets_.erase(rows);
    return 0;
}

int32_t StoreState::AddElement(DBAsciiHandle handle, const std::string& table,
                               const Element& element, DBAsciiElementList* list, bool fails) {
    const MemoryTable* const usable = Usable(handle, table);
    if (usable == nullptr || fails || usable->Find(element.column) < 0) {
        return kFailed;
    }
    if (*list == nullptr) {
        auto made = std::make_unique<ElementList>();
        *list = made.get();
        lists_.emplace(*list, std::move(made));
    }
    const auto found = lists_.find(*list);
    if (found == lists_.end()) {
        return Refuse("the element list has ended");
    }
    found->second->push_back(element);
    return 0;
}

MemoryStore::Cells StoreState::Consume(DBAsciiElementList list) {
    if (list == nullptr) {
        return {};
    }
    const auto found = lists_.find(list);
    if (found == lists_.end()) {
        Refuse("the element list has ended");
        return {};
    }
    MemoryStore::Cells cells;
    for (const Element& element : *found->second) {
        cells.emplace_back(element.column, element.cell);
    }
    lists_.erase(found);
    return cells;
}

std::string StoreState::Text(DBAsciiElementList list) const {
    const std::lock_guard guard(mutex);
    std::string text;
    if (const auto found = lists_.find(list); found != lists_.end()) {
        for (const Element& element : *found->second) {
            text += (text.empty() ? "" : ", ") + element.column + " = " + element.shown;
        }
    }
    return "{" + text + "}";
}

int32_t StoreState::Append(DBAsciiHandle handle, const std::string& table, DBAsciiElementList list,
                           bool fails) {
    const MemoryStore::Cells cells = Consume(list);
    MemoryTable* const usable = Usable(handle, table);
    if (usable == nullptr || fails) {
        return kFailed;
    }
    usable->Append(cells);
    return 0;
}

int32_t StoreState::Change(DBAsciiHandle handle, const std::string& table,
                           const std::string& condition, DBAsciiElementList list, bool at_once,
                           bool fails) {
    const MemoryStore::Cells cells = Consume(list);
    MemoryTable* const usable = Usable(handle, table);
    if (usable == nullptr || fails) {
        return kFailed;
    }
    const auto parsed = ParseCondition(table, condition);
    const auto selected = parsed ? usable->Select(*parsed) : std::vector<MemoryRow>();
    for (const MemoryRow& row : selected) {
        if (at_once) {
            usable->Update(row.id, cells);
        } else {
            Usable(handle)->pending.push_back({table, row.id, cells});
        }
    }
    return static_cast<int32_t>(selected.size());
}

int32_t StoreState::Delete(DBAsciiHandle handle, const std::string& table,
                           const std::string& condition, bool fails) {
    MemoryTable* const usable = Usable(handle, table);
    if (usable == nullptr || fails) {
        return kFailed;
    }
    const auto parsed = ParseCondition(table, condition);
    return parsed ? static_cast<int32_t>(usable->Delete(*parsed)) : 0;
}

int32_t StoreState::Write(DBAsciiHandle handle, const std::string& table, int32_t* lock_result,
                          bool fails) {
    MemoryTable* const usable = Usable(handle, table);
    if (usable == nullptr) {
        return kFailed;
    }
    Handle& open = *Usable(handle);
    const auto pending = std::exchange(open.pending, {});
    const bool holds_lock = HoldsLock(table, &open);
    if (lock_result == nullptr || (*lock_result == 0) != holds_lock) {
        return Refuse("the lock result is not that of Lock");
    }
    if (write_gives_up_lock && holds_lock) {
        ReleaseLock(table);
        *lock_result = 1;
    }
    if (fails) {
        return kFailed;
    }
    return static_cast<int32_t>(std::count_if(
        pending.begin(), pending.end(),
        [&](const PendingChange& change) { return usable->Update(change.row, change.cells); }));
}

}  // namespace test_support
