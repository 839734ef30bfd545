// Host_PageRequests: what an operator asks of pending pages; see host/pages/page_requests.h.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_PAGE_REQUESTS_H
#define PAGERFWD_HOST_STORE_TABLES_PAGE_REQUESTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/page_key.h"

namespace host {

struct PageRequest {
    int64_t row = 0;
    PageKey page;
    std::string to;    // the line that is to have it; empty: it is to be given up
    std::string note;  // why, and who
};

// A request for the same page takes the place of the one before.
void AskForPage(Connection& connection, const PageRequest& request);

std::vector<PageRequest> OpenRequests(Connection& connection);

void ForgetRequest(Connection& connection, const PageRequest& request);

}  // namespace host

#endif
