// Tokens: what a program or a person shows to be let in.
//
//   "pagerfwd_0123abcd_" and 64 digits   which it is, and its secret
//
// Of the secret the database has only a hash (crypt(5), SHA-256, with a salt of its own). A secret
// has 256 random bits, which nobody guesses, so the hash is made by few rounds: it is made anew for
// every request.
#ifndef PAGERFWD_HOST_WEB_TOKEN_H
#define PAGERFWD_HOST_WEB_TOKEN_H

#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/tokens.h"

namespace host {

// What one may do; whoever may manage may do all.
inline constexpr const char* kMayRaise = "raise";
inline constexpr const char* kMayAcknowledge = "acknowledge";
inline constexpr const char* kMayLook = "look";
inline constexpr const char* kMayManage = "manage";
// "raise,look", as the command line and the table have it: none where a word is none of these.
std::optional<std::string> RightsIn(std::string_view words);
bool May(const Token& token, std::string_view right);

// A new one, written into the table; the text that its owner gets is known to nobody else.
// Requires a write transaction. Throws StoreError where there is one of this name.
std::string MakeToken(Connection& connection, Token token);

// So many random digits, 0 to f, that nobody guesses. Throws StoreError.
std::string RandomDigits(size_t count);

// Whose it is. None: nobody's, or it is over. Notes now and then that it is used, in a transaction
// of its own.
std::optional<Token> TokenFor(Connection& connection, std::string_view text, std::time_t now);

}  // namespace host

#endif
