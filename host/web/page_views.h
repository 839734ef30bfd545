// The pages of somebody who has signed in, as HTML: one file each, page_*.cpp.
//
// Errors     PageMistake, for what isn't there or can't be read in the address; StoreError.
#ifndef PAGERFWD_HOST_WEB_PAGE_VIEWS_H
#define PAGERFWD_HOST_WEB_PAGE_VIEWS_H

#include <ctime>
#include <stdexcept>
#include <string>
#include <utility>

#include "host/store/connection.h"
#include "host/store/tables/tokens.h"
#include "host/text/encoding.h"
#include "host/web/http.h"
#include "host/web/watchman.h"

namespace host {

// What is shown in the place of the page: a heading, and a sentence.
class PageMistake : public std::runtime_error {
 public:
    PageMistake(int status, std::string title, const std::string& what)
        : std::runtime_error(what), status_(status), title_(std::move(title)) {}
    int Status() const { return status_; }
    const std::string& Title() const { return title_; }

 private:
    int status_;
    std::string title_;
};
PageMistake NotFound();

// Who looks, and the secret that his forms carry.
struct Viewer {
    Token token;
    std::string form;
};

// What a page is made of.
struct PageAsked {
    Connection& connection;
    const std::string& database;  // its name
    const WebTarget& target;
    const Viewer& viewer;
    Watchman& watchman;
    std::time_t now;
    Encoding encoding;
};

std::string OverviewPage(const PageAsked& asked);
std::string PendingPagesPage(const PageAsked& asked);
std::string FailedPage(const PageAsked& asked);
std::string AlarmsPage(const PageAsked& asked);
std::string AlarmPage(const PageAsked& asked);
std::string CallPage(const PageAsked& asked);
std::string HoursPage(const PageAsked& asked);
std::string TestsPage(const PageAsked& asked);
std::string TestPage(const PageAsked& asked);
std::string TrailPage(const PageAsked& asked);

// The picture of a call, as SVG.
std::string CallPicture(const PageAsked& asked);

// --- Of nobody in particular.

std::string SignInPage(const std::string& mistake);
std::string MistakePage(const std::string& title, const std::string& what);

}  // namespace host

#endif
