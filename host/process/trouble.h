// A trouble that may last, for the operator: told when it comes, told again only where its reason
// is a new one, and told when it has passed. One whose reason is ever another is told a few times.
//
// A server that can't be reached is an outage, whatever the reason of the moment: told once a
// minute, in one wording.
//
// Tested by tests/unit/host/trouble_test.cpp.
//
// Threads    One.
#ifndef PAGERFWD_HOST_PROCESS_TROUBLE_H
#define PAGERFWD_HOST_PROCESS_TROUBLE_H

#include <algorithm>
#include <ctime>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "host/process/operator_log.h"
#include "host/store/connection.h"

namespace host {

class Trouble {
 public:
    // Seconds into an outage, before it is told; and from one time to the next.
    struct Outages {
        std::time_t first;
        std::time_t next;
    };
    static constexpr Outages kTold{0, 60};
    // By one beside whom another looks at the same server, and tells.
    static constexpr Outages kToldByAnother{60, 600};

    // over: what is told when it has passed.
    Trouble(OperatorLog& log, std::string over, Outages outages = kTold)
        : log_(log), over_(std::move(over)), outages_(outages) {}

    // How it stands now. why: "" without trouble.
    void Is(const std::string& why) {
        if (why.empty()) {
            IsOver();
        } else if (told_.size() < kMostReasons && told_.insert(why).second) {
            log_.Error(why + "; trying again");
        }
    }

    void IsAway(const StoreAway& why, std::time_t now) {
        if (why.Outage().empty()) {
            return Is(why.what());
        }
        tell_at_ = std::min(tell_at_.value_or(now + outages_.first), now + outages_.next);
        if (now >= *tell_at_) {
            tell_at_ = now + outages_.next;
            told_.insert(why.Outage());
            log_.Error(std::string(why.what()) + "; trying again");
        }
    }

    static constexpr size_t kMostReasons = 16;

 private:
    void IsOver() {
        tell_at_.reset();
        if (!told_.empty()) {
            told_.clear();
            log_.Info(over_);
        }
    }

    OperatorLog& log_;
    const std::string over_;
    const Outages outages_;
    std::set<std::string> told_;
    std::optional<std::time_t> tell_at_;  // of an outage
};

}  // namespace host

#endif
