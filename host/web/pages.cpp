// Pages. Tested by tests/unit/host/web_pages_test.cpp.
#include "host/web/pages.h"

#include <charconv>
#include <ctime>
#include <optional>

#include "host/alarms/raising.h"
#include "host/store/pool.h"
#include "host/web/html.h"
#include "host/web/page_views.h"
#include "host/web/token.h"

namespace host {
namespace {

constexpr std::string_view kCookie = "pagerfwd_session=";
constexpr const char* kHtml = "text/html; charset=utf-8";
constexpr int kSecondsAway = 5;
constexpr size_t kLongestComment = 1000;

WebAnswer Page(int status, std::string html) {
    WebAnswer answer{status, std::move(html), kHtml};
    answer.policy =
        "default-src 'none'; style-src 'self'; form-action 'self'; base-uri 'none'; "
        "frame-ancestors 'none'";
    return answer;
}

WebAnswer Redirect(const std::string& to) {
    WebAnswer answer{303, "", kHtml};
    answer.location = to;
    return answer;
}

// Of "a=b; pagerfwd_session=...; c=d".
std::string SessionIn(std::string_view cookies) {
    while (!cookies.empty()) {
        const std::string_view cookie = cookies.substr(0, cookies.find(';'));
        if (cookie.substr(0, kCookie.size()) == kCookie) {
            return std::string(cookie.substr(kCookie.size()));
        }
        cookies.remove_prefix(std::min(cookie.size() + 1, cookies.size()));
        cookies.remove_prefix(std::min(cookies.find_first_not_of(' '), cookies.size()));
    }
    return {};
}

std::string SetCookie(const std::string& value, std::time_t lasts) {
    return std::string(kCookie) + value +
           "; HttpOnly; SameSite=Strict; Path=/; Max-Age=" + std::to_string(lasts);
}

// What a form says: each of its fields; empty where it isn't one.
std::map<std::string, std::string> FormIn(const std::string& body) {
    const std::optional<WebTarget> form = ParseTarget("/?" + body);
    return form ? form->query : std::map<std::string, std::string>();
}

std::string FieldIn(const std::map<std::string, std::string>& form, const char* name) {
    const auto found = form.find(name);
    return found == form.end() ? std::string() : found->second;
}

std::optional<int64_t> NumberIn(const std::string& text) {
    int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end && number > 0 ? std::optional<int64_t>(number)
                                                                   : std::nullopt;
}

// The token of a session, as it is now: it may have been revoked.
std::optional<Token> TokenOf(Connection& connection, const WebSession& session, std::time_t now) {
    const std::optional<Token> token = FindToken(connection, session.token);
    return token && (token->expires == 0 || token->expires > now) ? token : std::nullopt;
}

WebAnswer NotAllowed() {
    return Page(403, MistakePage("Not allowed", "Your token is not good for this."));
}

struct Change {
    Connection& connection;
    const Token& token;
    int64_t alarm;
    std::string comment;
    std::time_t now;
};

WebAnswer Acknowledge(const Change& change) {
    if (!May(change.token, kMayAcknowledge)) {
        return NotAllowed();
    }
    WriteTransaction transaction(change.connection);
    AcknowledgeBy(change.connection, change.alarm,
                  {change.token.name, change.now, change.comment.substr(0, kLongestComment)});
    transaction.Commit();
    return Redirect("/alarm?number=" + std::to_string(change.alarm));
}

WebAnswer Withdraw(const Change& change) {
    if (!May(change.token, kMayRaise)) {
        return NotAllowed();
    }
    WriteTransaction transaction(change.connection);
    WithdrawBy(change.connection, std::to_string(change.alarm), {change.token.name, change.now});
    transaction.Commit();
    return Redirect("/alarm?number=" + std::to_string(change.alarm));
}

WebAnswer Show(Connection& connection, const WebTarget& target, const Viewer& viewer) {
    if (!May(viewer.token, kMayLook)) {
        return NotAllowed();
    }
    if (target.path == "/") {
        return Page(200, OverviewPage(connection, viewer));
    }
    const std::optional<std::string> page =
        target.path == "/alarm" ? AlarmPage(connection, viewer, FieldIn(target.query, "number"))
                                : std::nullopt;
    return page ? Page(200, *page)
                : Page(404, MistakePage("Not found", "There is nothing of this name."));
}

WebAnswer DoAsAsked(Connection& connection, const WebTarget& target, const Token& token,
                    const std::map<std::string, std::string>& form) {
    const std::optional<int64_t> alarm = NumberIn(FieldIn(form, "alarm"));
    if (!alarm || (target.path != "/acknowledge" && target.path != "/withdraw")) {
        return Page(404, MistakePage("Not found", "There is nothing of this name."));
    }
    const Change change{connection, token, *alarm, FieldIn(form, "comment"), std::time(nullptr)};
    return target.path == "/acknowledge" ? Acknowledge(change) : Withdraw(change);
}

}  // namespace

WebAnswer WebPages::Answer(const WebRequest& request) {
    try {
        return Serve(request);
    } catch (const std::exception& error) {
        log_.Error(error.what());
        WebAnswer answer = Page(503, MistakePage("Not now",
                                                 "The database is away. Paging may go "
                                                 "on; try again in some seconds."));
        answer.retry_after = kSecondsAway;
        return answer;
    }
}

WebAnswer WebPages::Serve(const WebRequest& request) {
    const std::optional<WebTarget> target = ParseTarget(request.target);
    if (!target) {
        return Page(400, MistakePage("Not found", "The address can't be read."));
    }
    if (target->path == "/style.css") {
        return {200, kStyleSheet, "text/css; charset=utf-8"};
    }
    if (target->path == "/sign-in") {
        return request.method == "POST" ? SignIn(request) : Page(200, SignInPage(""));
    }
    const std::optional<WebSession> session =
        sessions_.Find(SessionIn(request.cookies), std::time(nullptr));
    if (!session) {
        return request.method == "GET" ? Redirect("/sign-in")
                                       : Page(403, MistakePage("Signed out", "Sign in first."));
    }
    return ServeSignedIn(request, *target, *session);
}

bool WebPages::MayTry(const std::string& source) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return tries_.Take(source, RateLimit::Clock::now());
}

WebAnswer WebPages::SignIn(const WebRequest& request) {
    if (!MayTry(request.source)) {
        WebAnswer answer = Page(429, SignInPage("Too many tries; wait some seconds."));
        answer.retry_after = kSecondsAway;
        return answer;
    }
    const std::time_t now = std::time(nullptr);
    Lease lease(database_);
    const std::optional<Token> token =
        TokenFor(lease.Database(), FieldIn(FormIn(request.body), "token"), now);
    if (!token) {
        return Page(403, SignInPage("This is no token, or one that is not valid any more."));
    }
    WebAnswer answer = Redirect("/");
    answer.cookie = SetCookie(sessions_.Open(token->id, now), WebSessions::kLasts);
    return answer;
}

WebAnswer WebPages::SignOut(const WebRequest& request) {
    sessions_.Close(SessionIn(request.cookies));
    WebAnswer answer = Redirect("/sign-in");
    answer.cookie = SetCookie("", 0);
    return answer;
}

WebAnswer WebPages::ServeSignedIn(const WebRequest& request, const WebTarget& target,
                                  const WebSession& session) {
    Lease lease(database_);
    const std::optional<Token> token = TokenOf(lease.Database(), session, std::time(nullptr));
    if (!token) {
        return SignOut(request);
    }
    if (request.method == "GET") {
        return Show(lease.Database(), target, {*token, session.form});
    }
    const std::map<std::string, std::string> form = FormIn(request.body);
    if (request.method != "POST" || !AreSameSecrets(FieldIn(form, "form"), session.form)) {
        return Page(403, MistakePage("Not done",
                                     "This form was not sent from this page, or is "
                                     "an old one: load the page again."));
    }
    if (target.path == "/sign-out") {
        return SignOut(request);
    }
    return DoAsAsked(lease.Database(), target, *token, form);
}

}  // namespace host
