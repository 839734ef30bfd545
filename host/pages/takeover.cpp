// Takeover. Tested by tests/unit/host/takeover_test.cpp.
#include "host/pages/takeover.h"

#include <map>
#include <vector>

#include "host/pages/page_taking.h"
#include "host/site/site_tables.h"
#include "host/store/schema.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/events.h"
#include "host/store/tables/history.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/nodes.h"
#include "host/store/tables/pages_of_node.h"
#include "host/store/tables/states.h"

namespace host {
namespace {

// Those of a dead node: singly where something is to be said or decided of each, which are few, and
// then all others at once.
class Taker {
 public:
    Taker(Connection& connection, const std::string& node)
        : connection_(connection),
          gone_("node \"" + node + "\" is gone"),
          asks_(AsksForUnknownOutcomes(connection)) {}

    void TakeThoseOnTheLine(const std::string& line) {
        const PageOnLine on_line = FindPageOnLine(connection_, line);
        // What has not been handed over has no event, and was on no line.
        for (const PageKey& page : PendingTracedEvents(
                 connection_, line, {on_line.alarm, on_line.group, on_line.pager})) {
            if (Take(page, gone_ + "; this page was on its line, and may have been sent")) {
                taken_.may_have_left.push_back(page);
                SetUnknown(connection_, *FindDelivery(connection_, page), asks_);
            }
        }
    }

    void GiveUpOverspentOf(const std::vector<std::string>& lines) {
        std::map<std::string, std::vector<PageKey>> overspent = OverspentPages(connection_);
        for (const std::string& line : lines) {
            for (const PageKey& page : overspent[line]) {
                Take(page, gone_);
            }
        }
    }

    TakenOver TakeAllOthersOf(const std::string& node) {
        taken_.pages += static_cast<int32_t>(TakePagesOfNode(connection_, node, gone_));
        return taken_;
    }

 private:
    // Whether it waits for another line.
    bool Take(const PageKey& page, const std::string& why) {
        const Taken how = TakeOrGiveUp(connection_, page, why);
        taken_.given_up += how == Taken::kGivenUp ? 1 : 0;
        taken_.pages += how == Taken::kFree ? 1 : 0;
        return how == Taken::kFree;
    }

    Connection& connection_;
    const std::string gone_;
    const bool asks_;
    TakenOver taken_;
};

std::optional<TakenOver> Take(Connection& connection, const std::string& node, int64_t term) {
    if (!TakeLeaseAway(connection, node, term)) {
        return std::nullopt;
    }
    Taker taker(connection, node);
    const std::vector<std::string> lines = ClaimedLines(connection, node);
    for (const std::string& line : lines) {
        taker.TakeThoseOnTheLine(line);
    }
    taker.GiveUpOverspentOf(lines);
    const TakenOver taken = taker.TakeAllOthersOf(node);
    FreeLinesOf(connection, node);
    return taken;
}

// Of which an operator is asked. None: nobody asks about this page.
std::optional<Delivery> FindUnknown(Connection& connection, const PageKey& page) {
    std::optional<Delivery> delivery = FindDelivery(connection, page);
    return IsOpen(delivery) && delivery->unknown ? delivery : std::nullopt;
}

}  // namespace

std::optional<TakenOver> TakeOver(Connection& connection, const std::string& node, int64_t term) {
    WriteTransaction transaction(connection);
    std::optional<TakenOver> taken = Take(connection, node, term);
    transaction.Commit();
    return taken;
}

std::optional<TakenOver> RemoveNode(Connection& connection, const std::string& node, int64_t term) {
    WriteTransaction transaction(connection);
    std::optional<TakenOver> taken = Take(connection, node, term);
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
