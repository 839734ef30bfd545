// Sessions. Tested by tests/unit/host/web_pages_test.cpp.
#include "host/web/sessions.h"

#include <algorithm>

#include "host/web/token.h"

namespace host {
namespace {

constexpr size_t kMostSessions = 1000;
constexpr size_t kCookieDigits = 64;

}  // namespace

std::string WebSessions::Open(const std::string& token, std::time_t now) {
    std::string cookie = RandomDigits(kCookieDigits);
    const std::lock_guard<std::mutex> lock(mutex_);
    MakeRoom(now);
    sessions_[cookie] = {token, RandomDigits(kCookieDigits), now + kLasts};
    return cookie;
}

std::optional<WebSession> WebSessions::Find(const std::string& cookie, std::time_t now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = sessions_.find(cookie);
    return found == sessions_.end() || found->second.ends <= now
               ? std::nullopt
               : std::optional<WebSession>(found->second);
}

void WebSessions::Close(const std::string& cookie) {
    const std::lock_guard<std::mutex> lock(mutex_);
    sessions_.erase(cookie);
}

// Those that are over go first, then the oldest.
void WebSessions::MakeRoom(std::time_t now) {
    for (auto it = sessions_.begin(); it != sessions_.end();) {
        it = it->second.ends <= now ? sessions_.erase(it) : std::next(it);
    }
    if (sessions_.size() >= kMostSessions) {
        sessions_.erase(std::min_element(sessions_.begin(), sessions_.end(),
                                         [](const auto& left, const auto& right) {
                                             return left.second.ends < right.second.ends;
                                         }));
    }
}

bool AreSameSecrets(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) {
        return false;
    }
    int differs = 0;
    for (size_t i = 0; i < left.size(); ++i) {
        differs |= left[i] ^ right[i];
    }
    return differs == 0;
}

}  // namespace host
