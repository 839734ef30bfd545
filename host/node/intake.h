// From the alarm log to the library: takes up new alarms, and hands each of them over for one pager
// at a time, until every pager of its routes has an answer.
//
// Threads    One.
// A row that can't be read is set aside, said once, and the next one has its turn.
//
// Errors     StoreError. What was taken up and not handed over stays open in the tables.
#ifndef PAGERFWD_HOST_NODE_INTAKE_H
#define PAGERFWD_HOST_NODE_INTAKE_H

#include <ctime>
#include <functional>
#include <optional>
#include <set>
#include <string>

#include "host/pages/deliveries.h"
#include "host/process/operator_log.h"
#include "host/text/encoding.h"

namespace host {

class Intake {
 public:
    // Calls the library, and returns its answer.
    using Forward = std::function<int32_t(const Alarm& alarm, const Delivery& delivery)>;

    Intake(Encoding encoding, Forward forward, OperatorLog& log)
        : encoding_(encoding), forward_(std::move(forward)), log_(log) {}

    // Takes up what is new, and hands over what is open.
    void Run(Connection& connection);

    // Whether something is still open that may be handed over now.
    bool WantsAgain(std::time_t now) const { return not_before_ != 0 && now >= not_before_; }

    // Whether all is handed over but what was set aside.
    bool IsDone(Connection& connection) const;

 private:
    void TakeUp(Connection& connection);
    void TakeUp(Connection& connection, const Alarm& alarm, const std::vector<std::string>& pagers);
    bool HandOver(Connection& connection, const Delivery& delivery);
    std::optional<int32_t> AnswerFor(Connection& connection, const Delivery& delivery,
                                     const std::optional<Alarm>& alarm);
    int32_t Call(Connection& connection, const Alarm& alarm, const Delivery& delivery);
    bool IsPassing(Connection& connection, const Delivery& delivery, int32_t answer);
    void Report(const Delivery& delivery, int32_t answer);
    std::string Name(const Delivery& delivery) const;
    void SetAside(const std::string& what, const std::string& why);

    const Encoding encoding_;
    const Forward forward_;
    OperatorLog& log_;
    std::set<std::string> told_;   // of what a warning has been said
    std::set<std::string> aside_;  // ... and an error, since it can't be read or written
    std::time_t not_before_ = 0;   // after an answer that may change: when to ask again
};

}  // namespace host

#endif
