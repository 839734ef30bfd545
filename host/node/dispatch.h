// Which line gets which page, and when: a line is given only what it can send soon, so that the
// order stays the node's.
//
// A pager that names a port has its pages from that line; any other from a healthy line that can
// dial for its type, the least busy first. Severe alarms go before mild ones, and old before new; a
// page that waits for its line holds up no other.
//
// Where there are other nodes, each gives pages to its own lines. One that would only be a line's
// next is left to them while a line of theirs stands idle that could send it now; it keeps its
// place here meanwhile, so that no milder one comes before it. A node that takes it not within a
// few seconds is not waited for.
//
// However many wait, a pass reads of each pager the first few that its lines have room for; and of
// all, the next thousand behind those of the pass before, to close those that need no line any
// more.
//
// Threads    One.
// Errors     StoreError. What was not given to a line stays open in the tables.
#ifndef PAGERFWD_HOST_NODE_DISPATCH_H
#define PAGERFWD_HOST_NODE_DISPATCH_H

#include <ctime>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/node/line_loads.h"
#include "host/node/other_lines.h"
#include "host/node/served_lines.h"
#include "host/node/set_aside.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/pagers.h"
#include "host/text/encoding.h"

namespace host {

class Dispatch {
 public:
    Dispatch(const ServedLines& lines, Encoding encoding, OperatorLog& log)
        : lines_(lines), encoding_(encoding), log_(log), aside_(log) {}

    // leads: this node closes those that need no line. alone: no other node may have a line for
    // them.
    struct Role {
        bool leads = true;
        bool alone = true;
    };
    // Gives open deliveries to lines, and closes those that need none.
    void Run(Connection& connection, const Role& role, std::time_t now);
    // Whether it is to be run again soon though nothing changes: others have been left a page, or
    // not all that wait have been looked at since something changed.
    bool IsWaiting() const { return !left_.empty() || !settled_up_to_.first.empty(); }

    // Whether none is open but what was set aside.
    bool IsDone(Connection& connection) const;

    // The line for a page to this pager now; null: none that can have it is in service.
    ServedLine* LineFor(const PagerRow& pager) const;

    // One that is in service, or will be soon; null: there is none.
    ServedLine* LineOfSite(const PagerRow& pager) const;

    // Not yet tried pages that a line has at most: one on the line, one next.
    static constexpr int kMostAhead = 2;
    // Of those that wait, how many are looked at in a pass whether they need a line still.
    static constexpr int64_t kLookedAtInAPass = 1000;
    // So long a page is left to others, in seconds: they look for it once a second.
    static constexpr std::time_t kLeftFor = 3;

 private:
    struct Pass {
        const Role& role;
        std::time_t now;
        std::map<DeliveryKey, std::time_t> left;  // to others, until now
    };
    struct Waiting {
        Delivery delivery;
        PagerRow pager;
    };

    bool HaveRoom() const;
    int64_t RoomFor(const PagerRow& pager) const;
    void CloseSettled(Connection& connection, const Pass& pass);
    std::vector<Waiting> FirstOfAll(Connection& connection, const Pass& pass);
    void AddFirst(Connection& connection, const PagerRow& pager, const Pass& pass,
                  std::vector<Waiting>& first);
    void SetAsideAll(Connection& connection, const std::string& pager, const char* why);
    void CloseUnknown(Connection& connection, const std::string& pager, const Pass& pass);
    std::vector<Delivery> FirstOf(Connection& connection, const std::string& pager, int64_t count);
    void CloseOrSetAside(Connection& connection, const Delivery& delivery, const Pass& pass);
    void LookOrSetAside(Connection& connection, const Waiting& waiting, const Pass& pass);
    void Look(Connection& connection, const Waiting& waiting, const Pass& pass);
    void Give(Connection& connection, const Delivery& delivery, const PagerRow& pager,
              ServedLine& line, const Pass& pass);
    std::optional<int32_t> AnswerWithoutLine(Connection& connection, const Delivery& delivery,
                                             const std::optional<Alarm>& alarm) const;
    bool CloseIfSettled(Connection& connection, const Delivery& delivery, const Pass& pass);
    bool IsLeft(const Delivery& delivery, const PagerRow& pager, const Pass& pass);
    void TellThatNoneHas(const PagerRow& pager);

    const ServedLines& lines_;
    const Encoding encoding_;
    OperatorLog& log_;
    SetAside aside_;
    LineLoads loads_;
    OtherLines others_;
    DeliveryKey settled_up_to_;                // the last that was looked at; empty: all were
    std::map<DeliveryKey, std::time_t> left_;  // to others, and since when
    std::set<std::string> without_line_;       // pagers of which that has been said
};

}  // namespace host

#endif
