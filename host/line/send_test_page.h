// One test page through the library.
#ifndef PAGERFWD_HOST_LINE_SEND_TEST_PAGE_H
#define PAGERFWD_HOST_LINE_SEND_TEST_PAGE_H

#include <cstdint>
#include <string>

#include "host/library/library.h"
#include "host/store/tables/pagers.h"

namespace host {

// Whether the call itself is the page: behind the number's "@" there is nothing to transfer, so
// that nothing confirms it.
bool DialIsThePage(const std::string& number);

// Returns the library's result. An engine that is up stays so.
int32_t SendTestPage(const Library& library, const std::string& database, PagerRow pager);

}  // namespace host

#endif
