// Looks on at every call of the table access, in front of whichever store the program links: link
// with the --wrap options of CMakeLists.txt.
#ifndef PAGERFWD_TESTS_PROOF_TABLE_CALLS_H
#define PAGERFWD_TESTS_PROOF_TABLE_CALLS_H

#include <cstdint>
#include <string_view>

namespace proof {

enum class TableDeed { kRead, kInsert, kChange, kDelete, kWrite, kOther };

struct TableCall {
    TableDeed deed;
    std::string_view table;      // "" where a call names none
    std::string_view column;     // of a read
    std::string_view condition;  // of a change or a delete; the value of a read
};

// Threads    Called by the thread that makes the call, without a lock.
class TableWatcher {
 public:
    virtual ~TableWatcher() = default;
    virtual void Before(const TableCall& call) = 0;
    virtual void After(const TableCall& call, int32_t result) = 0;
};

// Null: nobody looks on. Not while another thread may call.
void SetTableWatcher(TableWatcher* watcher);

}  // namespace proof

#endif
