// Who has signed in by a browser: a cookie that is known here alone, and only while this process
// lives.
//
// Threads    Any.
#ifndef PAGERFWD_HOST_WEB_SESSIONS_H
#define PAGERFWD_HOST_WEB_SESSIONS_H

#include <ctime>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace host {

struct WebSession {
    std::string token;  // the id of the token that it was opened with
    std::string form;   // what each form of it carries, so that no other site can send one
    std::time_t ends = 0;
};

class WebSessions {
 public:
    static constexpr std::time_t kLasts = 12 * 60 * 60;

    // Returns the cookie. token: an id.
    std::string Open(const std::string& token, std::time_t now);
    // None: it is nobody's, or over.
    std::optional<WebSession> Find(const std::string& cookie, std::time_t now);
    void Close(const std::string& cookie);

 private:
    void MakeRoom(std::time_t now);

    std::mutex mutex_;  // guards all that follows
    std::map<std::string, WebSession> sessions_;
};

// Whether they are the same, in a time that doesn't tell where they differ.
bool AreSameSecrets(std::string_view left, std::string_view right);

}  // namespace host

#endif
