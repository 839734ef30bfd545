// Changing rows. Each of these runs within a write transaction of the caller.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_WRITES_H
#define PAGERFWD_HOST_STORE_WRITES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/conditions.h"
#include "host/store/connection.h"
#include "host/store/owner_lock.h"
#include "host/store/rows.h"

namespace host {

struct Element {
    std::string column;
    std::string text;
};

// Columns and their values for a write, each column once.
class ElementList {
 public:
    // A column that is in the list already gets the new value.
    void Set(std::string_view column, std::string text);

    const std::vector<Element>& Elements() const { return elements_; }
    const std::string* Find(std::string_view column) const;

 private:
    std::vector<Element> elements_;
};

// Appends a row; columns that are not in the list are empty. An event takes the place of the one
// that was hidden under its key.
void InsertRow(Connection& connection, const TableLayout& layout, const ElementList& elements);

void DeleteAllRows(Connection& connection, std::string_view table);

// Return how many rows the condition selects: none in a table that it is not for.
int32_t UpdateRows(Connection& connection, const TableLayout& layout, const Condition& condition,
                   const ElementList& elements);
int32_t DeleteRows(Connection& connection, const TableLayout& layout, const Condition& condition,
                   OwnerLock& owners);

}  // namespace host

#endif
