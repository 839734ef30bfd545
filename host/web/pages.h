// What a person sees and does in a browser: who is let in, and to which page or change
// (page_views.h, page_changes.h). Plain HTML, which needs no script.
//
// A person signs in with a token, and gets a cookie. Whatever changes anything is a form with a
// secret of the session in it.
//
// Threads    Any.
#ifndef PAGERFWD_HOST_WEB_PAGES_H
#define PAGERFWD_HOST_WEB_PAGES_H

#include <mutex>
#include <string>

#include "host/net/rate.h"
#include "host/process/operator_log.h"
#include "host/web/http.h"
#include "host/web/sessions.h"
#include "host/web/watchman.h"

namespace host {

class WebPages {
 public:
    WebPages(std::string database, OperatorLog& log) : database_(std::move(database)), log_(log) {}

    WebAnswer Answer(const WebRequest& request);

 private:
    WebAnswer Serve(const WebRequest& request);
    WebAnswer SignIn(const WebRequest& request);
    WebAnswer SignOut(const WebRequest& request);
    WebAnswer ServeSignedIn(const WebRequest& request, const WebTarget& target,
                            const WebSession& session);
    bool MayTry(const std::string& source);

    const std::string database_;
    OperatorLog& log_;
    WebSessions sessions_;
    Watchman watchman_;
    std::mutex mutex_;                                      // guards tries_
    RateLimit tries_{10, std::chrono::milliseconds(5000)};  // to sign in, by source
};

}  // namespace host

#endif
