// A trouble that may last, for the operator: told when it comes, told again only where its reason
// is a new one, and told when it has passed. One whose reason is ever another is told a few times;
// one that comes and goes, ever more seldom, unless it lasts.
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
        : log_(log), words_over_(std::move(over)), outages_(outages) {}

    // How it stands now. why: "" without trouble.
    void Is(const std::string& why, std::time_t now) {
        if (why.empty()) {
            IsOver(now);
            return;
        }
        since_ = since_.value_or(now);
        const bool is_new = IsLongSince(over_, now, soon_) || IsLongSince(since_, now, kLasting);
        if (is_new && told_.empty()) {
            soon_ = IsLongSince(over_, now, 2 * soon_) ? kSoon : std::min(2 * soon_, kLongest);
        }
        if (is_new && told_.size() < kMostReasons && told_.insert(why).second) {
            log_.Error(why + "; trying again");
        }
    }

    void IsAway(const StoreAway& why, std::time_t now) {
        if (why.Outage().empty()) {
            return Is(why.what(), now);
        }
        tell_at_ = std::min(tell_at_.value_or(now + outages_.first), now + outages_.next);
        if (now >= *tell_at_) {
            tell_at_ = now + outages_.next;
            told_.insert(why.Outage());
            log_.Error(std::string(why.what()) + "; trying again");
        }
    }

    static constexpr size_t kMostReasons = 16;
    // Seconds: what comes back so soon behind its end is told when it has lasted so long. What does
    // so again and again has double the time each time, at most the longest.
    static constexpr std::time_t kSoon = 60;
    static constexpr std::time_t kLongest = 3600;
    static constexpr std::time_t kLasting = 10;

 private:
    // Without an instant, too; and a clock that was set back makes nothing wait.
    static bool IsLongSince(std::optional<std::time_t> then, std::time_t now, std::time_t time) {
        return !then || now < *then || now - *then >= time;
    }

    void IsOver(std::time_t now) {
        tell_at_.reset();
        since_.reset();
        if (!told_.empty()) {
            told_.clear();
            over_ = now;
            log_.Info(words_over_);
        }
    }

    OperatorLog& log_;
    const std::string words_over_;
    const Outages outages_;
    std::set<std::string> told_;
    std::time_t soon_ = kSoon;
    std::optional<std::time_t> since_;    // it is there, and no outage
    std::optional<std::time_t> over_;     // its end was last told
    std::optional<std::time_t> tell_at_;  // of an outage
};

}  // namespace host

#endif
