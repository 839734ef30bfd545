// The inside of a MemoryStore: what the functions of the table access do.
//
// Each operation checks its arguments, does its work and answers as a host has to. `fails` says
// that a fault is planned: then it does only what can't be left out, and its result does not count.
//
// Threads    Perform() and the functions for stores take the mutex they need; everything else
//            requires the store's mutex to be held.
#ifndef PAGERFWD_TESTS_SUPPORT_STORE_STATE_H
#define PAGERFWD_TESTS_SUPPORT_STORE_STATE_H

#include <pagerfwd/table_access.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "tests/support/call_journal.h"
#include "tests/support/memory_table.h"

namespace test_support {

// A column and its value in an element list.
struct Element {
    std::string column;
    MemoryStore::Cell cell;
    std::string shown;  // 7, "ops" or null
};

class StoreState {
 public:
    explicit StoreState(std::string name) : database(std::move(name)) {}

    // One call: hooks, fault, operation, record. line is the call without its result.
    using Operation = std::function<int32_t(bool fails)>;
    int32_t Perform(Call kind, const std::string& line, const Operation& operation);

    // An element list as a record shows it: {AlmLogID = 7, AlmGroup = "ops"}. Takes the mutex.
    std::string Text(DBAsciiElementList list) const;

    // Notes a broken rule of the call in progress. Returns -1, a failure for every function.
    int32_t Refuse(const std::string& rule);
    // Notes a complaint of its own wording.
    void Complain(const std::string& complaint) { broken_rules_.push_back(complaint); }

    int32_t Open(DBAsciiHandle* handle, bool fails);
    int32_t OpenTable(DBAsciiHandle handle, const std::string& table, bool fails);
    int32_t Close(DBAsciiHandle handle);

    int32_t Lock(DBAsciiHandle handle, const std::string& table, bool fails);
    int32_t Unlock(DBAsciiHandle handle, const std::string& table);
    // Waits for the lock; false when this thread holds it already. holder null: another writer.
    bool TakeLock(const std::string& table, const void* holder);
    void ReleaseLock(const std::string& table);

    int32_t Read(DBAsciiHandle handle, const std::string& table, const Condition& condition,
                 DBAsciiRowSet* rows, bool fails);
    int32_t FindColumn(DBAsciiHandle handle, const std::string& table, const std::string& column,
                       bool fails);
    int32_t Free(DBAsciiRowSet rows);

    int32_t AddElement(DBAsciiHandle handle, const std::string& table, const Element& element,
                       DBAsciiElementList* list, bool fails);
    int32_t Append(DBAsciiHandle handle, const std::string& table, DBAsciiElementList list,
                   bool fails);
    int32_t Change(DBAsciiHandle handle, const std::string& table, const std::string& condition,
                   DBAsciiElementList list, bool at_once, bool fails);
    int32_t Delete(DBAsciiHandle handle, const std::string& table, const std::string& condition,
                   bool fails);
    int32_t Write(DBAsciiHandle handle, const std::string& table, int32_t* lock_result, bool fails);

    bool Owns(DBAsciiHandle handle) const;
    bool Owns(DBAsciiRowSet rows) const { return row_sets_.count(rows) != 0; }
    std::vector<std::string> Complaints() const;
    size_t OpenHandles() const;

    const std::string database;  // constant after construction
    mutable std::mutex mutex;    // guards everything below
    std::map<std::string, MemoryTable> tables;
    CallJournal journal;
    bool write_gives_up_lock = false;
    bool hands_out_empty_row_sets = false;

 private:
    // Cells that wait in the handle until the table is written.
    struct PendingChange {
        std::string table;
        uint64_t row;
        MemoryStore::Cells cells;
    };
    struct Handle {
        bool is_open = true;
        std::set<std::string> tables;  // opened through it
        std::vector<PendingChange> pending;
    };
    struct TableLock {
        const void* holder;
        std::thread::id thread;
    };
    using ElementList = std::vector<Element>;
    // What a caller sees of a row set. Each array is a heap block of its exact size, so that a
    // memory checker notices a step beyond.
    struct HandedRows {
        std::vector<std::unique_ptr<char[]>> cells;
        std::vector<std::unique_ptr<char*[]>> rows;
        std::unique_ptr<char**[]> set;
    };

    static HandedRows HandOut(const std::vector<MemoryRow>& selected);
    // Null, and a broken rule, when the handle is not open, or not the table in it.
    Handle* Usable(DBAsciiHandle handle);
    MemoryTable* Usable(DBAsciiHandle handle, const std::string& table);
    // What the list held; the list ends.
    MemoryStore::Cells Consume(DBAsciiElementList list);
    bool HoldsLock(const std::string& table, const void* holder) const;
    // Gives up unwritten changes, and locks, which is a broken rule.
    void End(Handle& handle);

    std::condition_variable_any lock_released_;
    std::unordered_map<DBAsciiHandle, std::unique_ptr<Handle>> handles_;  // also those closed
    std::map<std::string, TableLock> locks_;
    std::map<DBAsciiRowSet, HandedRows> row_sets_;
    std::map<DBAsciiElementList, std::unique_ptr<ElementList>> lists_;
    std::vector<std::string> broken_rules_;
    std::string current_line_;
};

// The stores that live, for the functions of the table access; null when there is none.
std::shared_ptr<StoreState> StoreOf(const std::string& database);
std::shared_ptr<StoreState> StoreOf(DBAsciiHandle handle);
std::shared_ptr<StoreState> StoreOf(DBAsciiRowSet rows);
// For a call that belongs to none of them.
void ComplainToAll(const std::string& complaint);

}  // namespace test_support

#endif
