// Selecting rows. Tested by tests/unit/host/store_contract_test.cpp.
#include "host/store/where.h"

#include <string_view>

namespace host {
namespace {

bool IsUnequal(const Term& term) {
    return term.sign == std::string_view("<>");
}

// An index leads to what is below or above a value, but not to what is unequal.
std::string TermAsSql(const Term& term) {
    const std::string column = Quoted(term.column);
    std::string condition = column;
    if (IsUnequal(term)) {
        return "(" + condition.append(" < ? OR ").append(column).append(" > ?)");
    }
    return condition.append(" ").append(term.sign).append(" ?");
}

}  // namespace

std::string WhereInSight(const Table& table, const std::vector<Term>& terms) {
    std::string clause;
    const auto add = [&clause](const std::string& text) {
        clause += (clause.empty() ? " WHERE " : " AND ") + text;
    };
    for (const Term& term : terms) {
        add(TermAsSql(term));
    }
    if (table.in_sight != nullptr) {
        add(table.in_sight);
    }
    return clause;
}

void BindTerms(Statement& statement, const std::vector<Term>& terms) {
    for (const Term& term : terms) {
        statement.Bind(term.value);
        if (IsUnequal(term)) {
            statement.Bind(term.value);
        }
    }
}

int32_t ChangeRows(Connection& connection, const std::string& sql, const std::vector<Term>& terms) {
    Statement statement(connection, sql);
    BindTerms(statement, terms);
    statement.Run();
    return connection.Changes();
}

}  // namespace host
