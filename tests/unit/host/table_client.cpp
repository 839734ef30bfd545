// The library's side of the table access, for tests.
#include "tests/unit/host/table_client.h"

OpenTable::OpenTable(std::string database, std::string name) : table(std::move(name)) {
    if (DBAsciiAccessOpen(database.c_str(), 'n', &handle) != 0) {
        handle = nullptr;
        return;
    }
    if (DBAsciiAccessTableOpen(handle, table.c_str()) != 0) {
        DBAsciiAccessClose(handle);
        handle = nullptr;
    }
}

OpenTable::~OpenTable() {
    if (handle != nullptr) {
        DBAsciiAccessClose(handle);
    }
}

DBAsciiElementList OpenTable::MakeList(const Values& values) {
    DBAsciiElementList list = nullptr;
    for (const auto& [column, value] : values) {
        const bool isText = std::holds_alternative<const char*>(value);
        const void* pointer = isText ? static_cast<const void*>(std::get_if<const char*>(&value))
                                     : std::get_if<int32_t>(&value);
        DBAsciiAccessAddElement(handle, table.c_str(), column, isText ? 't' : 'i', pointer, &list);
    }
    return list;
}

int32_t OpenTable::Insert(const Values& values) {
    return DBAsciiAccessSet(handle, table.c_str(), MakeList(values), 'y', 'y', 'y');
}

int32_t OpenTable::Set(const std::string& condition, const Values& values, char writeNow) {
    return DBAsciiAccessSQLConditionSet(handle, table.c_str(), condition.c_str(), MakeList(values),
                                        'y', writeNow);
}

int32_t OpenTable::Delete(const std::string& condition) {
    return DBAsciiAccessSQLConditionDelete(handle, table.c_str(), condition.c_str(), 'y');
}

int32_t OpenTable::IndexOf(const char* column) const {
    return DBAsciiAccessGetElementColumn(handle, table.c_str(), column);
}

std::vector<std::string> OpenTable::Read(const char* column, const char* key,
                                         const char* text) const {
    DBAsciiRowSet rows = nullptr;
    const int32_t count = DBAsciiAccessGetAllEntriesByCondition(handle, table.c_str(), key, &rows,
                                                                0, text, 'r', nullptr, 'n', 0, 0);
    return Take(count, rows, column);
}

std::vector<std::string> OpenTable::ReadAll(const char* column) const {
    DBAsciiRowSet rows = nullptr;
    const int32_t count = DBAsciiAccessGetAllEntriesByCondition(
        handle, table.c_str(), column, &rows, 0, "", 'r', "no", 'n', 'n', 0);
    return Take(count, rows, column);
}

std::vector<std::string> OpenTable::Take(int32_t count, DBAsciiRowSet rows,
                                         const char* column) const {
    std::vector<std::string> cells;
    const int32_t index = IndexOf(column);
    for (int32_t row = 0; row < count; ++row) {
        cells.emplace_back(rows[row][index]);
    }
    if (count > 0) {
        DBAsciiAccessFree(rows);
    }
    return cells;
}
