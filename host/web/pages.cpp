// Pages. Tested by tests/unit/host/web_pages_test.cpp.
#include "host/web/pages.h"

#include <algorithm>
#include <ctime>
#include <optional>

#include "host/alarms/incoming.h"
#include "host/site/site_tables.h"
#include "host/store/pool.h"
#include "host/web/html.h"
#include "host/web/page_changes.h"
#include "host/web/page_views.h"
#include "host/web/token.h"

namespace host {
namespace {

constexpr std::string_view kCookie = "pagerfwd_session=";
constexpr const char* kHtml = "text/html; charset=utf-8";
constexpr int kSecondsAway = 5;

WebAnswer Page(int status, std::string html) {
    WebAnswer answer{status, std::move(html), kHtml};
    answer.policy =
        "default-src 'none'; style-src 'self'; script-src 'self'; connect-src 'self'; "
        "img-src 'self'; form-action 'self'; base-uri 'none'; frame-ancestors 'none'";
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

// The token of a session, as it is now: it may have been revoked.
std::optional<Token> TokenOf(Connection& connection, const WebSession& session, std::time_t now) {
    const std::optional<Token> token = FindToken(connection, session.token);
    return token && (token->expires == 0 || token->expires > now) ? token : std::nullopt;
}

WebAnswer NotAllowed() {
    return Page(403, MistakePage("Not allowed", "Your token is not good for this."));
}

struct View {
    const char* path;
    std::string (*page)(const PageAsked&);
    const char* type;
};
constexpr const char* kSvg = "image/svg+xml; charset=utf-8";
constexpr View kViews[] = {
    {"/", OverviewPage, kHtml},      {"/pages", PendingPagesPage, kHtml},
    {"/failed", FailedPage, kHtml},  {"/alarms", AlarmsPage, kHtml},
    {"/alarm", AlarmPage, kHtml},    {"/call", CallPage, kHtml},
    {"/picture", CallPicture, kSvg}, {"/hours", HoursPage, kHtml},
    {"/tests", TestsPage, kHtml},    {"/test", TestPage, kHtml},
    {"/trail", TrailPage, kHtml},
};

const View& ViewOf(const std::string& path) {
    for (const View& view : kViews) {
        if (view.path == path) {
            return view;
        }
    }
    throw NotFound();
}

// One cell that is too large hides no page.
std::string Made(const View& view, const PageAsked& asked) {
    try {
        return view.page(asked);
    } catch (const RowTooLarge&) {
        const Connection::AnyLength any_length(asked.connection);
        return view.page(asked);
    }
}

WebAnswer Show(const PageAsked& asked) {
    if (!May(asked.viewer.token, kMayLook)) {
        return NotAllowed();
    }
    const View& view = ViewOf(asked.target.path);
    WebAnswer answer = Page(200, Made(view, asked));
    answer.type = view.type;
    return answer;
}

WebAnswer DoAsAsked(const std::string& path, const FormSent& sent) {
    const FormAction* const change = FindFormAction(path);
    if (change == nullptr) {
        throw NotFound();
    }
    if (!May(sent.token, change->right)) {
        return NotAllowed();
    }
    try {
        return Redirect(change->change(sent));
    } catch (const BadField& bad) {
        throw PageMistake(400, "Not done", bad.Field() + ": " + bad.what());
    }
}

}  // namespace

WebAnswer WebPages::Answer(const WebRequest& request) {
    try {
        return Serve(request);
    } catch (const PageMistake& mistake) {
        return Page(mistake.Status(), MistakePage(mistake.Title(), mistake.what()));
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
    if (target->path == "/page.js") {
        return {200, kScript, "text/javascript; charset=utf-8"};
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
    const std::time_t now = std::time(nullptr);
    if (request.method == "GET") {
        const Viewer viewer{*token, session.form};
        return Show({lease.Database(), database_, target, viewer, watchman_, now,
                     EncodingOf(lease.Database())});
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
    return DoAsAsked(target.path, {lease.Database(), lease.Owners(), *token, form, now});
}

}  // namespace host
