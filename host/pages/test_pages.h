// Test pages that another process asks the running engine for.
//
// The asking process leaves a row in Host_TestPages, marked with its number of the owner lock, and
// waits for the answer in it. A row whose process has ended is nobody's: no page is sent for it.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_TEST_PAGES_H
#define PAGERFWD_HOST_PAGES_TEST_PAGES_H

#include <cstdint>
#include <optional>
#include <string>

#include "host/store/connection.h"
#include "host/store/owner_lock.h"

namespace host {

// The asking side. pager: its description, as the tables have it.
int64_t AskForTestPage(Connection& connection, OwnerLock& owners, const std::string& pager);
// None: not yet.
std::optional<int32_t> TestPageAnswer(Connection& connection, int64_t asked);
void ForgetTestPage(Connection& connection, int64_t asked);

// The engine's side.
struct AskedTestPage {
    int64_t asked = 0;
    std::string pager;
};
// The next one whose asker still waits.
std::optional<AskedTestPage> NextTestPage(Connection& connection, OwnerLock& owners);
void AnswerTestPage(Connection& connection, int64_t asked, int32_t answer);

}  // namespace host

#endif
