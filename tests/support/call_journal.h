// What a MemoryStore was asked, and what shall happen at which call.
//
// Threads    None of its own: the store guards it.
#ifndef PAGERFWD_TESTS_SUPPORT_CALL_JOURNAL_H
#define PAGERFWD_TESTS_SUPPORT_CALL_JOURNAL_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/memory_store.h"

namespace test_support {

const char* NameOf(Call kind);

class CallJournal {
 public:
    using Hook = std::function<void()>;

    // A call of this kind begins: what has to run before it. line is what is known of it so far.
    std::vector<Hook> Begin(Call kind, const std::string& line);
    // The result with which this call fails, if it does.
    std::optional<int32_t> TakeFault(Call kind);
    void Record(Call kind, std::string line) { entries_.push_back({kind, std::move(line)}); }

    std::vector<std::string> Lines(const std::function<bool(Call, const std::string&)>& keep) const;
    void Forget() { entries_.clear(); }

    // Of any kind when kind is nothing. nth 1 is the next call.
    void Fail(std::optional<Call> kind, int nth, int32_t result);
    void FailAlways(Call kind, int32_t result) { always_.push_back({kind, 0, result}); }
    void StopFailing();
    void Before(Call kind, int nth, Hook hook) { hooks_.push_back({kind, nth, std::move(hook)}); }
    void BeforeEach(std::function<void(const std::string&)> hook) { each_ = std::move(hook); }

    // The faults and hooks that have not happened, one line each.
    std::vector<std::string> Missed() const;

 private:
    struct Entry {
        Call kind;
        std::string line;
    };
    struct Fault {
        std::optional<Call> kind;
        int remaining;
        int32_t result;
    };
    struct PlannedHook {
        Call kind;
        int remaining;
        Hook run;
    };

    std::vector<Entry> entries_;
    std::vector<Fault> faults_;
    std::vector<Fault> always_;
    std::vector<PlannedHook> hooks_;
    std::function<void(const std::string&)> each_;
};

}  // namespace test_support

#endif
