// The record of calls, and what is planned for them. Tested by
// tests/unit/support/memory_store_test.cpp.
#include "tests/support/call_journal.h"

namespace test_support {

const char* NameOf(Call kind) {
    switch (kind) {
        case Call::kOpen:
            return "Open";
        case Call::kTableOpen:
            return "TableOpen";
        case Call::kClose:
            return "Close";
        case Call::kCloseKeepStaticDllInfo:
            return "CloseKeepStaticDllInfo";
        case Call::kLock:
            return "Lock";
        case Call::kUnlock:
            return "Unlock";
        case Call::kGetAllEntriesByCondition:
            return "GetAllEntriesByCondition";
        case Call::kGetElementColumn:
            return "GetElementColumn";
        case Call::kFree:
            return "Free";
        case Call::kAddElement:
            return "AddElement";
        case Call::kSet:
            return "Set";
        case Call::kSQLConditionSet:
            return "SQLConditionSet";
        case Call::kSQLConditionDelete:
            return "SQLConditionDelete";
        case Call::kWrite:
            return "Write";
    }
    return "?";
}

std::vector<CallJournal::Hook> CallJournal::Begin(Call kind, const std::string& line) {
    std::vector<Hook> due;
    if (each_) {
        due.emplace_back([run = each_, line] { run(line); });
    }
    for (auto hook = hooks_.begin(); hook != hooks_.end();) {
        if (hook->kind == kind && --hook->remaining == 0) {
            due.push_back(std::move(hook->run));
            hook = hooks_.erase(hook);
        } else {
            ++hook;
        }
    }
    return due;
}

std::optional<int32_t> CallJournal::TakeFault(Call kind) {
    std::optional<int32_t> result;
    for (const Fault& fault : always_) {
        if (fault.kind == kind) {
            result = fault.result;
        }
    }
    for (auto fault = faults_.begin(); fault != faults_.end();) {
        if (fault->kind.value_or(kind) == kind && --fault->remaining == 0) {
            result = fault->result;
            fault = faults_.erase(fault);
        } else {
            ++fault;
        }
    }
    return result;
}

std::vector<std::string> CallJournal::Lines(
    const std::function<bool(Call, const std::string&)>& keep) const {
    std::vector<std::string> lines;
    for (const Entry& entry : entries_) {
        if (keep(entry.kind, entry.line)) {
            lines.push_back(entry.line);
        }
    }
    return lines;
}

void CallJournal::Fail(std::optional<Call> kind, int nth, int32_t result) {
    faults_.push_back({kind, nth, result});
}

void CallJournal::StopFailing() {
    faults_.clear();
    always_.clear();
}

std::vector<std::string> CallJournal::Missed() const {
    std::vector<std::string> missed;
    for (const Fault& fault : faults_) {
        missed.push_back(std::string("no ") + (fault.kind ? NameOf(*fault.kind) : "call") +
                         " came that could fail");
    }
    for (const PlannedHook& hook : hooks_) {
        missed.push_back(std::string("no ") + NameOf(hook.kind) + " came for its hook");
    }
    return missed;
}

}  // namespace test_support
