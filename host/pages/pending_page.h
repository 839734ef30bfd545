// What the tables hold of a page that is still owed: for those who change its owner.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_PENDING_PAGE_H
#define PAGERFWD_HOST_PAGES_PENDING_PAGE_H

#include <cstdint>
#include <optional>
#include <string>

#include "host/pages/deliveries.h"
#include "host/pages/page_key.h"
#include "host/store/connection.h"

namespace host {

// A page has one event; another program may have written a second.
struct PendingEvent {
    int64_t row;
    int64_t tries;
    std::string line;
};

// In sight or hidden. None: no library has the page.
std::optional<PendingEvent> FindEvent(Connection& connection, const PageKey& page);

std::optional<Delivery> FindDelivery(Connection& connection, const PageKey& page);
bool IsOpen(const std::optional<Delivery>& delivery);

// Gives a page up within a write transaction of the caller: as GiveUpPage of page_owner.h.
bool EndPage(Connection& connection, const PageKey& page, const char* change,
             const std::string& why);

}  // namespace host

#endif
