// What a node does with pages that a line lets go of: those of lines that don't serve them go to
// others, an operator's requests are carried out, and pages that were tried too often over all
// lines are given up. Only a line at rest lets go of any, so one is held for a moment where need
// be.
//
// On a site of several hosts each node does this for its own lines; for pages of no node's line the
// one that leads does.
//
// Threads    One.
// Errors     StoreError; the next look tries again.
#ifndef PAGERFWD_HOST_NODE_PAGE_MOVES_H
#define PAGERFWD_HOST_NODE_PAGE_MOVES_H

#include <ctime>
#include <set>
#include <string>

#include "host/node/dispatch.h"
#include "host/node/membership.h"
#include "host/node/pace.h"
#include "host/node/served_lines.h"
#include "host/process/operator_log.h"
#include "host/store/connection.h"
#include "host/text/encoding.h"

namespace host {

class PageMoves {
 public:
    PageMoves(Connection& connection, const ServedLines& lines, const Membership& member,
              Encoding encoding, OperatorLog& log)
        : connection_(connection), lines_(lines), member_(member), encoding_(encoding), log_(log) {}

    // A page that belongs to no line, as a node of an older make has left it, goes to one of these,
    // and goes on with the tries that it has.
    void Adopt(const Dispatch& dispatch);

    // From lines that don't serve them, and from ports that the site knows no more: where it is
    // wanted, every few seconds at most.
    void Want() { pace_.Want(); }
    void Move(std::time_t now);
    bool IsDue(std::time_t now) const { return pace_.IsDue(now); }

    // What an operator asks, and pages that were tried too often: what can be done now is done, and
    // the lines that are to let go of pages first are held until the next look.
    void HoldLines();

 private:
    bool IsNobodys(const std::string& line);
    bool IsInCharge(const std::string& line);
    void MoveAllOf(const std::string& line, const std::string& why);
    void CarryOutRequests(std::set<std::string>& held);
    void GiveUpOverspent(std::set<std::string>& held);
    void Ring(const std::string& name) const;
    bool IsAtRest(const std::string& name) const;

    static constexpr std::time_t kBetween = 5;

    Connection& connection_;
    const ServedLines& lines_;
    const Membership& member_;
    const Encoding encoding_;
    OperatorLog& log_;
    Pace pace_{kBetween};
};

}  // namespace host

#endif
