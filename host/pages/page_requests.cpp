// Requests. Tested by tests/unit/host/page_requests_test.cpp.
#include "host/pages/page_requests.h"

#include "host/pages/page_owner.h"
#include "host/store/schema.h"

namespace host {

void CarryOut(Connection& connection, const PageRequest& request) {
    if (request.to.empty()) {
        GiveUpPage(connection, request.page, kCancelled, request.note);
    } else {
        MovePage(connection, request.page, request.to, request.note);
    }
    ForgetRequest(connection, request);
}

}  // namespace host
