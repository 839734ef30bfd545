// Requests. Tested by tests/unit/host/page_requests_test.cpp.
#include "host/pages/page_requests.h"

#include "host/pages/page_owner.h"
#include "host/store/schema.h"

namespace host {
namespace {

void Forget(Connection& connection, const PageRequest& request) {
    WriteTransaction transaction(connection);
    Statement(connection, "DELETE FROM Host_PageRequests WHERE row_id = ?").Bind(request.row).Run();
    transaction.Commit();
}

}  // namespace

void AskForPage(Connection& connection, const PageRequest& request) {
    WriteTransaction transaction(connection);
    Statement(connection,
              "DELETE FROM Host_PageRequests WHERE alarm = ? AND alarm_group = ? AND pager = ?")
        .Bind(request.page.alarm)
        .Bind(request.page.group)
        .Bind(request.page.pager)
        .Run();
    Statement(connection,
              "INSERT INTO Host_PageRequests (alarm, alarm_group, pager, line, note)"
              " VALUES (?, ?, ?, ?, ?)")
        .Bind(request.page.alarm)
        .Bind(request.page.group)
        .Bind(request.page.pager)
        .Bind(request.to)
        .Bind(request.note)
        .Run();
    transaction.Commit();
}

std::vector<PageRequest> OpenRequests(Connection& connection) {
    std::vector<PageRequest> requests;
    Statement statement(connection,
                        "SELECT row_id, alarm, alarm_group, pager, line, note"
                        " FROM Host_PageRequests ORDER BY row_id");
    while (statement.Step()) {
        requests.push_back({statement.Number(0),
                            {std::string(statement.Text(1)), std::string(statement.Text(2)),
                             std::string(statement.Text(3))},
                            std::string(statement.Text(4)),
                            std::string(statement.Text(5))});
    }
    return requests;
}

void CarryOut(Connection& connection, const PageRequest& request) {
    if (request.to.empty()) {
        GiveUpPage(connection, request.page, kCancelled, request.note);
    } else {
        MovePage(connection, request.page, request.to, request.note);
    }
    Forget(connection, request);
}

}  // namespace host
