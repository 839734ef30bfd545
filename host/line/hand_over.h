// Hands the deliveries that the node has given this line to the library, one by one.
//
// The library sends what was handed over last first, at the beginning of its next pass, and a pass
// works on a copy of the queue. So the next page is handed over when the one before is on the line:
// it waits for nobody then, and what goes first stays the node's decision.
//
// A row that can't be read is set aside, said once, and the next one has its turn.
//
// Threads    One.
// Errors     StoreError. What was not handed over stays open in the tables.
#ifndef PAGERFWD_HOST_LINE_HAND_OVER_H
#define PAGERFWD_HOST_LINE_HAND_OVER_H

#include <ctime>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "host/process/operator_log.h"
#include "host/store/tables/deliveries.h"
#include "host/text/encoding.h"
#include "host/trace/traced_page.h"

namespace host {

class HandOver {
 public:
    // Calls the library, and returns its answer.
    using Forward = std::function<int32_t(const Alarm& alarm, const Delivery& delivery)>;

    HandOver(std::string line, Encoding encoding, Forward forward, OperatorLog& log)
        : line_(std::move(line)), encoding_(encoding), forward_(std::move(forward)), log_(log) {}

    // Hands over the next page, unless the one before still waits for the line. Whether there was
    // one: then it is to be called again soon.
    bool Run(Connection& connection);

    // What the trace shows of a page.
    void Saw(const TracedPage& page);

 private:
    bool Waits(Connection& connection) const;
    void HandOneOrSay(Connection& connection, const Delivery& delivery);
    void HandOne(Connection& connection, const Delivery& delivery);
    std::optional<int32_t> AnswerFor(Connection& connection, const Delivery& delivery,
                                     const Alarm& alarm);
    int32_t Call(Connection& connection, const Alarm& alarm, const Delivery& delivery);
    std::string Name(const Delivery& delivery) const;

    const std::string line_;
    const Encoding encoding_;
    const Forward forward_;
    OperatorLog& log_;
    std::map<std::string, std::time_t>
        again_;                         // after an answer that may change: when to ask again
    std::set<std::string> unreadable_;  // of which that has been said
    std::optional<Delivery> handed_;    // that has not been on the line yet
    std::time_t handed_at_ = 0;
};

}  // namespace host

#endif
