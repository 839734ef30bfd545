// Whose a page is: the line that is to send it, and how a page is taken from a line.
//
// A page begins as an open delivery without a line. The node gives it to one, which hands it to its
// library: from then on it is an event that the line owns. The library doesn't let go of a page, so
// one that is taken from a line becomes an open delivery again, and begins its tries anew where it
// goes. To be called for a line whose process has ended, or that never had the page.
//
// Each of these is one transaction, with its history.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_PAGES_PAGE_OWNER_H
#define PAGERFWD_HOST_PAGES_PAGE_OWNER_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/store/tables/deliveries.h"
#include "host/store/tables/page_key.h"

namespace host {

enum class Taken {
    kFree,     // it waits for another line
    kGivenUp,  // over all lines together, it has been tried twice as often as its pager allows
    kEnded,    // its alarm needs no paging any more
    kNone,     // no line has such a page
};
// why: in words, for the history.
Taken TakePage(Connection& connection, const PageKey& page, const std::string& why);

// Of a line that can't send: every page whose pager isn't bound to it.
struct TakenPages {
    int32_t free = 0;
    int32_t given_up = 0;
    int32_t bound = 0;  // left there
};
TakenPages TakeUnboundPages(Connection& connection, const std::string& line,
                            const std::string& why);

// By hand: takes it from wherever it is, and gives it to a line. However often it was tried, its
// tries begin anew. False: there is no such page.
bool MovePage(Connection& connection, const PageKey& page, const std::string& to,
              const std::string& why);

// Pending pages that no line owns: of an older make, or a test without lines. Their tries stand.
std::vector<PageKey> OwnerlessPages(Connection& connection);
// Such a page becomes the line's. To be called before the line's process starts.
void AdoptPage(Connection& connection, const PageKey& page, const std::string& line);

// Pages that have come to that limit since their line has them, by the line: to be given up, behind
// the end of its process.
std::map<std::string, std::vector<PageKey>> OverspentPages(Connection& connection);

// Ends a page that no process has: its event, or its open delivery, is off limit, and its alarm is
// what its other pages make of it. change: kCancelled, by hand, or kChanged. False: there is none.
bool GiveUpPage(Connection& connection, const PageKey& page, const char* change,
                const std::string& why);

// The line that has this page, or is to have it; empty: none.
std::string LineOf(Connection& connection, const PageKey& page);

}  // namespace host

#endif
