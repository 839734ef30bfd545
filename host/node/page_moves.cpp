// Pages that change lines. Tested by tests/e2e/run_lines_test.cpp and run_pages_test.cpp.
#include "host/node/page_moves.h"

#include <memory>
#include <vector>

#include "host/pages/page_owner.h"
#include "host/pages/page_requests.h"
#include "host/store/schema.h"
#include "host/store/tables/events.h"
#include "host/store/tables/lines.h"
#include "host/store/tables/pagers.h"

namespace host {

void PageMoves::Adopt(const Dispatch& dispatch) {
    for (const PageKey& page : OwnerlessPages(connection_)) {
        const std::vector<PagerRow> pagers = FindPagers(connection_, page.pager);
        const ServedLine* const line =
            pagers.size() == 1 ? dispatch.LineOfSite(pagers.front()) : nullptr;
        if (line != nullptr) {
            AdoptPage(connection_, page, line->Line().name);
        }
    }
}

void PageMoves::Move(std::time_t now) {
    if (!pace_.Take(now)) {
        return;
    }
    for (const auto& [name, count] : CountByLine(connection_)) {
        const ServedLine* const line = lines_.Find(name);
        if (line == nullptr) {
            if (member_.Leads() && IsNobodys(name)) {
                MoveAllOf(name, "the site has no such port any more");
            }
        } else if (line->IsClaimed() && !line->IsWanted() && line->IsAtRest()) {
            MoveAllOf(name, line->WhyNotWanted());
        }
    }
}

// Of a name that is no port of the site any more. While a node still serves it, it is that one's.
bool PageMoves::IsNobodys(const std::string& line) {
    return !FindLine(connection_, line) && NodeOfLine(connection_, line).empty();
}

// Whether it is this node that does something with pages of a line; empty: of none.
bool PageMoves::IsInCharge(const std::string& line) {
    if (member_.Name().empty() || lines_.Find(line) != nullptr) {
        return true;
    }
    return member_.Leads() && NodeOfLine(connection_, line).empty();
}

void PageMoves::MoveAllOf(const std::string& line, const std::string& why) {
    const TakenPages taken = TakeUnboundPages(connection_, line, why);
    const std::string from = " from line \"" + Decode(line, encoding_) + "\"";
    if (taken.free > 0) {
        log_.Warning(std::to_string(taken.free) + " page(s) taken" + from + ", to go by another");
    }
    if (taken.given_up > 0) {
        log_.Error(
            std::to_string(taken.given_up) + " page(s)" + from +
            " given up: over all lines they were tried twice as often as their pagers allow");
    }
}

void PageMoves::HoldLines() {
    std::set<std::string> held;
    CarryOutRequests(held);
    GiveUpOverspent(held);
    for (const std::unique_ptr<ServedLine>& line : lines_.All()) {
        line->SetHeld(held.count(line->Line().name) != 0);
    }
}

void PageMoves::CarryOutRequests(std::set<std::string>& held) {
    for (const PageRequest& request : OpenRequests(connection_)) {
        const std::string line = LineOf(connection_, request.page);
        if (!IsInCharge(line)) {
            continue;
        }
        if (IsAtRest(line)) {
            CarryOut(connection_, request);
            Ring(request.to);
        } else {
            held.insert(line);
        }
    }
}

// A line that has been given something, if there is one of this name.
void PageMoves::Ring(const std::string& name) const {
    if (const ServedLine* const line = lines_.Find(name)) {
        line->Ring();
    }
}

void PageMoves::GiveUpOverspent(std::set<std::string>& held) {
    for (const auto& [name, pages] : OverspentPages(connection_)) {
        const ServedLine* const line = lines_.Find(name);
        if (line == nullptr) {
            continue;  // its node's
        }
        if (!line->IsAtRest()) {
            held.insert(name);
            continue;
        }
        for (const PageKey& page : pages) {
            GiveUpPage(connection_, page, kChanged, "tried twice as often as its pager allows");
        }
    }
}

bool PageMoves::IsAtRest(const std::string& name) const {
    const ServedLine* const line = lines_.Find(name);
    return line == nullptr || line->IsAtRest();
}

}  // namespace host
