// The calls of <pagerfwd/table_access.h> as the library makes them, shortened for tests.
#ifndef PAGERFWD_TESTS_UNIT_HOST_TABLE_CLIENT_H
#define PAGERFWD_TESTS_UNIT_HOST_TABLE_CLIENT_H

#include <pagerfwd/table_access.h>

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

// A value for a write: an integer ('i') or a text ('t').
using Value = std::variant<int32_t, const char*>;
using Values = std::vector<std::pair<const char*, Value>>;

// A table, opened for as long as the object lives.
class OpenTable {
 public:
    OpenTable(std::string database, std::string table);
    ~OpenTable();
    OpenTable(const OpenTable&) = delete;
    OpenTable& operator=(const OpenTable&) = delete;

    bool IsOpen() const { return handle != nullptr; }

    int32_t Insert(const Values& values);
    int32_t Set(const std::string& condition, const Values& values, char writeNow = 'y');
    int32_t Delete(const std::string& condition);
    int32_t IndexOf(const char* column) const;

    // The cells of one column: of the rows whose key column has this text, or of every row.
    std::vector<std::string> Read(const char* column, const char* key, const char* text) const;
    std::vector<std::string> ReadAll(const char* column) const;

    DBAsciiElementList MakeList(const Values& values);

    DBAsciiHandle handle = nullptr;
    const std::string table;

 private:
    std::vector<std::string> Take(int32_t count, DBAsciiRowSet rows, const char* column) const;
};

#endif
