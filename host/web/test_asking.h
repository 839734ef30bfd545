// Tests that are asked for, by a program or from a page: a page to a pager of the site's, or a call
// over one of its lines. The trail says who asked.
//
// Texts      UTF-8.
// Errors     BadField for what the site doesn't have, or what can't be dialled; StoreError.
#ifndef PAGERFWD_HOST_WEB_TEST_ASKING_H
#define PAGERFWD_HOST_WEB_TEST_ASKING_H

#include <cstdint>
#include <ctime>
#include <string>

#include "host/store/connection.h"
#include "host/store/owner_lock.h"
#include "host/store/tables/tokens.h"

namespace host {

struct TestAsker {
    Connection& connection;
    OwnerLock& owners;  // of this process
    const Token& token;
    std::time_t now;
};

// Each returns the number that TestPageAnswer is asked with. line: empty means that the node
// decides.
int64_t AskForTestPageBy(const TestAsker& asker, const std::string& pager, const std::string& line);
int64_t AskForTestCallBy(const TestAsker& asker, const std::string& line,
                         const std::string& number);

// A line of the site, as the tables have it.
std::string SiteLineNamed(Connection& connection, const std::string& name);

}  // namespace host

#endif
