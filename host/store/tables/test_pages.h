// Test pages and test calls that another process asks the running node for.
//
// The asking process leaves a row in Host_TestPages, marked with its number of the owner lock, and
// waits for the answer in it. The node gives it to a line, which sends the page, or calls, and
// answers. A row whose process has ended is nobody's: nothing leaves for it.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_TABLES_TEST_PAGES_H
#define PAGERFWD_HOST_STORE_TABLES_TEST_PAGES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/owner_lock.h"

namespace host {

// The asking side. pager: its description, as the tables have it. line: the one to send it; empty:
// the node decides.
int64_t AskForTestPage(Connection& connection, OwnerLock& owners, const std::string& pager,
                       const std::string& line);
// A number to be dialled over a line, as it is dialled.
int64_t AskForTestCall(Connection& connection, OwnerLock& owners, const std::string& line,
                       const std::string& number);

struct TestPageResult {
    int32_t answer = 0;  // the library's, or as one
    std::string said;    // of a call, and where there was none: what came of it, in words
};
// Whether it is in the tables still: those of an asker that has ended are forgotten.
bool IsTestAskedFor(Connection& connection, int64_t asked);
// None: not yet.
std::optional<TestPageResult> TestPageAnswer(Connection& connection, int64_t asked);
void ForgetTestPage(Connection& connection, int64_t asked);

struct AskedTestPage {
    int64_t asked = 0;
    std::string pager;
    std::string line;
    std::string number;  // of a test call; empty: it is a page
};
// Those whose asker still waits, in the order in which they were asked for.
std::vector<AskedTestPage> AskedTestPages(Connection& connection, OwnerLock& owners);
// The node's side.
void GiveTestPage(Connection& connection, int64_t asked, const std::string& line);
// The node's, and the line's.
void AnswerTestPage(Connection& connection, int64_t asked, const TestPageResult& result);

}  // namespace host

#endif
