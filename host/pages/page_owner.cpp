// Owners of pages. Tested by tests/unit/host/page_owner_test.cpp.
#include "host/pages/page_owner.h"

#include <optional>

#include "host/alarms/alarms.h"
#include "host/alarms/states.h"
#include "host/pages/pager_limits.h"
#include "host/store/event_history.h"
#include "host/store/pending.h"
#include "host/store/schema.h"

namespace host {
namespace {

// What is pending of a page. A page has one event; another program may have written a second.
struct Event {
    int64_t row;
    int64_t tries;
    std::string line;
};

std::optional<Event> FindEvent(Connection& connection, const PageKey& page) {
    Statement statement(connection,
                        "SELECT row_id, CAST(PagerRetries AS INTEGER), line"
                        " FROM AlarmFwd_PagerEvents WHERE AlmLogID = ? AND AlmGroup = ?"
                        " AND PagerDescr = ? AND +PagerState = '2' ORDER BY row_id");
    statement.Bind(page.alarm).Bind(page.group).Bind(page.pager);
    return statement.Step() ? std::optional<Event>({statement.Number(0), statement.Number(1),
                                                    std::string(statement.Text(2))})
                            : std::nullopt;
}

std::optional<Delivery> FindDelivery(Connection& connection, const PageKey& page) {
    for (Delivery& delivery : DeliveriesOf(connection, page.alarm)) {
        if (delivery.group == page.group && delivery.pager == page.pager) {
            return std::move(delivery);
        }
    }
    return std::nullopt;
}

bool IsOpen(const std::optional<Delivery>& delivery) {
    return delivery && !delivery->answer;
}

bool NeedsPaging(Connection& connection, const PageKey& page) {
    const std::optional<Alarm> alarm = FindAlarm(connection, page.alarm);
    return alarm && !alarm->acknowledged && alarm->state != kStateAcknowledged;
}

void SetLine(Connection& connection, const Delivery& delivery, const std::string& line) {
    Statement(connection, "UPDATE Host_Deliveries SET line = ? WHERE alarm = ? AND place = ?")
        .Bind(line)
        .Bind(delivery.alarm)
        .Bind(delivery.place)
        .Run();
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

// The library's rule: the first page decides, but that off limit replaces done.
std::string Fold(Connection& connection, const std::string& alarm) {
    std::string folded;
    Statement statement(connection,
                        "SELECT PagerState FROM AlarmFwd_PagerEvents WHERE AlmLogID = ?"
                        " ORDER BY row_id");
    statement.Bind(alarm);
    while (statement.Step()) {
        const std::string state(statement.Text(0));
        if (folded.empty() || (folded == kStateDone && state == kStateOffLimit)) {
            folded = state;
        }
    }
    return folded.empty() ? kStateOffLimit : folded;
}

// Once a page has ended: what the others make of the alarm.
void EndAlarm(Connection& connection, const std::string& alarm) {
    const std::string folded = Fold(connection, alarm);
    Statement(connection, std::string("UPDATE AlarmLog SET pagerstate = CASE WHEN ") +
                              kIsOwedAPage + " THEN '2' ELSE ? END" +
                              " WHERE alarmlogID = ? AND alarmack IN ('', '0')"
                              " AND pagerstate <> '1'")
        .Bind(folded)
        .Bind(alarm)
        .Run();
}

void EndEvent(Connection& connection, int64_t row, const char* change, const std::string& why) {
    SetEventState(connection, row, kStateOffLimit, change, why);
    Statement(connection, "UPDATE AlarmFwd_PagerEvents SET hidden_by = NULL WHERE row_id = ?")
        .Bind(row)
        .Run();
}

// Those below require a write transaction.

bool GiveUp(Connection& connection, const PageKey& page, const char* change,
            const std::string& why) {
    const std::optional<Event> event = FindEvent(connection, page);
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
    EndAlarm(connection, page.alarm);
    return true;
}

// Over all lines together, at most twice as often as on one. One that is on its first has come to
// less.
bool IsOverspent(Connection& connection, const PageKey& page) {
    const std::optional<Event> event = FindEvent(connection, page);
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    const int64_t allowed = LimitsOf(connection, page.pager).retries + 1;
    return event && delivery && delivery->tries > 0 &&
           event->tries + delivery->tries >= 2 * allowed;
}

constexpr const char* kOverspent = "tried twice as often as its pager allows, by several lines";

Taken TakeEvent(Connection& connection, const PageKey& page, const Event& event,
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

Taken Take(Connection& connection, const PageKey& page, const std::string& why) {
    if (const std::optional<Event> event = FindEvent(connection, page)) {
        return TakeEvent(connection, page, *event, why);
    }
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    if (!IsOpen(delivery) || delivery->line.empty()) {
        return Taken::kNone;
    }
    SetLine(connection, *delivery, "");
    return Taken::kFree;
}

// Unless that would be once too often.
Taken TakeOrGiveUp(Connection& connection, const PageKey& page, const std::string& why) {
    if (NeedsPaging(connection, page) && IsOverspent(connection, page)) {
        GiveUp(connection, page, kChanged, kOverspent);
        return Taken::kGivenUp;
    }
    return Take(connection, page, why);
}

std::vector<PageKey> ReadKeys(Statement& statement) {
    std::vector<PageKey> pages;
    while (statement.Step()) {
        pages.push_back({std::string(statement.Text(0)), std::string(statement.Text(1)),
                         std::string(statement.Text(2))});
    }
    return pages;
}

// Those that the line has in its library, and those that it has still to hand over.
std::vector<PageKey> PagesOfLine(Connection& connection, const std::string& line) {
    Statement events(connection,
                     "SELECT AlmLogID, AlmGroup, PagerDescr FROM AlarmFwd_PagerEvents"
                     " WHERE PagerState = '2' AND line = ? ORDER BY row_id");
    std::vector<PageKey> pages = ReadKeys(events.Bind(line));
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

bool GiveToLine(Connection& connection, const Delivery& delivery, const std::string& line) {
    WriteTransaction transaction(connection);
    Statement(connection,
              "UPDATE Host_Deliveries SET line = ? WHERE alarm = ? AND place = ?"
              " AND answer IS NULL AND line = ''")
        .Bind(line)
        .Bind(delivery.alarm)
        .Bind(delivery.place)
        .Run();
    const bool given = connection.Changes() > 0;
    transaction.Commit();
    return given;
}

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

std::vector<PageKey> OwnerlessPages(Connection& connection) {
    Statement statement(connection,
                        "SELECT AlmLogID, AlmGroup, PagerDescr FROM AlarmFwd_PagerEvents"
                        " WHERE PagerState = '2' AND line = '' ORDER BY row_id");
    return ReadKeys(statement);
}

void AdoptPage(Connection& connection, const PageKey& page, const std::string& line) {
    WriteTransaction transaction(connection);
    Statement(connection,
              "UPDATE AlarmFwd_PagerEvents SET line = ? WHERE AlmLogID = ? AND AlmGroup = ?"
              " AND PagerDescr = ? AND line = ''")
        .Bind(line)
        .Bind(page.alarm)
        .Bind(page.group)
        .Bind(page.pager)
        .Run();
    if (const std::optional<Delivery> delivery = FindDelivery(connection, page)) {
        SetLine(connection, *delivery, line);
    }
    transaction.Commit();
}

std::vector<PageKey> OverspentPages(Connection& connection, const std::string& line) {
    std::vector<PageKey> overspent;
    for (const PageKey& page : PagesOfLine(connection, line)) {
        if (IsOverspent(connection, page)) {
            overspent.push_back(page);
        }
    }
    return overspent;
}

bool GiveUpPage(Connection& connection, const PageKey& page, const char* change,
                const std::string& why) {
    WriteTransaction transaction(connection);
    const bool given_up = GiveUp(connection, page, change, why);
    transaction.Commit();
    return given_up;
}

std::string LineOf(Connection& connection, const PageKey& page) {
    if (const std::optional<Event> event = FindEvent(connection, page)) {
        return event->line;
    }
    const std::optional<Delivery> delivery = FindDelivery(connection, page);
    return IsOpen(delivery) ? delivery->line : std::string();
}

std::map<std::string, int64_t> CountByLine(Connection& connection) {
    std::map<std::string, int64_t> counts;
    Statement statement(connection,
                        "SELECT line, count(*) FROM (SELECT line FROM AlarmFwd_PagerEvents"
                        "  WHERE PagerState = '2' UNION ALL"
                        "  SELECT line FROM Host_Deliveries AS open WHERE answer IS NULL"
                        "   AND NOT EXISTS (SELECT 1 FROM AlarmFwd_PagerEvents"
                        "    WHERE AlmLogID = open.alarm AND AlmGroup = open.alarm_group"
                        "    AND PagerDescr = open.pager AND +PagerState = '2'))"
                        " WHERE line <> '' GROUP BY line");
    while (statement.Step()) {
        counts.emplace(statement.Text(0), statement.Number(1));
    }
    return counts;
}

}  // namespace host
