// A database in memory, behind the functions of <pagerfwd/table_access.h>.
//
// A program that links test_support has these functions from here. Each MemoryStore is one
// database, which can be opened by its name while the object lives. It carries out every call as a
// host has to, records it as a line of text, and keeps watch over what must come in pairs.
//
// What it does where hosts differ:
//   - Names of columns are the same in upper and lower case; names of tables are not.
//   - Conditions are taken in exactly the forms that table_access.h lists. Any other hits no row;
//     so does a text that holds a double quote.
//   - Rows are as wide as the table and not wider: reading beyond them is a memory error.
//   - A table's lock waits until the other holder gives it up. The thread that holds it already is
//     refused with 1.
//   - What is set with 'n' stands in the table only after DBAsciiAccessWrite.
//
// Order      The store outlives every thread that may still call the functions.
// Threads    All of it may be used from any thread. Hooks run in the calling thread and without a
//            lock, so they may use the store and the library.
// Errors     Broken rules (a handle used after its close, a table that was not opened, a row set
//            freed twice, arguments that do not occur) are refused and told by Verdict().
#ifndef PAGERFWD_TESTS_SUPPORT_MEMORY_STORE_H
#define PAGERFWD_TESTS_SUPPORT_MEMORY_STORE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace test_support {

class StoreState;

// The functions of the table access.
enum class Call {
    kOpen,
    kTableOpen,
    kClose,
    kCloseKeepStaticDllInfo,
    kLock,
    kUnlock,
    kGetAllEntriesByCondition,
    kGetElementColumn,
    kFree,
    kAddElement,
    kSet,
    kSQLConditionSet,
    kSQLConditionDelete,
    kWrite,
};

class MemoryStore {
 public:
    // A cell without a text is handed out as a null pointer.
    using Cell = std::optional<std::string>;
    // Cells by column. Columns that are not named get an empty text.
    using Cells = std::vector<std::pair<std::string, Cell>>;
    // The rows whose column equals the text.
    struct Key {
        std::string column;
        std::string text;
    };

    static constexpr const char* kDatabase = "alarms";

    // A database without tables.
    explicit MemoryStore(std::string database = kDatabase);
    ~MemoryStore();
    MemoryStore(const MemoryStore&) = delete;
    MemoryStore& operator=(const MemoryStore&) = delete;

    // --- Tables and rows, as another program would see and change them. Not recorded. An unknown
    // --- table or column here is a mistake of the test and throws std::out_of_range.

    // Replaces a table of this name.
    void AddTable(const std::string& table, std::vector<std::string> columns);
    // The five tables with all their columns, and no row.
    void AddAllTables();

    void Insert(const std::string& table, const Cells& cells);
    // hours: one character for each of the 168 hours, Monday 0:00 first. Missing ones are '0'.
    void InsertTimeModel(const std::string& description, const std::string& hours);
    // Return how many rows that were.
    size_t Update(const std::string& table, const Key& key, const Cells& cells);
    size_t Delete(const std::string& table, const Key& key);

    size_t RowCount(const std::string& table) const;
    // The cells of a column in row order; null cells read "(null)".
    std::vector<std::string> Column(const std::string& table, const std::string& column) const;
    // The cell of the first such row; "(no row)" when there is none.
    std::string Read(const std::string& table, const Key& key, const std::string& column) const;

    // Takes and gives up the lock of a table, as another writer of it would.
    void LockAsOther(const std::string& table);
    void UnlockAsOther(const std::string& table);

    // --- What was called, in order, one line a call:
    //       Open(alarms, 'n')
    //       TableOpen(AlarmLog)
    //       Lock(AlarmLog, 400, 300)
    //       GetAllEntriesByCondition(AlarmLog, alarmlogID = "7") -> 1
    //       GetAllEntriesByCondition(AlarmFwd_PagerSetting, description, every row) -> 3
    //       GetElementColumn(AlarmLog, details) -> 5
    //       Free()
    //       AddElement(AlarmLog, pagerstate, 'i', 4)
    //       Set(AlarmFwd_PagerEvents, {AlmLogID = 7, AlmGroup = "ops"}, 'y', 'y', 'y')
    //       SQLConditionSet(AlarmLog, WHERE alarmlogID = 7, {pagerstate = 4}, 'y', 'n') -> 1
    //       SQLConditionDelete(AlarmFwd_PagerEvents, WHERE ..., 'y') -> 1
    //       Write(AlarmLog, 0) -> 1
    //       Unlock(AlarmLog)
    //       Close()
    // Counts and columns show their result always, the others when it is not 0.

    std::vector<std::string> Calls() const;
    std::vector<std::string> Calls(Call kind) const;
    // Those in which the text occurs.
    std::vector<std::string> CallsWith(std::string_view part) const;
    void ForgetCalls();

    // --- Faults. A failing call does nothing but what cannot be left out: a close ends the handle,
    // --- a free frees, a write or delete consumes its list. Counting starts with the next call.

    void Fail(Call kind, int nth = 1, int32_t result = -1);
    void FailAnyCall(int nth, int32_t result = -1);
    void FailAlways(Call kind, int32_t result = -1);
    void StopFailing();
    // From now on a read that finds nothing hands out a row set all the same.
    void HandOutEmptyRowSets();
    // From now on Write gives the lock up by itself, and says so.
    void GiveUpLockWhileWriting();

    // --- Hooks.

    // Runs once, just before the nth call of this kind from now on.
    void Before(Call kind, int nth, std::function<void()> hook);
    // Runs before every call, with its line but for the result.
    void BeforeEach(std::function<void(const std::string& call)> hook);

    // --- What must come in pairs.

    // "" when all that was opened is closed, every row set freed, every lock released, every
    // element list consumed, no rule broken, and every fault and hook has happened; else one line
    // for each that is not so.
    std::string Verdict() const;

    size_t OpenHandles() const;

 private:
    std::shared_ptr<StoreState> state_;
};

}  // namespace test_support

#endif
