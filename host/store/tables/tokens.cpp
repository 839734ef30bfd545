// Tokens in the database. Tested by tests/unit/host/web_token_test.cpp.
#include "host/store/tables/tokens.h"

namespace host {
namespace {

const std::string kSelect = "SELECT name, may, expires, made, used, id, hash FROM Host_Tokens ";

std::vector<Token> TokensIn(Statement& statement) {
    std::vector<Token> tokens;
    while (statement.Step()) {
        tokens.push_back({std::string(statement.Text(0)), std::string(statement.Text(1)),
                          static_cast<std::time_t>(statement.Number(2)),
                          static_cast<std::time_t>(statement.Number(3)),
                          static_cast<std::time_t>(statement.Number(4)),
                          std::string(statement.Text(5)), std::string(statement.Text(6))});
    }
    return tokens;
}

}  // namespace

void AddToken(Connection& connection, const Token& token) {
    Statement(connection,
              "INSERT INTO Host_Tokens (name, may, expires, made, used, id, hash)"
              " VALUES (?, ?, ?, ?, 0, ?, ?)")
        .Bind(token.name)
        .Bind(token.may)
        .Bind(static_cast<int64_t>(token.expires))
        .Bind(static_cast<int64_t>(token.made))
        .Bind(token.id)
        .Bind(token.hash)
        .Run();
}

bool RemoveToken(Connection& connection, const std::string& name) {
    Statement(connection, "DELETE FROM Host_Tokens WHERE name = ?").Bind(name).Run();
    return connection.Changes() > 0;
}

void SetTokenUsed(Connection& connection, const std::string& id, std::time_t now) {
    Statement(connection, "UPDATE Host_Tokens SET used = ? WHERE id = ?")
        .Bind(static_cast<int64_t>(now))
        .Bind(id)
        .Run();
}

std::optional<Token> FindToken(Connection& connection, const std::string& id) {
    Statement statement(connection, kSelect + "WHERE id = ?");
    statement.Bind(id);
    std::vector<Token> tokens = TokensIn(statement);
    return tokens.empty() ? std::nullopt : std::optional<Token>(std::move(tokens.front()));
}

std::vector<Token> ReadTokens(Connection& connection) {
    Statement statement(connection, kSelect + "ORDER BY name");
    return TokensIn(statement);
}

}  // namespace host
