// The fixture of tests on the pages: somebody with a browser, at a database of its own.
#ifndef PAGERFWD_TESTS_UNIT_HOST_WEB_FIXTURE_H
#define PAGERFWD_TESTS_UNIT_HOST_WEB_FIXTURE_H

#include <string>
#include <vector>

#include "host/store/tables/trail.h"
#include "host/web/pages.h"
#include "host/web/token.h"
#include "tests/support/zone.h"
#include "tests/unit/host/service_test.h"

class WebTest : public ServiceTest {
 protected:
    WebTest() { test_support::UseZone("UTC"); }

    std::string TokenWith(const std::string& may) {
        host::WriteTransaction transaction(connection);
        std::string text = host::MakeToken(connection, {"maria", may, 0, kNow});
        transaction.Commit();
        return text;
    }
    host::WebAnswer Get(const std::string& target) {
        return pages.Answer({"GET", target, "", "", "127.0.0.1", cookies});
    }
    host::WebAnswer Post(const std::string& target, const std::string& body) {
        return pages.Answer({"POST", target, "", body, "127.0.0.1", cookies});
    }
    host::WebAnswer SignInWith(const std::string& token) {
        return Post("/sign-in", "token=" + token);
    }
    // From now on requests are those of the one who has signed in.
    void SignIn(const std::string& may = "manage") {
        const host::WebAnswer answer = SignInWith(TokenWith(may));
        EXPECT_EQ(303, answer.status);
        cookies = "other=1; " + answer.cookie.substr(0, answer.cookie.find(';')) + "; x=y";
    }
    // The secret in the forms of a page.
    static std::string FormIn(const std::string& html) {
        const std::string before = "name=\"form\" value=\"";
        const size_t at = html.find(before);
        return at == std::string::npos ? "" : html.substr(at + before.size(), 64);
    }
    // What a form asks for: sent as the browser would.
    host::WebAnswer Send(const std::string& path, const std::string& fields) {
        return Post(path, "form=" + FormIn(Get("/").body) + "&" + fields);
    }
    std::vector<host::TrailEntry> Trail() { return host::TrailBefore(connection, INT64_MAX, 100); }
    std::string Raise(const std::string& text) {
        return std::to_string(RaiseAlarm(connection, {"ops/1", "2", "web1", text}, kNow));
    }

    static constexpr const char* kEvil = "<script>alert(1)</script>\"'&\x1b[2J\xe2\x80\xae";

    host::WebPages pages{database, log};
    std::string cookies;
};

#endif
