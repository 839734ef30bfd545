// Pages taken from lines. Tested by tests/unit/host/page_owner_test.cpp.
#include <optional>

#include "host/alarms/alarms.h"
#include "host/alarms/states.h"
#include "host/pages/page_owner.h"
#include "host/pages/pager_limits.h"
#include "host/pages/pending_page.h"
#include "host/store/event_history.h"
#include "host/store/schema.h"

namespace host {
namespace {

bool NeedsPaging(Connection& connection, const PageKey& page) {
    const std::optional<Alarm> alarm = FindAlarm(connection, page.alarm);
    return alarm && !alarm->acknowledged && alarm->state != kStateAcknowledged;
}

// Opens the delivery of a page that is taken from a line, or makes one: a page of another program
// has none.
void OpenAgain(Connection& connection, const PageKey& page, int64_t tries) {
    if (!FindDelivery(connection, page)) {
        Statement(connection,
                  "INSERT INTO Host_Deliveries (alarm, place, alarm_group, pager, since)"
                  " SELECT ?1, coalesce(max(place) + 1, 0), ?2, ?3, 0 FROM Host_Deliveries"
                  " WHERE alarm = ?1")
            .Bind(page.alarm)
            .Bind(page.group)
            .Bind(page.pager)
            .Run();
    }
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    if (!delivery) {
        throw StoreError("the page of alarm " + page.alarm + " can't be opened again");
    }
    Statement(connection,
              "UPDATE Host_Deliveries SET answer = NULL, line = '', tries = tries + ?,"
              " since = (SELECT coalesce(max(row_id), 0) FROM Host_History)"
              " WHERE alarm = ? AND place = ?")
        .Bind(tries)
        .Bind(page.alarm)
        .Bind(delivery->place)
        .Run();
}

// Over all lines together, at most twice as often as on one. One that is on its first has come to
// less.
bool IsOverspent(Connection& connection, const PageKey& page) {
    const std::optional<PendingEvent> event = FindEvent(connection, page);
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    const int64_t allowed = LimitsOf(connection, page.pager).retries + 1;
    return event && delivery && delivery->tries > 0 &&
           event->tries + delivery->tries >= 2 * allowed;
}

constexpr const char* kOverspent = "tried twice as often as its pager allows, by several lines";

Taken TakeEvent(Connection& connection, const PageKey& page, const PendingEvent& event,
                const std::string& why) {
    const std::string row = std::to_string(event.row);
    const std::vector<Term> terms = {{"row_id", "=", row}};
    const bool goes_on = NeedsPaging(connection, page);
    WriteHistory(connection, {goes_on ? kMoved : kRemoved, nullptr, nullptr, why},
                 " WHERE row_id = ?", terms);
    Statement(connection, "DELETE FROM AlarmFwd_PagerEvents WHERE row_id = ?")
        .Bind(event.row)
        .Run();
    if (!goes_on) {
        return Taken::kEnded;
    }
    OpenAgain(connection, page, event.tries);
    return Taken::kFree;
}

// It was given to a line that never handed it over.
void GiveBack(Connection& connection, const Delivery& delivery) {
    Statement(connection, "UPDATE Host_Deliveries SET line = '' WHERE alarm = ? AND place = ?")
        .Bind(delivery.alarm)
        .Bind(delivery.place)
        .Run();
}

Taken Take(Connection& connection, const PageKey& page, const std::string& why) {
    if (const std::optional<PendingEvent> event = FindEvent(connection, page)) {
        return TakeEvent(connection, page, *event, why);
    }
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    if (!IsOpen(delivery) || delivery->line.empty()) {
        return Taken::kNone;
    }
    GiveBack(connection, *delivery);
    return Taken::kFree;
}

// Unless that would be once too often.
Taken TakeOrGiveUp(Connection& connection, const PageKey& page, const std::string& why) {
    if (NeedsPaging(connection, page) && IsOverspent(connection, page)) {
        EndPage(connection, page, kChanged, kOverspent);
        return Taken::kGivenUp;
    }
    return Take(connection, page, why);
}

// Those that the line has in its library, and those that it has still to hand over.
std::vector<PageKey> PagesOfLine(Connection& connection, const std::string& line) {
    Statement events(connection,
                     "SELECT AlmLogID, AlmGroup, PagerDescr FROM AlarmFwd_PagerEvents"
                     " WHERE PagerState = '2' AND line = ? ORDER BY row_id");
    std::vector<PageKey> pages;
    events.Bind(line);
    while (events.Step()) {
        pages.push_back({std::string(events.Text(0)), std::string(events.Text(1)),
                         std::string(events.Text(2))});
    }
    for (const Delivery& delivery : OpenDeliveries(connection)) {
        const PageKey page = {delivery.alarm, delivery.group, delivery.pager};
        if (delivery.line == line && !FindEvent(connection, page)) {
            pages.push_back(page);
        }
    }
    return pages;
}

bool IsBound(Connection& connection, const std::string& pager, const std::string& line) {
    Statement statement(connection,
                        "SELECT 1 FROM AlarmFwd_PagerSetting WHERE description = ?"
                        " AND comport = ?");
    return statement.Bind(pager).Bind(line).Step();
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
        if (IsBound(connection, page.pager, line)) {
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
    Statement(connection,
              "UPDATE Host_Deliveries SET line = ?, tries = 0 WHERE alarm = ? AND place = ?")
        .Bind(to)
        .Bind(page.alarm)
        .Bind(delivery->place)
        .Run();
    transaction.Commit();
    return true;
}

// Asked every second: only pages that were taken from a line before are looked at.
std::vector<PageKey> OverspentPages(Connection& connection, const std::string& line) {
    std::vector<PageKey> overspent;
    Statement statement(connection,
                        "SELECT moved.alarm, moved.alarm_group, moved.pager"
                        " FROM Host_Deliveries AS moved CROSS JOIN AlarmFwd_PagerEvents AS event"
                        " ON event.AlmLogID = moved.alarm AND event.AlmGroup = moved.alarm_group"
                        " AND event.PagerDescr = moved.pager"
                        " WHERE moved.tries > 0 AND event.line = ? AND +event.PagerState = '2'");
    statement.Bind(line);
    while (statement.Step()) {
        const PageKey page = {std::string(statement.Text(0)), std::string(statement.Text(1)),
                              std::string(statement.Text(2))};
        if (IsOverspent(connection, page)) {
            overspent.push_back(page);
        }
    }
    return overspent;
}

}  // namespace host
