// The functions of <pagerfwd/table_access.h>, each between two looks.
#include "tests/proof/table_calls.h"

#include <pagerfwd/table_access.h>

namespace proof {
namespace {

TableWatcher* watcher = nullptr;

std::string_view TextOrEmpty(const char* text) {
    return text == nullptr ? std::string_view() : text;
}

template <typename Work>
int32_t Watched(const TableCall& call, Work work) {
    if (watcher != nullptr) {
        watcher->Before(call);
    }
    const int32_t result = work();
    if (watcher != nullptr) {
        watcher->After(call, result);
    }
    return result;
}

TableCall Other(const char* table = nullptr) {
    return {TableDeed::kOther, TextOrEmpty(table), {}, {}};
}

}  // namespace

void SetTableWatcher(TableWatcher* given) {
    watcher = given;
}

}  // namespace proof

using proof::Other;
using proof::TableDeed;
using proof::TextOrEmpty;
using proof::Watched;

// The linker gives the calls of the program to the first name of each pair, and the store's
// function the second.
#define WRAPPED(name, parameters, call, arguments)                     \
    int32_t __real_##name parameters;                                  \
    int32_t __wrap_##name parameters;                                  \
    int32_t __wrap_##name parameters {                                 \
        return Watched(call, [=] { return __real_##name arguments; }); \
    }

extern "C" {
WRAPPED(DBAsciiAccessOpen, (const char* database, char mode, DBAsciiHandle* handle), Other(),
        (database, mode, handle))
WRAPPED(DBAsciiAccessTableOpen, (DBAsciiHandle handle, const char* table), Other(table),
        (handle, table))
WRAPPED(DBAsciiAccessClose, (DBAsciiHandle handle), Other(), (handle))
WRAPPED(DBAsciiAccessCloseKeepStaticDllInfo, (DBAsciiHandle handle), Other(), (handle))
WRAPPED(DBAsciiAccessLock, (DBAsciiHandle handle, const char* table, int32_t first, int32_t second),
        Other(table), (handle, table, first, second))
WRAPPED(DBAsciiAccessUnlock, (DBAsciiHandle handle, const char* table), Other(table),
        (handle, table))
WRAPPED(DBAsciiAccessGetAllEntriesByCondition,
        (DBAsciiHandle handle, const char* table, const char* column, DBAsciiRowSet* rows,
         int32_t reserved1, const char* value, char mode, const char* selection, char flag1,
         char flag2, int32_t reserved2),
        (proof::TableCall{TableDeed::kRead, TextOrEmpty(table), TextOrEmpty(column),
                          TextOrEmpty(value)}),
        (handle, table, column, rows, reserved1, value, mode, selection, flag1, flag2, reserved2))
WRAPPED(DBAsciiAccessGetElementColumn,
        (DBAsciiHandle handle, const char* table, const char* column), Other(table),
        (handle, table, column))
WRAPPED(DBAsciiAccessFree, (DBAsciiRowSet rows), Other(), (rows))
WRAPPED(DBAsciiAccessAddElement,
        (DBAsciiHandle handle, const char* table, const char* column, char type, const void* value,
         DBAsciiElementList* list),
        Other(table), (handle, table, column, type, value, list))
WRAPPED(DBAsciiAccessSet,
        (DBAsciiHandle handle, const char* table, DBAsciiElementList list, char flag1, char flag2,
         char flag3),
        (proof::TableCall{TableDeed::kInsert, TextOrEmpty(table), {}, {}}),
        (handle, table, list, flag1, flag2, flag3))
WRAPPED(DBAsciiAccessSQLConditionSet,
        (DBAsciiHandle handle, const char* table, const char* condition, DBAsciiElementList list,
         char flag, char writeNow),
        (proof::TableCall{TableDeed::kChange, TextOrEmpty(table), {}, TextOrEmpty(condition)}),
        (handle, table, condition, list, flag, writeNow))
WRAPPED(DBAsciiAccessSQLConditionDelete,
        (DBAsciiHandle handle, const char* table, const char* condition, char flag),
        (proof::TableCall{TableDeed::kDelete, TextOrEmpty(table), {}, TextOrEmpty(condition)}),
        (handle, table, condition, flag))
WRAPPED(DBAsciiAccessWrite, (DBAsciiHandle handle, const char* table, int32_t* lockResult),
        (proof::TableCall{TableDeed::kWrite, TextOrEmpty(table), {}, {}}),
        (handle, table, lockResult))
}
