// Rows that can't be read or written: said once each, and left as they are.
#ifndef PAGERFWD_HOST_NODE_SET_ASIDE_H
#define PAGERFWD_HOST_NODE_SET_ASIDE_H

#include <set>
#include <string>

#include "host/process/operator_log.h"

namespace host {

class SetAside {
 public:
    explicit SetAside(OperatorLog& log) : log_(log) {}

    void Add(const std::string& what, const std::string& why) {
        if (rows_.insert(what).second) {
            log_.Error(what + " is set aside: " + why);
        }
    }
    bool Has(const std::string& what) const { return rows_.count(what) != 0; }
    size_t Count() const { return rows_.size(); }

    static constexpr const char* kTooLarge = "it has a text of more than 1 MiB";

 private:
    OperatorLog& log_;
    std::set<std::string> rows_;
};

}  // namespace host

#endif
