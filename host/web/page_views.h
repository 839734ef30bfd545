// The pages of somebody who has signed in, as HTML.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_WEB_PAGE_VIEWS_H
#define PAGERFWD_HOST_WEB_PAGE_VIEWS_H

#include <optional>
#include <string>

#include "host/store/connection.h"
#include "host/store/tables/tokens.h"

namespace host {

// Who looks, and the secret that his forms carry.
struct Viewer {
    Token token;
    std::string form;
};

std::string SignInPage(const std::string& mistake);
std::string OverviewPage(Connection& connection, const Viewer& viewer);
// None: there is no such alarm.
std::optional<std::string> AlarmPage(Connection& connection, const Viewer& viewer,
                                     const std::string& number);
std::string MistakePage(const std::string& title, const std::string& what);

}  // namespace host

#endif
