// The steps of taking a page, for whoever takes several in one transaction. Each requires a write
// transaction of the caller.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_PAGE_TAKING_H
#define PAGERFWD_HOST_PAGES_PAGE_TAKING_H

#include <string>

#include "host/pages/page_owner.h"

namespace host {

// As TakePage.
Taken TakeOrGiveUp(Connection& connection, const PageKey& page, const std::string& why);

// The alarm is what its pages make of it, unless one is still owed.
void FoldPagesOf(Connection& connection, const std::string& alarm);

}  // namespace host

#endif
