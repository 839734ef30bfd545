// The functions of <pagerfwd/table_access.h>, on SQLite. Tested by
// tests/unit/host/store_contract_test.cpp and table_access_test.cpp.
//
// Each function is a border: what goes wrong behind it becomes the function's quiet result for the
// library, and a message for the operator.
#include <pagerfwd/table_access.h>

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/store/conditions.h"
#include "host/store/faults.h"
#include "host/store/open_database.h"
#include "host/store/patience.h"

namespace host {
namespace {

constexpr int32_t kDone = 0;
constexpr int32_t kFailed = -1;

// What the library was about to do, for the message.
struct Deed {
    const char* name;
    const char* about;  // the database or the table; may be null
};

bool HoldsTransaction(DBAsciiHandle handle) {
    return handle != nullptr && static_cast<OpenDatabase*>(handle)->HoldsTransaction();
}

// Again and again while the store is away, where the library is to wait for it. Not in a
// transaction: that would keep all other processes from writing.
template <typename Work>
int32_t Patiently(DBAsciiHandle handle, Work work) {
    std::optional<Wait> wait;
    for (;;) {
        try {
            return work();
        } catch (const StoreAway& away) {
            if (!WaitsForTables() || HoldsTransaction(handle)) {
                throw;
            }
            if (!wait) {
                wait.emplace(away);
            }
        }
        wait->Second();
    }
}

template <typename Work>
int32_t Try(const Deed& deed, Work work) noexcept {
    try {
        return work();
    } catch (const NotOurs& end) {
        ReportEnd(end.what());
        return kFailed;
    } catch (const std::exception& fault) {
        try {
            const char* about = deed.about == nullptr ? "(no name)" : deed.about;
            ReportFault(std::string(deed.name) + " " + about + ": " + fault.what());
        } catch (const std::exception&) {
            ReportFault("out of memory");
        }
        return kFailed;
    }
}

// For what has changed nothing where it fails.
template <typename Work>
int32_t TryPatiently(const Deed& deed, DBAsciiHandle handle, Work work) {
    return Try(deed, [&] { return Patiently(handle, work); });
}

std::string_view Given(const char* text) {
    if (text == nullptr) {
        throw StoreError("a text is missing");
    }
    return text;
}

OpenDatabase& At(DBAsciiHandle handle) {
    if (handle == nullptr) {
        throw StoreError("the database is not open");
    }
    return *static_cast<OpenDatabase*>(handle);
}

// The list belongs to this call, whatever becomes of it.
ElementList Consume(DBAsciiElementList list) {
    const std::unique_ptr<ElementList> owned(static_cast<ElementList*>(list));
    return owned == nullptr ? ElementList() : std::move(*owned);
}

std::string TextOf(char type, const void* value) {
    if (value == nullptr) {
        throw StoreError("a value is missing");
    }
    switch (type) {
        case 'i':
            return std::to_string(*static_cast<const int32_t*>(value));
        case 't':
            return std::string(Given(*static_cast<const char* const*>(value)));
        default:
            throw StoreError(std::string("there are no values of type '") + type + "'");
    }
}

// A condition that is none selects nothing. The operator hears of it: a row that the library meant
// stays as it is.
std::optional<Condition> Understood(const Deed& deed, const char* text) {
    std::optional<Condition> condition = ParseCondition(Given(text));
    if (!condition) {
        ReportFault(std::string(deed.name) + " " + deed.about +
                    ": this condition is not understood, and no row is touched: " + text);
    }
    return condition;
}

int32_t Close(DBAsciiHandle handle) {
    return Try({"closing", "a database"}, [handle] {
        const std::unique_ptr<OpenDatabase> database(&At(handle));
        return kDone;
    });
}

}  // namespace
}  // namespace host

using namespace host;

int32_t DBAsciiAccessOpen(const char* database, char /*mode*/, DBAsciiHandle* handle) {
    return TryPatiently({"opening", database}, nullptr, [=] {
        *handle = std::make_unique<OpenDatabase>(std::string(Given(database))).release();
        return kDone;
    });
}

int32_t DBAsciiAccessTableOpen(DBAsciiHandle handle, const char* table) {
    return TryPatiently({"opening", table}, handle, [=] {
        At(handle).Layout(Given(table));
        return kDone;
    });
}

int32_t DBAsciiAccessClose(DBAsciiHandle handle) {
    return Close(handle);
}

// The connections that are kept are static state; they are kept by either close.
int32_t DBAsciiAccessCloseKeepStaticDllInfo(DBAsciiHandle handle) {
    return Close(handle);
}

int32_t DBAsciiAccessLock(DBAsciiHandle handle, const char* table, int32_t /*first*/,
                          int32_t /*second*/) {
    return TryPatiently({"locking", table}, handle,
                        [=] { return At(handle).Lock() ? kDone : kFailed; });
}

int32_t DBAsciiAccessUnlock(DBAsciiHandle handle, const char* table) {
    return Try({"unlocking", table}, [=] {
        At(handle).Unlock();
        return kDone;
    });
}

int32_t DBAsciiAccessGetAllEntriesByCondition(DBAsciiHandle handle, const char* table,
                                              const char* column, DBAsciiRowSet* rows,
                                              int32_t /*reserved1*/, const char* value,
                                              char /*mode*/, const char* selection, char /*flag1*/,
                                              char /*flag2*/, int32_t /*reserved2*/) {
    return TryPatiently({"reading", table}, handle, [=] {
        OpenDatabase& database = At(handle);
        const TableLayout& layout = database.Layout(Given(table));
        std::vector<Term> terms;
        const bool everyRow = selection != nullptr;
        if (!everyRow) {
            const int32_t index = layout.IndexOf(Given(column));
            if (index < 0) {
                throw StoreError(std::string("there is no column ") + column);
            }
            terms.push_back(
                {layout.columns[static_cast<size_t>(index)].c_str(), "=", Given(value)});
        }
        Rows found = database.Read(layout, terms);
        if (found.count > 0) {
            *rows = found.cells.release();
        }
        return found.count;
    });
}

int32_t DBAsciiAccessGetElementColumn(DBAsciiHandle handle, const char* table, const char* column) {
    return TryPatiently({"reading", table}, handle,
                        [=] { return At(handle).Layout(Given(table)).IndexOf(Given(column)); });
}

int32_t DBAsciiAccessFree(DBAsciiRowSet rows) {
    RowSetFree()(rows);
    return kDone;
}

int32_t DBAsciiAccessAddElement(DBAsciiHandle handle, const char* table, const char* column,
                                char type, const void* value, DBAsciiElementList* list) {
    return TryPatiently({"writing", table}, handle, [=] {
        if (At(handle).Layout(Given(table)).IndexOf(Given(column)) < 0) {
            throw StoreError(std::string("there is no column ") + column);
        }
        std::string text = TextOf(type, value);
        if (*list == nullptr) {
            *list = std::make_unique<ElementList>().release();
        }
        static_cast<ElementList*>(*list)->Set(column, std::move(text));
        return kDone;
    });
}

int32_t DBAsciiAccessSet(DBAsciiHandle handle, const char* table, DBAsciiElementList list,
                         char /*flag1*/, char /*flag2*/, char /*flag3*/) {
    const ElementList elements = Consume(list);
    return TryPatiently({"writing", table}, handle, [&] {
        OpenDatabase& database = At(handle);
        database.Insert(database.Layout(Given(table)), elements);
        return kDone;
    });
}

int32_t DBAsciiAccessSQLConditionSet(DBAsciiHandle handle, const char* table, const char* condition,
                                     DBAsciiElementList list, char /*flag*/, char writeNow) {
    const Deed deed{"changing", table};
    const ElementList elements = Consume(list);
    return TryPatiently(deed, handle, [&] {
        OpenDatabase& database = At(handle);
        const TableLayout& layout = database.Layout(Given(table));
        const std::optional<Condition> which = Understood(deed, condition);
        if (!which) {
            return 0;
        }
        return writeNow == 'n' ? database.UpdateUnwritten(layout, *which, elements)
                               : database.Update(layout, *which, elements);
    });
}

int32_t DBAsciiAccessSQLConditionDelete(DBAsciiHandle handle, const char* table,
                                        const char* condition, char /*flag*/) {
    const Deed deed{"deleting from", table};
    return TryPatiently(deed, handle, [=] {
        OpenDatabase& database = At(handle);
        const TableLayout& layout = database.Layout(Given(table));
        const std::optional<Condition> which = Understood(deed, condition);
        return which ? database.Delete(layout, *which) : 0;
    });
}

int32_t DBAsciiAccessWrite(DBAsciiHandle handle, const char* table, int32_t* lockResult) {
    return Try({"writing", table}, [=] {
        const int32_t count = At(handle).Write();
        // Writing ended the transaction, and with it the lock: it is no longer the caller's to end.
        *lockResult = kFailed;
        return count;
    });
}
