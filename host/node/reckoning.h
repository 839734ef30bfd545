// What should have become of each open alarm by now, reckoned from the tables alone.
//
// It shares nothing with what takes alarms up, gives pages to lines and tells when they are due: a
// mistake there would agree with itself.
//
//   an alarm      is taken up, and counts as being paged exactly while a page of it is pending or
//                 owed
//   a page owed   is given to a line, if one that can have it has nothing else to do
//   a page given  belongs to a line of the site that is well, unless no other can have it; is tried
//                 when it is due and what was before it on its line has been sent
//
// A page that waits since no line can have it is as it should be: others tell of that.
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_NODE_RECKONING_H
#define PAGERFWD_HOST_NODE_RECKONING_H

#include <ctime>
#include <string>
#include <vector>

#include "host/store/connection.h"
#include "host/text/encoding.h"

namespace host {

// Something that isn't as it should be at this instant. It may be under way: only what is found
// twice, with a minute between, is amiss. Texts in UTF-8.
struct Amiss {
    std::string alarm;  // its number
    std::string pager;  // empty: the alarm itself
    std::string what;   // "others went before it, though ..."; what grows is behind the comma
};

std::vector<Amiss> Reckon(Connection& connection, Encoding encoding, std::time_t now);

}  // namespace host

#endif
