// Owners of pages. Tested by tests/unit/host/page_owner_test.cpp.
#include "host/pages/page_owner.h"

#include <optional>

#include "host/pages/pending_page.h"
#include "host/store/pending.h"

namespace host {

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

std::vector<PageKey> OwnerlessPages(Connection& connection) {
    Statement statement(connection,
                        "SELECT AlmLogID, AlmGroup, PagerDescr FROM AlarmFwd_PagerEvents"
                        " WHERE PagerState = '2' AND line = '' ORDER BY row_id");
    std::vector<PageKey> pages;
    while (statement.Step()) {
        pages.push_back({std::string(statement.Text(0)), std::string(statement.Text(1)),
                         std::string(statement.Text(2))});
    }
    return pages;
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
        Statement(connection, "UPDATE Host_Deliveries SET line = ? WHERE alarm = ? AND place = ?")
            .Bind(line)
            .Bind(page.alarm)
            .Bind(delivery->place)
            .Run();
    }
    transaction.Commit();
}

std::string LineOf(Connection& connection, const PageKey& page) {
    if (const std::optional<PendingEvent> event = FindEvent(connection, page)) {
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
                        "  SELECT line FROM Host_Deliveries WHERE " +
                            std::string(kWaitsForALibrary) +
                            ")"
                            " WHERE line <> '' GROUP BY line");
    while (statement.Step()) {
        counts.emplace(statement.Text(0), statement.Number(1));
    }
    return counts;
}

}  // namespace host
