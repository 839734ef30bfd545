// Takeover. Tested by tests/unit/host/takeover_test.cpp.
#include "host/pages/takeover.h"

#include "host/pages/page_taking.h"
#include "host/site/site_tables.h"
#include "host/store/schema.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/events.h"
#include "host/store/tables/history.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/states.h"
#include "host/trace/traced_page.h"

namespace host {
namespace {

bool IsOnLine(const PageKey& page, const PageOnLine& on_line) {
    return (on_line.alarm.empty() || page.alarm == on_line.alarm) &&
           page.pager.substr(0, kTracedTextKept) == on_line.pager &&
           page.group.substr(0, kTracedTextKept) == on_line.group;
}

class Taker {
 public:
    Taker(Connection& connection, std::string node)
        : connection_(connection),
          node_(std::move(node)),
          asks_(AsksForUnknownOutcomes(connection)) {}

    void TakeAllOf(const std::string& line) {
        const PageOnLine on_line = FindPageOnLine(connection_, line);
        for (const PageKey& page : PagesOfLine(connection_, line)) {
            // What has not been handed over has no event, and was on no line.
            const bool may_have_left =
                IsOnLine(page, on_line) && FindEvent(connection_, page).has_value();
            Take(page, may_have_left);
        }
    }

    TakenOver Result() const { return taken_; }

 private:
    void Take(const PageKey& page, bool may_have_left) {
        const std::string gone = "node \"" + node_ + "\" is gone";
        const Taken how = TakeOrGiveUp(
            connection_, page,
            may_have_left ? gone + "; this page was on its line, and may have been sent" : gone);
        taken_.given_up += how == Taken::kGivenUp ? 1 : 0;
        if (how != Taken::kFree) {
            return;
        }
        ++taken_.pages;
        if (may_have_left) {
            taken_.may_have_left.push_back(page);
            SetUnknown(connection_, *FindDelivery(connection_, page), asks_);
        }
    }

    Connection& connection_;
    const std::string node_;
    const bool asks_;
    TakenOver taken_;
};

std::optional<TakenOver> Take(Connection& connection, const std::string& node, int64_t term) {
    if (!TakeLeaseAway(connection, node, term)) {
        return std::nullopt;
    }
    Taker taker(connection, node);
    for (const std::string& line : ClaimedLines(connection, node)) {
        taker.TakeAllOf(line);
    }
    FreeLinesOf(connection, node);
    return taker.Result();
}

// Of which an operator is asked. None: nobody asks about this page.
std::optional<Delivery> FindUnknown(Connection& connection, const PageKey& page) {
    std::optional<Delivery> delivery = FindDelivery(connection, page);
    return IsOpen(delivery) && delivery->unknown ? delivery : std::nullopt;
}

}  // namespace

std::optional<TakenOver> TakeOver(Connection& connection, const std::string& node, int64_t term) {
    WriteTransaction transaction(connection);
    const std::optional<TakenOver> taken = Take(connection, node, term);
    transaction.Commit();
    return taken;
}

std::optional<TakenOver> RemoveNode(Connection& connection, const std::string& node, int64_t term) {
    WriteTransaction transaction(connection);
    const std::optional<TakenOver> taken = Take(connection, node, term);
    if (taken) {
        ForgetNode(connection, node);
    }
    transaction.Commit();
    return taken;
}

bool SendAgain(Connection& connection, const PageKey& page, const std::string& why) {
    WriteTransaction transaction(connection);
    const std::optional<Delivery> delivery = FindUnknown(connection, page);
    if (!delivery) {
        return false;
    }
    SetUnknown(connection, *delivery, false);
    WriteHistory(connection,
                 {kMoved, page.alarm, page.group, page.pager, kStateBeingPaged, "0", "", why});
    OpenAgain(connection, *delivery, 0);  // anew, behind that row
    transaction.Commit();
    return true;
}

// Its row is what the library writes of a page that its centre has confirmed.
bool CountAsSent(Connection& connection, const PageKey& page, const std::string& why) {
    WriteTransaction transaction(connection);
    const std::optional<Delivery> delivery = FindUnknown(connection, page);
    if (!delivery) {
        return false;
    }
    AddEndedEvent(connection, page, kStateDone, why);
    SetUnknown(connection, *delivery, false);
    CloseDelivery(connection, page.alarm, delivery->place, kWasQueued);
    FoldPagesOf(connection, page.alarm);
    transaction.Commit();
    return true;
}

}  // namespace host
