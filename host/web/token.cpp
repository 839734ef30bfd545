// Tokens. Tested by tests/unit/host/web_token_test.cpp.
#include "host/web/token.h"

#include <crypt.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <memory>

namespace host {
namespace {

constexpr std::string_view kPrefix = "pagerfwd_";
constexpr size_t kIdLength = 8;
constexpr size_t kSecretLength = 64;
constexpr size_t kLength = 9 + kIdLength + 1 + kSecretLength;
constexpr unsigned long kRounds = 1000;
constexpr std::time_t kBetweenNotes = 60;

constexpr const char* kRights[] = {kMayRaise, kMayAcknowledge, kMayLook, kMayManage};

std::string RandomBytes(size_t count) {
    std::string bytes(count, '\0');
    if (getrandom(bytes.data(), count, 0) != static_cast<ssize_t>(count)) {
        throw StoreError("the system has no random numbers");
    }
    return bytes;
}

// setting: that of an earlier hash, or a new salt's. Empty: it is none.
std::string Hash(const std::string& secret, const std::string& setting) {
    const auto data = std::make_unique<crypt_data>();
    const char* const hash =
        crypt_rn(secret.c_str(), setting.c_str(), data.get(), static_cast<int>(sizeof *data));
    return hash == nullptr ? "" : hash;
}

std::string NewSetting() {
    constexpr size_t kSaltBytes = 16;
    const std::string salt = RandomBytes(kSaltBytes);
    std::array<char, CRYPT_GENSALT_OUTPUT_SIZE> setting{};
    if (crypt_gensalt_rn("$5$", kRounds, salt.data(), static_cast<int>(salt.size()), setting.data(),
                         static_cast<int>(setting.size())) == nullptr) {
        throw StoreError("this system can't make hashes");
    }
    return setting.data();
}

bool IsRight(std::string_view word) {
    return std::find(std::begin(kRights), std::end(kRights), word) != std::end(kRights);
}

// Whether a list has a word: ",raise,look," has ",look,".
bool Has(const std::string& list, std::string_view word) {
    return ("," + list + ",").find("," + std::string(word) + ",") != std::string::npos;
}

// Whoever only looks is let in though nothing can be written: the disk may be full.
void NoteUse(Connection& connection, const Token& token, std::time_t now) {
    if (now < token.used + kBetweenNotes && now >= token.used) {
        return;
    }
    try {
        WriteTransaction transaction(connection);
        SetTokenUsed(connection, token.id, now);
        transaction.Commit();
    } catch (const StoreError&) {
        return;
    }
}

}  // namespace

std::string RandomDigits(size_t count) {
    std::string digits;
    for (const char byte : RandomBytes(count / 2)) {
        const auto value = static_cast<unsigned char>(byte);
        digits += "0123456789abcdef"[value / 16];
        digits += "0123456789abcdef"[value % 16];
    }
    return digits;
}

std::optional<std::string> RightsIn(std::string_view words) {
    std::string rights;
    while (!words.empty()) {
        const size_t end = std::min(words.find(','), words.size());
        const std::string_view word = words.substr(0, end);
        if (!IsRight(word)) {
            return std::nullopt;
        }
        rights += Has(rights, word) ? "" : (rights.empty() ? "" : ",") + std::string(word);
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return rights.empty() ? std::nullopt : std::optional<std::string>(rights);
}

bool May(const Token& token, std::string_view right) {
    return Has(token.may, right) || Has(token.may, kMayManage);
}

std::string MakeToken(Connection& connection, Token token) {
    token.id = RandomDigits(kIdLength);
    const std::string secret = RandomDigits(kSecretLength);
    token.hash = Hash(secret, NewSetting());
    AddToken(connection, token);
    return std::string(kPrefix) + token.id + "_" + secret;
}

std::optional<Token> TokenFor(Connection& connection, std::string_view text, std::time_t now) {
    if (text.size() != kLength || text.substr(0, kPrefix.size()) != kPrefix) {
        return std::nullopt;
    }
    const std::string id(text.substr(kPrefix.size(), kIdLength));
    const std::string secret(text.substr(kLength - kSecretLength));
    std::optional<Token> token = FindToken(connection, id);
    if (!token || (token->expires != 0 && token->expires <= now)) {
        return std::nullopt;
    }
    // Where they first differ tells nothing of the secret.
    if (token->hash.empty() || Hash(secret, token->hash) != token->hash) {
        return std::nullopt;
    }
    NoteUse(connection, *token, now);
    return token;
}

}  // namespace host
