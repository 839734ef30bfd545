// Owners of pages. Tested by tests/unit/host/page_owner_test.cpp.
#include "host/pages/page_owner.h"

#include <optional>

#include "host/store/tables/events.h"

namespace host {

std::vector<PageKey> OwnerlessPages(Connection& connection) {
    return PendingEvents(connection, "");
}

void AdoptPage(Connection& connection, const PageKey& page, const std::string& line) {
    WriteTransaction transaction(connection);
    SetEventLine(connection, page, line);
    if (const std::optional<Delivery> delivery = FindDelivery(connection, page)) {
        SetDeliveryLine(connection, *delivery, line);
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

}  // namespace host
