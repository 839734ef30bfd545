// What an operator asks of a pending page: to be given up, or moved to another line.
//
// The line's library has the page, and only the end of its process takes it away. So a request is a
// row, which the node carries out once that process has ended, politely and only for this; without
// a node and its lines, whoever asks does it at once.
//
//   for (const PageRequest& request : OpenRequests(connection)) {
//       const std::string line = LineOf(connection, request.page);
//       // ... end the process of that line, if it runs; behind its end:
//       CarryOut(connection, request);
//       // ... start it again
//   }
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_PAGE_REQUESTS_H
#define PAGERFWD_HOST_PAGES_PAGE_REQUESTS_H

#include "host/store/tables/page_requests.h"

namespace host {

// Requires: no process has the page. A page that is moved by hand begins its tries anew, however
// many there were. The request is gone then, also where the page has ended meanwhile.
void CarryOut(Connection& connection, const PageRequest& request);

}  // namespace host

#endif
