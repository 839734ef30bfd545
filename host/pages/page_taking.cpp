// Pages taken from lines. Tested by tests/unit/host/page_owner_test.cpp.
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/pages/page_owner.h"
#include "host/pages/page_taking.h"
#include "host/store/schema.h"
#include "host/store/tables/alarm_log.h"
#include "host/store/tables/events.h"
#include "host/store/tables/history.h"
#include "host/store/tables/pagers.h"
#include "host/store/tables/states.h"

namespace host {
namespace {

// The library's rule: the first page decides, but that off limit replaces done.
std::string Folded(Connection& connection, const std::string& alarm) {
    std::string folded;
    for (const std::string& state : EventStates(connection, alarm)) {
        if (folded.empty() || (folded == kStateDone && state == kStateOffLimit)) {
            folded = state;
        }
    }
    return folded.empty() ? kStateOffLimit : folded;
}

}  // namespace

void FoldPagesOf(Connection& connection, const std::string& alarm) {
    SetFoldedState(connection, alarm, Folded(connection, alarm));
}

namespace {

// Gives a page up. False: there is none.
bool EndPage(Connection& connection, const PageKey& page, const char* change,
             const std::string& why) {
    const std::optional<PendingEvent> event = FindEvent(connection, page);
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    if (!event && !IsOpen(delivery)) {
        return false;
    }
    if (event) {
        EndEvent(connection, event->row, change, why);
    } else {
        WriteHistory(connection, {change, page.alarm, page.group, page.pager, kStateOffLimit, "0",
                                  delivery->line, why});
    }
    if (IsOpen(delivery)) {
        CloseDelivery(connection, page.alarm, delivery->place, kGivenUp);
    }
    // What the others make of the alarm.
    FoldPagesOf(connection, page.alarm);
    return true;
}

bool NeedsPaging(Connection& connection, const PageKey& page) {
    const std::optional<Alarm> alarm = FindAlarm(connection, page.alarm);
    return alarm && !alarm->acknowledged && alarm->state != kStateAcknowledged;
}

// Opens the delivery of a page that is taken from a line, or makes one: a page of another program
// has none.
void OpenPageAgain(Connection& connection, const PageKey& page, int64_t tries) {
    if (!FindDelivery(connection, page)) {
        AddDelivery(connection, page);
    }
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    if (!delivery) {
        throw StoreError("the page of alarm " + page.alarm + " can't be opened again");
    }
    OpenAgain(connection, *delivery, tries);
}

// Over all lines together: twice as often as on one.
int64_t MostTries(Connection& connection, const std::string& pager) {
    return 2 * (LimitsOf(connection, pager).retries + 1);
}

// One that is on its first line has come to less.
bool IsOverspent(Connection& connection, const PageKey& page) {
    const std::optional<PendingEvent> event = FindEvent(connection, page);
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    return event && delivery && delivery->tries > 0 &&
           event->tries + delivery->tries >= MostTries(connection, page.pager);
}

constexpr const char* kOverspent = "tried twice as often as its pager allows, by several lines";

Taken TakeEvent(Connection& connection, const PageKey& page, const PendingEvent& event,
                const std::string& why) {
    const bool goes_on = NeedsPaging(connection, page);
    RemoveEvent(connection, event.row, goes_on ? kMoved : kRemoved, why);
    if (!goes_on) {
        return Taken::kEnded;
    }
    OpenPageAgain(connection, page, event.tries);
    return Taken::kFree;
}

Taken Take(Connection& connection, const PageKey& page, const std::string& why) {
    if (const std::optional<PendingEvent> event = FindEvent(connection, page)) {
        return TakeEvent(connection, page, *event, why);
    }
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    if (!IsOpen(delivery) || delivery->line.empty()) {
        return Taken::kNone;
    }
    // It was given to a line that never handed it over.
    SetDeliveryLine(connection, *delivery, "");
    return Taken::kFree;
}

}  // namespace

// Unless that would be once too often.
Taken TakeOrGiveUp(Connection& connection, const PageKey& page, const std::string& why) {
    if (NeedsPaging(connection, page) && IsOverspent(connection, page)) {
        EndPage(connection, page, kChanged, kOverspent);
        return Taken::kGivenUp;
    }
    return Take(connection, page, why);
}

namespace {

// Those that the line has in its library, and those that it has still to hand over.
std::vector<PageKey> PagesOfLine(Connection& connection, const std::string& line) {
    std::vector<PageKey> pages = PendingEvents(connection, line);
    for (const Delivery& delivery : OpenDeliveriesOf(connection, line)) {
        const PageKey page = {delivery.alarm, delivery.group, delivery.pager};
        if (!FindEvent(connection, page)) {
            pages.push_back(page);
        }
    }
    return pages;
}

}  // namespace

Taken TakePage(Connection& connection, const PageKey& page, const std::string& why) {
    WriteTransaction transaction(connection);
    const Taken taken = TakeOrGiveUp(connection, page, why);
    transaction.Commit();
    return taken;
}

TakenPages TakeUnboundPages(Connection& connection, const std::string& line,
                            const std::string& why) {
    TakenPages taken;
    WriteTransaction transaction(connection);
    for (const PageKey& page : PagesOfLine(connection, line)) {
        if (IsBoundTo(connection, page.pager, line)) {
            ++taken.bound;
            continue;
        }
        const Taken how = TakeOrGiveUp(connection, page, why);
        taken.free += how == Taken::kFree ? 1 : 0;
        taken.given_up += how == Taken::kGivenUp ? 1 : 0;
    }
    transaction.Commit();
    return taken;
}

bool MovePage(Connection& connection, const PageKey& page, const std::string& to,
              const std::string& why) {
    WriteTransaction transaction(connection);
    Take(connection, page, why);
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    if (!IsOpen(delivery)) {
        transaction.Commit();
        return false;
    }
    SetDeliveryLine(connection, *delivery, to);
    ForgetTries(connection, *delivery);
    transaction.Commit();
    return true;
}

// Only pages that were taken from a line before are looked at.
std::map<std::string, std::vector<PageKey>> OverspentPages(Connection& connection) {
    std::map<std::string, std::vector<PageKey>> overspent;
    std::map<std::string, int64_t> most;  // of a pager
    for (const MovedEvent& event : PendingMovedEvents(connection)) {
        const auto [known, is_new] = most.try_emplace(event.page.pager);
        if (is_new) {
            known->second = MostTries(connection, event.page.pager);
        }
        if (event.tries >= known->second) {
            overspent[event.line].push_back(event.page);
        }
    }
    return overspent;
}

bool GiveUpPage(Connection& connection, const PageKey& page, const char* change,
                const std::string& why) {
    WriteTransaction transaction(connection);
    const bool given_up = EndPage(connection, page, change, why);
    transaction.Commit();
    return given_up;
}

}  // namespace host
