// What is done from the pages: each a form, which somebody has sent who may.
//
// Each is one transaction, with its entry in the trail.
//
// Errors     PageMistake (page_views.h) where there is no such alarm; BadField for what a field
//            says; StoreError.
#ifndef PAGERFWD_HOST_WEB_PAGE_CHANGES_H
#define PAGERFWD_HOST_WEB_PAGE_CHANGES_H

#include <ctime>
#include <map>
#include <string>

#include "host/store/connection.h"
#include "host/store/owner_lock.h"
#include "host/store/tables/tokens.h"

namespace host {

struct FormSent {
    Connection& connection;
    OwnerLock& owners;  // of this process
    const Token& token;
    const std::map<std::string, std::string>& fields;
    std::time_t now;

    // Empty: there is none.
    std::string Field(const char* name) const;
};

struct FormAction {
    const char* path;
    const char* right;
    // Returns where to go on.
    std::string (*change)(const FormSent& sent);
};
// Null: there is none of this path.
const FormAction* FindFormAction(const std::string& path);

}  // namespace host

#endif
