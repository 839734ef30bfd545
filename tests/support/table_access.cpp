// The functions of <pagerfwd/table_access.h>, on the MemoryStores that live: each call becomes a
// line of text and an operation. Tested by tests/unit/support/memory_store_test.cpp.
#include <pagerfwd/table_access.h>

#include <cstring>

#include "tests/support/store_state.h"

namespace test_support {
namespace {

constexpr int32_t kNoStore = -1;

std::string Quoted(const char* text) {
    return text != nullptr ? "\"" + std::string(text) + "\"" : "null";
}

// Arguments one behind the other, as a record shows them.
std::string Shown(const char* text) {
    return text != nullptr ? text : "null";
}
std::string Shown(const std::string& text) {
    return text;
}
// Flags are characters or 0.
std::string Shown(char flag) {
    return flag == '\0' ? "0" : std::string("'") + flag + "'";
}
std::string Shown(int32_t number) {
    return std::to_string(number);
}

template <class... Each>
std::string Arguments(const Each&... each) {
    std::string shown;
    ((shown += (shown.empty() ? "" : ", ") + Shown(each)), ...);
    return shown;
}

std::string NameOr(const char* name) {
    return name != nullptr ? name : "";
}

using Operation = std::function<int32_t(StoreState& store, bool fails)>;

// Carries a call out. Arguments that do not occur are refused, after what can't be left out.
template <class Key>
int32_t Perform(Key key, Call kind, const std::string& arguments, bool arguments_occur,
                const Operation& operation) {
    const std::string line = NameOf(kind) + ("(" + arguments + ")");
    const auto store = StoreOf(key);
    if (store == nullptr) {
        if (kind != Call::kOpen) {
            ComplainToAll(line + ": no such handle or row set");
        }
        return kNoStore;
    }
    return store->Perform(kind, line, [&](bool fails) {
        const int32_t result = operation(*store, fails || !arguments_occur);
        return arguments_occur ? result : store->Refuse("such arguments do not occur");
    });
}

// How rows are selected.
struct Selection {
    const char* column;
    int32_t reserved1;
    const char* value;
    char mode;
    const char* selection;
    char flag1;
    char flag2;
    int32_t reserved2;

    bool HasOneKey() const {
        return reserved1 == 0 && value != nullptr && mode == 'r' && selection == nullptr &&
               flag1 == 'n' && flag2 == '\0' && reserved2 == 0;
    }
    bool HasEveryRow() const {
        return reserved1 == 0 && NameOr(value).empty() && mode == 'r' &&
               NameOr(selection) == "no" && flag1 == 'n' && flag2 == 'n' && reserved2 == 0;
    }
    std::string Text(const char* table) const {
        if (HasOneKey()) {
            return Arguments(table, NameOr(column) + " = " + Quoted(value));
        }
        if (HasEveryRow()) {
            return Arguments(table, column, "every row");
        }
        return Arguments(table, column, reserved1, Quoted(value), mode, Quoted(selection), flag1,
                         flag2, reserved2);
    }
    Condition Demand() const {
        return HasEveryRow() ? Condition() : Condition{{NameOr(column), NameOr(value)}};
    }
};

// Of type 'i' the value is an int32_t, of type 't' a text.
Element MakeElement(const char* column, char type, const void* value) {
    if (type == 'i') {
        const std::string number = std::to_string(*static_cast<const int32_t*>(value));
        return {NameOr(column), number, number};
    }
    const char* const text = type == 't' ? *static_cast<const char* const*>(value) : nullptr;
    return {NameOr(column), text != nullptr ? MemoryStore::Cell(text) : std::nullopt, Quoted(text)};
}

std::string ElementsText(DBAsciiHandle handle, DBAsciiElementList list) {
    const auto store = StoreOf(handle);
    return store != nullptr ? store->Text(list) : "";
}

}  // namespace
}  // namespace test_support

using test_support::Arguments;
using test_support::Call;
using test_support::ElementsText;
using test_support::NameOr;
using test_support::Perform;
using test_support::StoreState;

int32_t DBAsciiAccessOpen(const char* database, char mode, DBAsciiHandle* handle) {
    return Perform(NameOr(database), Call::kOpen, Arguments(database, mode),
                   mode == 'n' && database != nullptr,
                   [=](StoreState& store, bool fails) { return store.Open(handle, fails); });
}

int32_t DBAsciiAccessTableOpen(DBAsciiHandle handle, const char* table) {
    return Perform(handle, Call::kTableOpen, Arguments(table), table != nullptr,
                   [=](StoreState& store, bool fails) {
                       return store.OpenTable(handle, NameOr(table), fails);
                   });
}

int32_t DBAsciiAccessClose(DBAsciiHandle handle) {
    return Perform(handle, Call::kClose, Arguments(), true,
                   [=](StoreState& store, bool) { return store.Close(handle); });
}

int32_t DBAsciiAccessCloseKeepStaticDllInfo(DBAsciiHandle handle) {
    return Perform(handle, Call::kCloseKeepStaticDllInfo, Arguments(), true,
                   [=](StoreState& store, bool) { return store.Close(handle); });
}

int32_t DBAsciiAccessLock(DBAsciiHandle handle, const char* table, int32_t first, int32_t second) {
    return Perform(
        handle, Call::kLock, Arguments(table, first, second), first == 400 && second == 300,
        [=](StoreState& store, bool fails) { return store.Lock(handle, NameOr(table), fails); });
}

int32_t DBAsciiAccessUnlock(DBAsciiHandle handle, const char* table) {
    return Perform(handle, Call::kUnlock, Arguments(table), true,
                   [=](StoreState& store, bool) { return store.Unlock(handle, NameOr(table)); });
}

int32_t DBAsciiAccessGetAllEntriesByCondition(DBAsciiHandle handle, const char* table,
                                              const char* column, DBAsciiRowSet* rows,
                                              int32_t reserved1, const char* value, char mode,
                                              const char* selection, char flag1, char flag2,
                                              int32_t reserved2) {
    const test_support::Selection wanted{column,    reserved1, value, mode,
                                         selection, flag1,     flag2, reserved2};
    return Perform(handle, Call::kGetAllEntriesByCondition, wanted.Text(table),
                   wanted.HasOneKey() || wanted.HasEveryRow(), [&](StoreState& store, bool fails) {
                       return store.Read(handle, NameOr(table), wanted.Demand(), rows, fails);
                   });
}

int32_t DBAsciiAccessGetElementColumn(DBAsciiHandle handle, const char* table, const char* column) {
    return Perform(handle, Call::kGetElementColumn, Arguments(table, column), true,
                   [=](StoreState& store, bool fails) {
                       return store.FindColumn(handle, NameOr(table), NameOr(column), fails);
                   });
}

int32_t DBAsciiAccessFree(DBAsciiRowSet rows) {
    return Perform(rows, Call::kFree, Arguments(), true,
                   [=](StoreState& store, bool) { return store.Free(rows); });
}

int32_t DBAsciiAccessAddElement(DBAsciiHandle handle, const char* table, const char* column,
                                char type, const void* value, DBAsciiElementList* list) {
    const auto element = test_support::MakeElement(column, type, value);
    return Perform(handle, Call::kAddElement, Arguments(table, column, type, element.shown),
                   type == 'i' || type == 't', [&](StoreState& store, bool fails) {
                       return store.AddElement(handle, NameOr(table), element, list, fails);
                   });
}

int32_t DBAsciiAccessSet(DBAsciiHandle handle, const char* table, DBAsciiElementList list,
                         char flag1, char flag2, char flag3) {
    return Perform(
        handle, Call::kSet, Arguments(table, ElementsText(handle, list), flag1, flag2, flag3),
        flag1 == 'y' && flag2 == 'y' && flag3 == 'y', [=](StoreState& store, bool fails) {
            return store.Append(handle, NameOr(table), list, fails);
        });
}

int32_t DBAsciiAccessSQLConditionSet(DBAsciiHandle handle, const char* table, const char* condition,
                                     DBAsciiElementList list, char flag, char writeNow) {
    return Perform(handle, Call::kSQLConditionSet,
                   Arguments(table, condition, ElementsText(handle, list), flag, writeNow),
                   flag == 'y' && (writeNow == 'y' || writeNow == 'n'),
                   [=](StoreState& store, bool fails) {
                       return store.Change(handle, NameOr(table), NameOr(condition), list,
                                           writeNow == 'y', fails);
                   });
}

int32_t DBAsciiAccessSQLConditionDelete(DBAsciiHandle handle, const char* table,
                                        const char* condition, char flag) {
    return Perform(handle, Call::kSQLConditionDelete, Arguments(table, condition, flag),
                   flag == 'y', [=](StoreState& store, bool fails) {
                       return store.Delete(handle, NameOr(table), NameOr(condition), fails);
                   });
}

int32_t DBAsciiAccessWrite(DBAsciiHandle handle, const char* table, int32_t* lockResult) {
    const std::string lock = lockResult != nullptr ? std::to_string(*lockResult) : "null";
    return Perform(handle, Call::kWrite, Arguments(table, lock), true,
                   [=](StoreState& store, bool fails) {
                       return store.Write(handle, NameOr(table), lockResult, fails);
                   });
}
