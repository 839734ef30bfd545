// A MemoryStore's handles, locks and watch. Tested by tests/unit/support/memory_store_test.cpp.
#include "tests/support/store_state.h"

#include <algorithm>

namespace test_support {
namespace {

constexpr int32_t kFailed = -1;
constexpr int32_t kNotTaken = 1;

// Whether a call's result belongs into its line even when it is 0.
bool HasCount(Call kind) {
    switch (kind) {
        case Call::kGetAllEntriesByCondition:
        case Call::kGetElementColumn:
        case Call::kSQLConditionSet:
        case Call::kSQLConditionDelete:
        case Call::kWrite:
            return true;
        case Call::kOpen:
        case Call::kTableOpen:
        case Call::kClose:
        case Call::kCloseKeepStaticDllInfo:
        case Call::kLock:
        case Call::kUnlock:
        case Call::kFree:
        case Call::kAddElement:
        case Call::kSet:
            return false;
    }
    return true;
}

std::string WithResult(Call kind, const std::string& line, int32_t result) {
    return HasCount(kind) || result != 0 ? line + " -> " + std::to_string(result) : line;
}

}  // namespace

int32_t StoreState::Perform(Call kind, const std::string& line, const Operation& operation) {
    std::unique_lock guard(mutex);
    const auto hooks = journal.Begin(kind, line);
    guard.unlock();
    for (const auto& run : hooks) {
        run();
    }
    guard.lock();
    current_line_ = line;
    const auto fault = journal.TakeFault(kind);
    const int32_t done = operation(fault.has_value());
    const int32_t result = fault.value_or(done);
    journal.Record(kind, WithResult(kind, line, result));
    return result;
}

int32_t StoreState::Refuse(const std::string& rule) {
    broken_rules_.push_back(current_line_ + ": " + rule);
    return kFailed;
}

StoreState::Handle* StoreState::Usable(DBAsciiHandle handle) {
    const auto found = handles_.find(handle);
    if (found == handles_.end() || !found->second->is_open) {
        Refuse("the handle is not open");
        return nullptr;
    }
    return found->second.get();
}

MemoryTable* StoreState::Usable(DBAsciiHandle handle, const std::string& table) {
    const Handle* const usable = Usable(handle);
    if (usable == nullptr) {
        return nullptr;
    }
    if (usable->tables.count(table) == 0) {
        Refuse("the table is not open");
        return nullptr;
    }
    return &tables.at(table);
}

int32_t StoreState::Open(DBAsciiHandle* handle, bool fails) {
    if (fails) {
        return kFailed;
    }
    auto opened = std::make_unique<Handle>();
    *handle = opened.get();
    handles_.emplace(*handle, std::move(opened));
    return 0;
}

int32_t StoreState::OpenTable(DBAsciiHandle handle, const std::string& table, bool fails) {
    Handle* const usable = Usable(handle);
    if (usable == nullptr || fails || tables.count(table) == 0) {
        return kFailed;
    }
    usable->tables.insert(table);
    return 0;
}

int32_t StoreState::Close(DBAsciiHandle handle) {
    Handle* const usable = Usable(handle);
    if (usable == nullptr) {
        return kFailed;
    }
    End(*usable);
    return 0;
}

void StoreState::End(Handle& handle) {
    const auto locks = locks_;
    for (const auto& [table, lock] : locks) {
        if (lock.holder == &handle) {
            Refuse("the lock of " + table + " was not released");
            ReleaseLock(table);
        }
    }
    handle = Handle();
    handle.is_open = false;
}

bool StoreState::HoldsLock(const std::string& table, const void* holder) const {
    const auto lock = locks_.find(table);
    return lock != locks_.end() && lock->second.holder == holder;
}

bool StoreState::TakeLock(const std::string& table, const void* holder) {
    const auto this_thread = std::this_thread::get_id();
    for (auto lock = locks_.find(table); lock != locks_.end(); lock = locks_.find(table)) {
        if (lock->second.thread == this_thread) {
            return false;
        }
        lock_released_.wait(mutex);
    }
    locks_[table] = {holder, this_thread};
    return true;
}

void StoreState::ReleaseLock(const std::string& table) {
    locks_.erase(table);
    lock_released_.notify_all();
}

int32_t StoreState::Lock(DBAsciiHandle handle, const std::string& table, bool fails) {
    Handle* const usable = Usable(handle);
    if (usable == nullptr) {
        return kFailed;
    }
    return !fails && TakeLock(table, usable) ? 0 : kNotTaken;
}

int32_t StoreState::Unlock(DBAsciiHandle handle, const std::string& table) {
    const Handle* const usable = Usable(handle);
    if (usable == nullptr) {
        return kFailed;
    }
    if (!HoldsLock(table, usable)) {
        return Refuse("the handle does not hold the lock");
    }
    ReleaseLock(table);
    return 0;
}

bool StoreState::Owns(DBAsciiHandle handle) const {
    return handles_.count(handle) != 0;
}

size_t StoreState::OpenHandles() const {
    return static_cast<size_t>(
        std::count_if(handles_.begin(), handles_.end(),
                      [](const auto& handle) { return handle.second->is_open; }));
}

std::vector<std::string> StoreState::Complaints() const {
    std::vector<std::string> complaints = broken_rules_;
    const auto count = [&](size_t number, const char* what) {
        if (number != 0) {
            complaints.push_back(std::to_string(number) + what);
        }
    };
    count(OpenHandles(), " handles are not closed");
    count(row_sets_.size(), " row sets are not freed");
    count(lists_.size(), " element lists are not consumed");
    count(locks_.size(), " locks are not released");
    for (const std::string& missed : journal.Missed()) {
        complaints.push_back(missed);
    }
    return complaints;
}

}  // namespace test_support
