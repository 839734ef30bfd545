// A page that is owed, and its end. Tested by tests/unit/host/page_owner_test.cpp.
#include "host/pages/pending_page.h"

#include "host/alarms/states.h"
#include "host/pages/page_owner.h"
#include "host/store/event_history.h"
#include "host/store/pending.h"

namespace host {
namespace {

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

}  // namespace

std::optional<PendingEvent> FindEvent(Connection& connection, const PageKey& page) {
    Statement statement(connection,
                        "SELECT row_id, CAST(PagerRetries AS INTEGER), line"
                        " FROM AlarmFwd_PagerEvents WHERE AlmLogID = ? AND AlmGroup = ?"
                        " AND PagerDescr = ? AND +PagerState = '2' ORDER BY row_id");
    statement.Bind(page.alarm).Bind(page.group).Bind(page.pager);
    return statement.Step() ? std::optional<PendingEvent>({statement.Number(0), statement.Number(1),
                                                           std::string(statement.Text(2))})
                            : std::nullopt;
}

std::optional<Delivery> FindDelivery(Connection& connection, const PageKey& page) {
    for (const Delivery& delivery : DeliveriesOf(connection, page.alarm)) {
        if (delivery.group == page.group && delivery.pager == page.pager) {
            return delivery;
        }
    }
    return std::nullopt;
}

bool IsOpen(const std::optional<Delivery>& delivery) {
    return delivery && !delivery->answer;
}

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
    EndAlarm(connection, page.alarm);
    return true;
}

bool GiveUpPage(Connection& connection, const PageKey& page, const char* change,
                const std::string& why) {
    WriteTransaction transaction(connection);
    const bool given_up = EndPage(connection, page, change, why);
    transaction.Commit();
    return given_up;
}

}  // namespace host
