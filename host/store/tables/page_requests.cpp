// Host_PageRequests. Tested by tests/unit/host/page_requests_test.cpp.
#include "host/store/tables/page_requests.h"

namespace host {

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
                        "SELECT alarm, alarm_group, pager, line, note, row_id"
                        " FROM Host_PageRequests ORDER BY row_id");
    while (statement.Step()) {
        requests.push_back({statement.Number(5), KeyIn(statement), std::string(statement.Text(3)),
                            std::string(statement.Text(4))});
    }
    return requests;
}

void ForgetRequest(Connection& connection, const PageRequest& request) {
    WriteTransaction transaction(connection);
    Statement(connection, "DELETE FROM Host_PageRequests WHERE row_id = ?").Bind(request.row).Run();
    transaction.Commit();
}

}  // namespace host
