// Selecting rows. Tested by tests/unit/host/store_contract_test.cpp.
#include "host/store/where.h"

namespace host {

std::string WhereInSight(const Table& table, const std::vector<Term>& terms) {
    std::string clause;
    const auto add = [&clause](const std::string& text) {
        clause += (clause.empty() ? " WHERE " : " AND ") + text;
    };
    for (const Term& term : terms) {
        add(Quoted(term.column) + " " + term.sign + " ?");
    }
    if (table.in_sight != nullptr) {
        add(table.in_sight);
    }
    return clause;
}

void BindTerms(Statement& statement, const std::vector<Term>& terms) {
    for (const Term& term : terms) {
        statement.Bind(term.value);
    }
}

int32_t ChangeRows(Connection& connection, const std::string& sql, const std::vector<Term>& terms) {
    Statement statement(connection, sql);
    BindTerms(statement, terms);
    statement.Run();
    return connection.Changes();
}

}  // namespace host
