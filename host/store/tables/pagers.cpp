// Pagers in the tables. Tested by tests/unit/host/history_test.cpp and site_tables_test.cpp.
#include "host/store/tables/pagers.h"

namespace host {
namespace {

const std::string kSelectPager =
    "SELECT description, comport, pgtype, pgnumber, timemodel, CAST(retrydelay AS INTEGER),"
    " node FROM AlarmFwd_PagerSetting ";

std::vector<PagerRow> PagersIn(Statement& statement) {
    std::vector<PagerRow> pagers;
    while (statement.Step()) {
        pagers.push_back({std::string(statement.Text(0)), std::string(statement.Text(1)),
                          std::string(statement.Text(2)), std::string(statement.Text(3)),
                          std::string(statement.Text(4)), statement.Number(5),
                          std::string(statement.Text(6))});
    }
    return pagers;
}

}  // namespace

std::vector<PagerRow> ReadPagers(Connection& connection) {
    Statement statement(connection, kSelectPager + "ORDER BY row_id");
    return PagersIn(statement);
}

std::vector<PagerRow> FindPagers(Connection& connection, std::string_view description) {
    Statement statement(connection, kSelectPager + "WHERE description = ? ORDER BY row_id");
    return PagersIn(statement.Bind(description));
}

std::vector<std::string> PagerNames(Connection& connection) {
    return Statement(connection, "SELECT description FROM AlarmFwd_PagerSetting ORDER BY row_id")
        .Texts();
}

void SetNodeOfPager(Connection& connection, const std::string& pager, const std::string& node) {
    Statement(connection, "UPDATE AlarmFwd_PagerSetting SET node = ? WHERE description = ?")
        .Bind(node)
        .Bind(pager)
        .Run();
}

bool IsBoundTo(Connection& connection, const std::string& pager, const std::string& line) {
    return Statement(connection,
                     "SELECT 1 FROM AlarmFwd_PagerSetting WHERE description = ? AND comport = ?")
        .Bind(pager)
        .Bind(line)
        .Step();
}

PagerLimits LimitsOf(Connection& connection, const std::string& pager) {
    Statement statement(connection,
                        "SELECT CAST(numretries AS INTEGER), CAST(retrydelay AS INTEGER)"
                        " FROM AlarmFwd_PagerSetting WHERE description = ?");
    return statement.Bind(pager).Step() ? PagerLimits{statement.Number(0), statement.Number(1)}
                                        : PagerLimits{};
}

}  // namespace host
