// Tells the operator of every page that has ended, and every alarm that was acknowledged, once.
//
// Threads    One.
// Errors     StoreError; the next look tells what this one couldn't.
#ifndef PAGERFWD_HOST_NODE_PAGE_ENDS_H
#define PAGERFWD_HOST_NODE_PAGE_ENDS_H

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "host/pages/history.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/store/tables/alarm_log.h"
#include "host/text/encoding.h"

namespace host {

class PageEnds {
 public:
    // What has ended before isn't told.
    PageEnds(Connection& connection, Encoding encoding, OperatorLog& log);

    // Who besides the operator hears of each page.
    using Listener = std::function<void(const PageStory& page)>;
    void SetListener(Listener listener) { listener_ = std::move(listener); }

    // Remembers what there is now. What has ended by then is told by the look behind: between the
    // two, lines record their sendings, which tell how far the pages came.
    void Mark();
    // At so many at once, of however many have ended. Returns whether it has told anything.
    bool Look();
    bool LookAtAll();
    // What has ended by now is told by another.
    void Skip();
    // ... who has told it up to this row of the history, and is gone; 0: nobody ever did.
    void GoOnBehind(int64_t row);
    // Up to which row of the history all is told.
    int64_t Seen() const { return seen_; }
    // Whether something behind the last look has been remembered.
    bool HaveMark() const { return marked_ > seen_; }

    // How many pages have ended since the beginning, by their state's word.
    const std::map<std::string, uint64_t>& Counts() const { return counts_; }
    // How many of them since their tries were used up.
    uint64_t GivenUp() const { return given_up_; }

 private:
    bool LookAtPages();
    void LookAtAcknowledgements();
    void Tell(const Alarm& alarm);
    void Tell(const PageStory& page);

    Connection& connection_;
    const Encoding encoding_;
    OperatorLog& log_;
    Listener listener_ = [](const PageStory&) {};
    int64_t version_ = -1;            // of the database, at the last look
    int64_t seen_ = 0;                // the last row of the history that was looked at
    int64_t marked_ = 0;              // the last one at the mark
    std::set<int64_t> acknowledged_;  // rows of the alarm log, of the last ones
    std::map<std::string, uint64_t> counts_;
    uint64_t given_up_ = 0;
};

}  // namespace host

#endif
