// A trouble that may last, for the operator: told when it comes, told again only where its reason
// is a new one, and told when it has passed. One whose reason is ever another is told a few times.
//
// Tested by tests/unit/host/trouble_test.cpp.
//
// Threads    One.
#ifndef PAGERFWD_HOST_PROCESS_TROUBLE_H
#define PAGERFWD_HOST_PROCESS_TROUBLE_H

#include <set>
#include <string>
#include <utility>

#include "host/process/operator_log.h"

namespace host {

class Trouble {
 public:
    // over: what is told when it has passed.
    Trouble(OperatorLog& log, std::string over) : log_(log), over_(std::move(over)) {}

    // How it stands now. why: "" without trouble.
    void Is(const std::string& why) {
        if (!why.empty()) {
            if (told_.size() < kMostReasons && told_.insert(why).second) {
                log_.Error(why + "; trying again");
            }
        } else if (!told_.empty()) {
            told_.clear();
            log_.Info(over_);
        }
    }

    static constexpr size_t kMostReasons = 16;

 private:
    OperatorLog& log_;
    const std::string over_;
    std::set<std::string> told_;
};

}  // namespace host

#endif
