// Follows the page that the worker is sending, from outside: by the tables it reads, by what goes
// over the line, and by the row it writes at the end.
#ifndef PAGERFWD_TESTS_PROOF_PAGE_WATCH_H
#define PAGERFWD_TESTS_PROOF_PAGE_WATCH_H

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "sim/record/event.h"
#include "tests/proof/table_calls.h"

namespace proof {

// One alarm for one pager.
struct PageKey {
    int alarm = 0;  // 0: none
    std::string pager;

    bool operator<(const PageKey& other) const {
        return alarm != other.alarm ? alarm < other.alarm : pager < other.pager;
    }
    bool operator==(const PageKey& other) const {
        return alarm == other.alarm && pager == other.pager;
    }
};

// How far a sending is.
enum class Stage { kNone, kSettingUp, kDialling, kTransferring, kAccepted };

struct Flight {
    PageKey page;
    Stage stage = Stage::kNone;
    bool rewriting = false;  // its row, or that of a page being queued, is deleted and not yet back
    int unfolded = 0;  // the alarm whose row is being put back, or is, and whose state is not yet
                       // written; 0: none
};

// For short looks at the state, also inside the simulation, where no mutex may be waited for.
class SpinLock {
 public:
    void lock() {
        while (taken_.test_and_set(std::memory_order_acquire)) {
            std::this_thread::yield();
        }
    }
    void unlock() { taken_.clear(std::memory_order_release); }

 private:
    std::atomic_flag taken_ = ATOMIC_FLAG_INIT;
};

// Order      Made by the service's thread, which is the one that made it. SetTableWatcher(&watch)
//            and a simulated line with it as recorder; outlives both.
// Threads    Flight may be asked from any thread; the hooks run in the thread that meets them,
//            inside the simulation or the table access: they must not wait.
class PageWatch : public TableWatcher, public pagersim::Recorder {
 public:
    struct Hooks {
        std::function<void()> at_each_step = [] {};  // anything at all
        std::function<void()> opens = [] {};         // the program opens the line
        std::function<void(const PageKey&)> dials = [](const PageKey&) {};  // a call is placed
        std::function<void(const PageKey&, const pagersim::Event&)> delivers =
            [](const PageKey&, const pagersim::Event&) {};
    };

    explicit PageWatch(Hooks hooks);

    proof::Flight Flight() const;

    void Before(const TableCall& call) override;
    void After(const TableCall& call, int32_t result) override;
    void Record(const pagersim::Event& event) override;

 private:
    bool InWorker() const { return std::this_thread::get_id() != service_; }
    void NoteLookUp(const TableCall& call);
    void NoteLine(const pagersim::Event& event);
    void NoteModem(const pagersim::Event& event);

    const std::thread::id service_ = std::this_thread::get_id();
    const Hooks hooks_;
    mutable SpinLock lock_;
    // Guarded by lock_.
    PageKey looked_up_;  // by the worker
    proof::Flight flight_;
};

}  // namespace proof

#endif
