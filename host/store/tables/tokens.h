// Host_Tokens: who is let in over the network, and what he may do (host/web/token.h).
//
// Requires   A write transaction, for what changes anything.
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_TOKENS_H
#define PAGERFWD_HOST_STORE_TABLES_TOKENS_H

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"

namespace host {

struct Token {
    std::string name;         // of whoever uses it; one token each
    std::string may;          // "raise,look"
    std::time_t expires = 0;  // 0: never
    std::time_t made = 0;
    std::time_t used = 0;   // last, to the minute; 0: never
    std::string id = {};    // by which it is found
    std::string hash = {};  // of its secret
};

// Throws StoreError where there is one of this name, or of this id.
void AddToken(Connection& connection, const Token& token);
// False: there is none of this name.
bool RemoveToken(Connection& connection, const std::string& name);
void SetTokenUsed(Connection& connection, const std::string& id, std::time_t now);

std::optional<Token> FindToken(Connection& connection, const std::string& id);
// By name.
std::vector<Token> ReadTokens(Connection& connection);

}  // namespace host

#endif
